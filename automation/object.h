// Base of every object that can travel inside a Variant and be called by member name.
#ifndef KWX_AUTOMATION_OBJECT_H_
#define KWX_AUTOMATION_OBJECT_H_

#include <memory>
#include <string_view>

namespace kwx {

class Variant;

// An object reference of the object model. Objects are shared (reference counted through
// std::shared_ptr) and reached late-bound by property name, case-insensitively.
class Object : public std::enable_shared_from_this<Object> {
 public:
  virtual ~Object() = default;

  // Reads the property `name`. The default raises err::kNoSuchMember.
  virtual Variant GetProperty(std::string_view name) const;
  // Writes the property `name`, converting the value to the property's type; raises
  // err::kNoSuchMember for an unknown name and the conversion's error for a value it rejects.
  virtual void SetProperty(std::string_view name, const Variant& value);
};

using ObjectRef = std::shared_ptr<Object>;

}  // namespace kwx

#endif  // KWX_AUTOMATION_OBJECT_H_
