// SQLite's file layer (VFS) with writes of any length.
//
// The operating system layer SQLite ships writes at most 128 KB - 1 bytes per call: it masks
// the length, and a longer write comes back short, which SQLite reports as "database or disk
// is full". SQLite itself writes no more than a page at a time, except in one place: an
// in-memory journal that outgrows its limit (SQLITE_CONFIG_STMTJRNL_SPILL) is written out to
// a temporary file in blocks of that limit. With the limit above 128 KB, as statement journals
// are kept here (PrepareSqliteLibrary), that write failed and undid the whole transaction.
// This layer hands every call to the system's own, a write longer than 64 KB in pieces.
#ifndef KWX_SERVICES_SPLIT_WRITE_VFS_INTERNAL_H_
#define KWX_SERVICES_SPLIT_WRITE_VFS_INTERNAL_H_

namespace kwx::sqlite_support {

// The layer's name among SQLite's file layers.
inline constexpr const char* kSplitWriteVfs = "kwx-split-write";

// Registers the layer over the process's default one and makes it the default, once; true
// when it is registered (then every connection opened without naming a layer uses it).
bool RegisterSplitWriteVfs();

}  // namespace kwx::sqlite_support

#endif  // KWX_SERVICES_SPLIT_WRITE_VFS_INTERNAL_H_
