#include "services/libpq_library_internal.h"

namespace kwx::libpq {

LazyLibrary<Functions> library("libpq.so.5", "PostgreSQL",
                               [](void* handle, Functions& functions) -> const char* {
                                 KWX_LIBPQ_FUNCTIONS(KWX_LAZY_RESOLVE)
                                 return nullptr;
                               });

}  // namespace kwx::libpq
