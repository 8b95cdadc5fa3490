// libpq, loaded the first time a PostgreSQL database is opened instead of at the start of every
// program that links the library. Most runs never open one, and loading libpq and the
// libraries it pulls in took 9 of the 24 ms that every kwx command spent starting.
#ifndef KWX_SERVICES_LIBPQ_LIBRARY_INTERNAL_H_
#define KWX_SERVICES_LIBPQ_LIBRARY_INTERNAL_H_

#include <libpq-fe.h>

#include <string>

namespace kwx::libpq {

// The libpq functions the PostgreSQL database object calls, by their own names.
#define KWX_LIBPQ_FUNCTIONS(X)                                                                \
  X(PQclear) X(PQcmdTuples) X(PQconnectdbParams) X(PQerrorMessage) X(PQexec) X(PQexecParams) \
  X(PQexecPrepared) X(PQfinish) X(PQfname) X(PQftable) X(PQftablecol) X(PQftype)             \
  X(PQgetisnull) X(PQgetlength) X(PQgetvalue) X(PQnfields) X(PQntuples) X(PQprepare)         \
  X(PQresultErrorField) X(PQresultStatus) X(PQsetClientEncoding) X(PQstatus)                 \
  X(PQtransactionStatus)

struct Functions {
#define KWX_LIBPQ_POINTER(name) decltype(&::name) name = nullptr;
  KWX_LIBPQ_FUNCTIONS(KWX_LIBPQ_POINTER)
#undef KWX_LIBPQ_POINTER
};

// Loads libpq once per process: its functions, or null with `error` saying why (libpq is not
// installed, or lacks one of them). Thread-safe.
const Functions* Load(std::string& error);

// The functions, once Load has answered them; null before.
const Functions* Loaded() noexcept;

}  // namespace kwx::libpq

#endif  // KWX_SERVICES_LIBPQ_LIBRARY_INTERNAL_H_
