// A shared library loaded the first time it is needed instead of at the start of every program
// that links this one: a program that never draws a chart or opens a server database does not
// pay for loading those libraries and the dozens they pull in (13 of the 25 ms every kwx
// command spent starting).
#ifndef KWX_COMMON_LAZY_LIBRARY_INTERNAL_H_
#define KWX_COMMON_LAZY_LIBRARY_INTERNAL_H_

#include <dlfcn.h>

#include <atomic>
#include <mutex>
#include <string>

namespace kwx {

// `Functions` is a struct of function pointers; `resolve(handle, functions)` fills it from the
// opened library and answers the name of the first function it cannot find (nullptr when all
// are found). Make one per library, at namespace scope, and use it once the program runs (not
// from another static initializer).
template <class Functions>
class LazyLibrary {
 public:
  using Resolve = const char* (*)(void* handle, Functions& functions);
  LazyLibrary(const char* soname, const char* purpose, Resolve resolve)
      : soname_(soname), purpose_(purpose), resolve_(resolve) {}

  // The functions, loading the library the first time; null with `error` saying why when it
  // cannot be loaded (the same reason on every later call). Thread-safe.
  const Functions* Load(std::string& error) {
    if (const Functions* functions = loaded_.load(std::memory_order_acquire)) return functions;
    const std::lock_guard<std::mutex> hold(lock_);
    if (const Functions* functions = loaded_.load(std::memory_order_acquire)) return functions;
    if (error_.empty()) {
      // Kept open for the life of the process: the functions are used until its end.
      void* handle = dlopen(soname_, RTLD_NOW | RTLD_LOCAL);
      const char* why = handle == nullptr ? dlerror() : nullptr;
      const char* missing = handle != nullptr ? resolve_(handle, functions_) : nullptr;
      if (handle == nullptr) {
        error_ = std::string(purpose_) + " needs " + soname_ +
                 ", which cannot be loaded: " + (why != nullptr ? why : "not found");
      } else if (missing != nullptr) {
        error_ = std::string(soname_) + " lacks " + missing;
      } else {
        loaded_.store(&functions_, std::memory_order_release);
        return &functions_;
      }
    }
    error = error_;
    return nullptr;
  }

  // The functions once Load has answered them; null before.
  const Functions* Loaded() const noexcept { return loaded_.load(std::memory_order_acquire); }

 private:
  const char* const soname_;
  const char* const purpose_;
  const Resolve resolve_;
  std::mutex lock_;
  std::atomic<const Functions*> loaded_{nullptr};
  std::string error_;  // why loading failed
  Functions functions_;
};

// Fills `functions.NAME` from `handle` for each NAME of an X-macro list, in a resolve function;
// answers the name of one that is missing.
#define KWX_LAZY_RESOLVE(name)                                                                \
  functions.name = reinterpret_cast<decltype(&::name)>(dlsym(handle, #name));                \
  if (functions.name == nullptr) return #name;
// Declares `NAME` as a pointer to the function ::NAME, in a struct of functions.
#define KWX_LAZY_POINTER(name) decltype(&::name) name = nullptr;
// Defines `variable`, the LazyLibrary of `soname` whose struct `Functions` holds the functions
// of the X-macro `FUNCTIONS` (declared with KWX_LAZY_POINTER), resolved by name.
#define KWX_LAZY_LIBRARY(variable, soname, purpose, FUNCTIONS)                            \
  LazyLibrary<Functions> variable(soname, purpose,                                        \
                                  [](void* handle, Functions& functions) -> const char* { \
                                    FUNCTIONS(KWX_LAZY_RESOLVE)                           \
                                    return nullptr;                                       \
                                  })

}  // namespace kwx

#endif  // KWX_COMMON_LAZY_LIBRARY_INTERNAL_H_
