// The outcome of a service operation that is not a member of a late-bound interface: success,
// or failure with a message that says what went wrong and where.
#ifndef KWX_SERVICES_STATUS_H_
#define KWX_SERVICES_STATUS_H_

#include <string>
#include <utility>

namespace kwx {

class Status {
 public:
  // Success.
  static Status OK() { return Status(); }
  // Failure with a message for a person to read (the path or statement involved included).
  static Status Error(std::string message) { return Status(std::move(message)); }

  bool ok() const noexcept { return !failed_; }
  // Empty on success.
  const std::string& message() const noexcept { return message_; }

 private:
  Status() = default;
  explicit Status(std::string message) : failed_(true), message_(std::move(message)) {}

  bool failed_ = false;
  std::string message_;
};

}  // namespace kwx

#endif  // KWX_SERVICES_STATUS_H_
