// The service objects this library provides, made available by ProgID.
#ifndef KWX_SERVICES_BUILTIN_SERVICES_H_
#define KWX_SERVICES_BUILTIN_SERVICES_H_

namespace kwx {

// Registers the built-in service objects in ObjectRegistry::Instance(), each under its plain
// and its SP ProgID: the database object ("iKWX_DB.KWXDB", a SQLite file or a PostgreSQL
// server by the path it opens), the data-file object
// ("iKWX_SSG.KWXSSG"), the compute object ("iKWX_Compute.KWXCompute") and the value object
// ("iKWX_Values.KWXValue"). A ProgID that already has a factory
// (a test double registered first) keeps it. Safe to call any number of times.
void RegisterBuiltinServices();

}  // namespace kwx

#endif  // KWX_SERVICES_BUILTIN_SERVICES_H_
