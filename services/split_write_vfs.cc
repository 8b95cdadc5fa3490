#include "services/split_write_vfs_internal.h"

#include <sqlite3.h>

#include <algorithm>

namespace kwx::sqlite_support {

namespace {

// The system's own layer, which this one hands every call to.
sqlite3_vfs* system_vfs = nullptr;

// A file of this layer: the system's file follows it in the same block.
struct SplitFile {
  sqlite3_file base;
  sqlite3_file* real;
};
static_assert(sizeof(SplitFile) % 8 == 0, "the system's file must stay 8-byte aligned");

sqlite3_file* Real(sqlite3_file* file) { return reinterpret_cast<SplitFile*>(file)->real; }
const sqlite3_io_methods& Methods(sqlite3_file* file) { return *Real(file)->pMethods; }

// A piece short of the system layer's limit, and a multiple of every page size.
constexpr int kPiece = 64 * 1024;

int Write(sqlite3_file* file, const void* data, int amount, sqlite3_int64 offset) {
  const auto* bytes = static_cast<const char*>(data);
  while (true) {
    const int piece = std::min(amount, kPiece);
    const int rc = Methods(file).xWrite(Real(file), bytes, piece, offset);
    if (rc != SQLITE_OK || piece == amount) return rc;
    bytes += piece;
    offset += piece;
    amount -= piece;
  }
}

// Every other call as it stands. A call the system's file lacks (an older method table)
// answers as SQLite answers for a file without it.
int Close(sqlite3_file* f) { return Methods(f).xClose(Real(f)); }
int Read(sqlite3_file* f, void* data, int amount, sqlite3_int64 offset) {
  return Methods(f).xRead(Real(f), data, amount, offset);
}
int Truncate(sqlite3_file* f, sqlite3_int64 size) { return Methods(f).xTruncate(Real(f), size); }
int Sync(sqlite3_file* f, int flags) { return Methods(f).xSync(Real(f), flags); }
int FileSize(sqlite3_file* f, sqlite3_int64* size) {
  return Methods(f).xFileSize(Real(f), size);
}
int Lock(sqlite3_file* f, int level) { return Methods(f).xLock(Real(f), level); }
int Unlock(sqlite3_file* f, int level) { return Methods(f).xUnlock(Real(f), level); }
int CheckReservedLock(sqlite3_file* f, int* out) {
  return Methods(f).xCheckReservedLock(Real(f), out);
}
int FileControl(sqlite3_file* f, int op, void* arg) {
  return Methods(f).xFileControl(Real(f), op, arg);
}
int SectorSize(sqlite3_file* f) { return Methods(f).xSectorSize(Real(f)); }
int DeviceCharacteristics(sqlite3_file* f) {
  return Methods(f).xDeviceCharacteristics(Real(f));
}
int ShmMap(sqlite3_file* f, int region, int size, int extend, void volatile** out) {
  if (Methods(f).iVersion < 2 || Methods(f).xShmMap == nullptr) return SQLITE_IOERR_SHMMAP;
  return Methods(f).xShmMap(Real(f), region, size, extend, out);
}
int ShmLock(sqlite3_file* f, int offset, int n, int flags) {
  if (Methods(f).iVersion < 2 || Methods(f).xShmLock == nullptr) return SQLITE_IOERR_SHMLOCK;
  return Methods(f).xShmLock(Real(f), offset, n, flags);
}
void ShmBarrier(sqlite3_file* f) {
  if (Methods(f).iVersion >= 2 && Methods(f).xShmBarrier != nullptr) {
    Methods(f).xShmBarrier(Real(f));
  }
}
int ShmUnmap(sqlite3_file* f, int remove) {
  if (Methods(f).iVersion < 2 || Methods(f).xShmUnmap == nullptr) return SQLITE_OK;
  return Methods(f).xShmUnmap(Real(f), remove);
}
int Fetch(sqlite3_file* f, sqlite3_int64 offset, int amount, void** out) {
  if (Methods(f).iVersion < 3 || Methods(f).xFetch == nullptr) {
    *out = nullptr;
    return SQLITE_OK;
  }
  return Methods(f).xFetch(Real(f), offset, amount, out);
}
int Unfetch(sqlite3_file* f, sqlite3_int64 offset, void* page) {
  if (Methods(f).iVersion < 3 || Methods(f).xUnfetch == nullptr) return SQLITE_OK;
  return Methods(f).xUnfetch(Real(f), offset, page);
}

const sqlite3_io_methods kFileMethods = {
    3,  // with the shared-memory and memory-mapping calls
    Close,       Read,       Write,
    Truncate,    Sync,       FileSize,
    Lock,        Unlock,     CheckReservedLock,
    FileControl, SectorSize, DeviceCharacteristics,
    ShmMap,      ShmLock,    ShmBarrier,
    ShmUnmap,    Fetch,      Unfetch,
};

int Open(sqlite3_vfs*, sqlite3_filename name, sqlite3_file* file, int flags, int* out_flags) {
  auto* split = reinterpret_cast<SplitFile*>(file);
  split->real = reinterpret_cast<sqlite3_file*>(split + 1);
  split->real->pMethods = nullptr;
  const int rc = system_vfs->xOpen(system_vfs, name, split->real, flags, out_flags);
  // SQLite closes a file whose methods are set even when opening it failed.
  split->base.pMethods = split->real->pMethods != nullptr ? &kFileMethods : nullptr;
  return rc;
}

// The layer's own calls, handed to the system's layer.
int Delete(sqlite3_vfs*, const char* name, int sync_dir) {
  return system_vfs->xDelete(system_vfs, name, sync_dir);
}
int Access(sqlite3_vfs*, const char* name, int flags, int* out) {
  return system_vfs->xAccess(system_vfs, name, flags, out);
}
int FullPathname(sqlite3_vfs*, const char* name, int size, char* out) {
  return system_vfs->xFullPathname(system_vfs, name, size, out);
}
void* DlOpen(sqlite3_vfs*, const char* name) { return system_vfs->xDlOpen(system_vfs, name); }
void DlError(sqlite3_vfs*, int size, char* out) { system_vfs->xDlError(system_vfs, size, out); }
void (*DlSym(sqlite3_vfs*, void* handle, const char* symbol))(void) {
  return system_vfs->xDlSym(system_vfs, handle, symbol);
}
void DlClose(sqlite3_vfs*, void* handle) { system_vfs->xDlClose(system_vfs, handle); }
int Randomness(sqlite3_vfs*, int size, char* out) {
  return system_vfs->xRandomness(system_vfs, size, out);
}
int Sleep(sqlite3_vfs*, int microseconds) { return system_vfs->xSleep(system_vfs, microseconds); }
int CurrentTime(sqlite3_vfs*, double* out) { return system_vfs->xCurrentTime(system_vfs, out); }
int GetLastError(sqlite3_vfs*, int size, char* out) {
  return system_vfs->xGetLastError(system_vfs, size, out);
}
int CurrentTimeInt64(sqlite3_vfs*, sqlite3_int64* out) {
  return system_vfs->xCurrentTimeInt64(system_vfs, out);
}
int SetSystemCall(sqlite3_vfs*, const char* name, sqlite3_syscall_ptr call) {
  return system_vfs->xSetSystemCall(system_vfs, name, call);
}
sqlite3_syscall_ptr GetSystemCall(sqlite3_vfs*, const char* name) {
  return system_vfs->xGetSystemCall(system_vfs, name);
}
const char* NextSystemCall(sqlite3_vfs*, const char* name) {
  return system_vfs->xNextSystemCall(system_vfs, name);
}

}  // namespace

bool RegisterSplitWriteVfs() {
  static const bool registered = [] {
    sqlite3_vfs* system = sqlite3_vfs_find(nullptr);
    // The calls forwarded are those of a version-3 layer, as the system's own on Linux is.
    if (system == nullptr || system->iVersion < 3) return false;
    system_vfs = system;
    static sqlite3_vfs vfs = {
        3,
        static_cast<int>(sizeof(SplitFile)) + system->szOsFile,
        system->mxPathname,
        nullptr,
        kSplitWriteVfs,
        nullptr,
        Open,
        Delete,
        Access,
        FullPathname,
        DlOpen,
        DlError,
        DlSym,
        DlClose,
        Randomness,
        Sleep,
        CurrentTime,
        GetLastError,
        CurrentTimeInt64,
        SetSystemCall,
        GetSystemCall,
        NextSystemCall,
    };
    return sqlite3_vfs_register(&vfs, 1) == SQLITE_OK;
  }();
  return registered;
}

}  // namespace kwx::sqlite_support
