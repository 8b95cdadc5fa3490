#include "services/libpq_library_internal.h"

#include <dlfcn.h>

#include <atomic>
#include <mutex>

namespace kwx::libpq {
namespace {

// The major version the headers were written for; a host's libpq of that soname is the one
// the server protocol and these signatures match.
constexpr const char* kSoname = "libpq.so.5";

std::mutex load_lock;
std::atomic<const Functions*> loaded{nullptr};
std::string load_error;  // why the first attempt failed; later ones say the same

}  // namespace

const Functions* Load(std::string& error) {
  if (const Functions* functions = loaded.load(std::memory_order_acquire)) return functions;
  const std::lock_guard<std::mutex> hold(load_lock);
  if (const Functions* functions = loaded.load(std::memory_order_acquire)) return functions;
  if (!load_error.empty()) {
    error = load_error;
    return nullptr;
  }
  // Loaded for good: the functions are kept for the life of the process.
  void* library = dlopen(kSoname, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    const char* why = dlerror();
    load_error = std::string("PostgreSQL needs libpq (") + kSoname +
                 "), which cannot be loaded: " + (why != nullptr ? why : "not found");
    error = load_error;
    return nullptr;
  }
  static Functions functions;
#define KWX_LIBPQ_RESOLVE(name)                                                               \
  functions.name = reinterpret_cast<decltype(&::name)>(dlsym(library, #name));               \
  if (functions.name == nullptr) {                                                            \
    load_error = std::string(kSoname) + " lacks " #name;                                      \
    error = load_error;                                                                       \
    return nullptr;                                                                           \
  }
  KWX_LIBPQ_FUNCTIONS(KWX_LIBPQ_RESOLVE)
#undef KWX_LIBPQ_RESOLVE
  loaded.store(&functions, std::memory_order_release);
  return &functions;
}

const Functions* Loaded() noexcept { return loaded.load(std::memory_order_acquire); }

}  // namespace kwx::libpq
