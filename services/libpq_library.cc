#include "services/libpq_library_internal.h"

namespace kwx::libpq {
namespace {

const char* Resolve(void* handle, Functions& functions) {
  KWX_LIBPQ_FUNCTIONS(KWX_LAZY_RESOLVE)
  return nullptr;
}

}  // namespace

LazyLibrary<Functions> library("libpq.so.5", "PostgreSQL", &Resolve);

}  // namespace kwx::libpq
