// The service objects this library provides, made available by ProgID.
#ifndef KWX_SERVICES_BUILTIN_SERVICES_H_
#define KWX_SERVICES_BUILTIN_SERVICES_H_

namespace kwx {

// Registers the built-in service objects in ObjectRegistry::Instance(): the SQLite database
// object under "iKWX_DB.KWXDB" and "iKWX_SP_DB.KWXDB". A ProgID that already has a factory
// (a test double registered first) keeps it. Safe to call any number of times.
void RegisterBuiltinServices();

}  // namespace kwx

#endif  // KWX_SERVICES_BUILTIN_SERVICES_H_
