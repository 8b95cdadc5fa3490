// The object registry: creates objects by ProgID.
#ifndef KWX_AUTOMATION_REGISTRY_H_
#define KWX_AUTOMATION_REGISTRY_H_

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "automation/object.h"

namespace kwx {

// Makes one new object. It may throw; the registry then answers no object.
using ObjectFactory = std::function<ObjectRef()>;

// Factories keyed by ProgID ("iKWX_DB.KWXDB"), compared case-insensitively. Built-in service
// objects register themselves (services/builtin_services.h); tests register doubles under the
// same ProgIDs to take their place. Thread-safe.
class ObjectRegistry {
 public:
  static ObjectRegistry& Instance();

  // Registers `factory` for `prog_id`, replacing any factory it had.
  void Register(std::string_view prog_id, ObjectFactory factory);
  // Registers `factory` only when `prog_id` has none yet; answers whether it did.
  bool RegisterIfAbsent(std::string_view prog_id, ObjectFactory factory);
  // Removes the factory of `prog_id`, if any.
  void Unregister(std::string_view prog_id);
  bool IsRegistered(std::string_view prog_id) const;

  // A new object from the factory of `prog_id`; nullptr when there is no factory or the
  // factory throws or returns nothing.
  ObjectRef Create(std::string_view prog_id) const noexcept;

 private:
  friend class ScopedRegistration;
  mutable std::mutex mu_;
  std::map<std::string, ObjectFactory, std::less<>> factories_;  // key: folded ProgID
};

// Creates by ProgID and casts to the interface T; nullptr when either step fails.
template <class T>
std::shared_ptr<T> CreateObjectAs(std::string_view prog_id) {
  return std::dynamic_pointer_cast<T>(ObjectRegistry::Instance().Create(prog_id));
}

// Replaces a ProgID's factory for the lifetime of this guard (tests), restoring the previous
// one (or none) afterwards.
class ScopedRegistration {
 public:
  ScopedRegistration(std::string_view prog_id, ObjectFactory factory);
  ~ScopedRegistration();
  ScopedRegistration(const ScopedRegistration&) = delete;
  ScopedRegistration& operator=(const ScopedRegistration&) = delete;

 private:
  std::string prog_id_;
  ObjectFactory previous_;
  bool had_previous_;
};

}  // namespace kwx

#endif  // KWX_AUTOMATION_REGISTRY_H_
