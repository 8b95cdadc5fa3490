// libpq, loaded the first time a PostgreSQL database is opened (common/lazy_library_internal.h).
#ifndef KWX_SERVICES_LIBPQ_LIBRARY_INTERNAL_H_
#define KWX_SERVICES_LIBPQ_LIBRARY_INTERNAL_H_

#include <libpq-fe.h>

#include <string>

#include "common/lazy_library_internal.h"

namespace kwx::libpq {

// The libpq functions the PostgreSQL database object calls, by their own names.
#define KWX_LIBPQ_FUNCTIONS(X)                                                                \
  X(PQclear) X(PQcmdTuples) X(PQconnectdbParams) X(PQerrorMessage) X(PQexec) X(PQexecParams) \
  X(PQexecPrepared) X(PQfinish) X(PQfname) X(PQftable) X(PQftablecol) X(PQftype)             \
  X(PQgetisnull) X(PQgetlength) X(PQgetvalue) X(PQnfields) X(PQntuples) X(PQprepare)         \
  X(PQresultErrorField) X(PQresultStatus) X(PQsetClientEncoding) X(PQstatus)                 \
  X(PQtransactionStatus)

struct Functions {
  KWX_LIBPQ_FUNCTIONS(KWX_LAZY_POINTER)
};

// libpq.so.5, the soname of the libpq these headers describe.
extern LazyLibrary<Functions> library;

}  // namespace kwx::libpq

#endif  // KWX_SERVICES_LIBPQ_LIBRARY_INTERNAL_H_
