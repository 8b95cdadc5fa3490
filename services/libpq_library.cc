#include "services/libpq_library_internal.h"

namespace kwx::libpq {

KWX_LAZY_LIBRARY(library, "libpq.so.5", "PostgreSQL", KWX_LIBPQ_FUNCTIONS);

}  // namespace kwx::libpq
