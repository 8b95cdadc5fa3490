// What every database engine behind the database object offers beyond the loader's members:
// the statement trace, the upgrade switch and the reason for the last failure.
#ifndef KWX_SERVICES_DATABASE_ENGINE_H_
#define KWX_SERVICES_DATABASE_ENGINE_H_

#include <functional>
#include <string>
#include <string_view>

#include "automation/services.h"

namespace kwx {

class DatabaseEngine : public IDatabase {
 public:
  // Receives each trace line (the JSON text, without the line end).
  using TraceCallback = std::function<void(std::string_view json_line)>;

  // Appends a trace line per executed statement to the file at `path` from now on; an empty
  // path stops file tracing. False when the file cannot be opened for appending.
  virtual bool SetTraceFile(const std::string& path) = 0;
  // Hands every trace line to `callback` as well; an empty callback stops it.
  virtual void SetTraceCallback(TraceCallback callback) = 0;
  // Whether opening a database written by an older version upgrades it (the default). A
  // program that only reads turns this off: such a database then does not open.
  virtual void SetUpgradeAllowed(bool allowed) noexcept = 0;
  // Number of transaction levels open now.
  virtual int TransactionDepth() const noexcept = 0;
  // Why the last blnExecute, blnOpenDatabase, CloseNCompact or transaction call failed: the
  // engine's own message, or the object's reason for refusing a statement text before the
  // engine saw it. Empty after a blnExecute that succeeded.
  virtual const std::string& LastErrorMessage() const noexcept = 0;
  // How long a statement waits for another program's lock before it fails (milliseconds),
  // from the next blnOpenDatabase on. An engine without such a wait ignores it.
  virtual void SetBusyTimeout(int milliseconds) noexcept { (void)milliseconds; }
  // True when a statement or transaction call since the last open failed because another
  // program held the database past the wait.
  virtual bool LockFailureSeen() const noexcept { return false; }
};

}  // namespace kwx

#endif  // KWX_SERVICES_DATABASE_ENGINE_H_
