#include "FaultVfs.h"

#include <sqlite3.h>

#include <atomic>
#include <cstring>

namespace {

std::atomic<CFaultVfs*> g_active{nullptr};
sqlite3_vfs* g_real = nullptr;
sqlite3_vfs g_shim;

// Every file opened through the shim: the real file follows this header in the same block.
struct ShimFile {
  sqlite3_file base;
  sqlite3_file* real;
};

sqlite3_io_methods g_methods;

sqlite3_file* Real(sqlite3_file* file) { return reinterpret_cast<ShimFile*>(file)->real; }

int ShimClose(sqlite3_file* f) {
  return Real(f)->pMethods != nullptr ? Real(f)->pMethods->xClose(Real(f)) : SQLITE_OK;
}
int ShimRead(sqlite3_file* f, void* buffer, int amount, sqlite3_int64 offset) {
  return Real(f)->pMethods->xRead(Real(f), buffer, amount, offset);
}
int ShimWrite(sqlite3_file* f, const void* buffer, int amount, sqlite3_int64 offset) {
  int code = SQLITE_OK;
  if (CFaultVfs::ShouldFail(&code)) return code;
  return Real(f)->pMethods->xWrite(Real(f), buffer, amount, offset);
}
int ShimTruncate(sqlite3_file* f, sqlite3_int64 size) {
  int code = SQLITE_OK;
  if (CFaultVfs::ShouldFail(&code)) return code;
  return Real(f)->pMethods->xTruncate(Real(f), size);
}
int ShimSync(sqlite3_file* f, int flags) {
  int code = SQLITE_OK;
  if (CFaultVfs::ShouldFail(&code)) return SQLITE_IOERR_FSYNC;
  return Real(f)->pMethods->xSync(Real(f), flags);
}
int ShimFileSize(sqlite3_file* f, sqlite3_int64* size) {
  return Real(f)->pMethods->xFileSize(Real(f), size);
}
int ShimLock(sqlite3_file* f, int level) { return Real(f)->pMethods->xLock(Real(f), level); }
int ShimUnlock(sqlite3_file* f, int level) { return Real(f)->pMethods->xUnlock(Real(f), level); }
int ShimCheckReservedLock(sqlite3_file* f, int* out) {
  return Real(f)->pMethods->xCheckReservedLock(Real(f), out);
}
int ShimFileControl(sqlite3_file* f, int op, void* arg) {
  return Real(f)->pMethods->xFileControl(Real(f), op, arg);
}
int ShimSectorSize(sqlite3_file* f) { return Real(f)->pMethods->xSectorSize(Real(f)); }
int ShimDeviceCharacteristics(sqlite3_file* f) {
  return Real(f)->pMethods->xDeviceCharacteristics(Real(f));
}

int ShimOpen(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  ShimFile* shim = reinterpret_cast<ShimFile*>(file);
  shim->real = reinterpret_cast<sqlite3_file*>(shim + 1);
  std::memset(shim->real, 0, static_cast<size_t>(g_real->szOsFile));
  const int rc = g_real->xOpen(g_real, name, shim->real, flags, outFlags);
  // Version 1 methods: no shared memory, so databases stay in rollback-journal mode.
  shim->base.pMethods = rc == SQLITE_OK ? &g_methods : nullptr;
  return rc;
}
int ShimDelete(sqlite3_vfs*, const char* name, int syncDir) {
  return g_real->xDelete(g_real, name, syncDir);
}
int ShimAccess(sqlite3_vfs*, const char* name, int flags, int* out) {
  return g_real->xAccess(g_real, name, flags, out);
}
int ShimFullPathname(sqlite3_vfs*, const char* name, int size, char* out) {
  return g_real->xFullPathname(g_real, name, size, out);
}

}  // namespace

// The shim is registered once, as the default, and stays for the life of the process: libraries
// that open their own SQLite files meanwhile (PROJ opens proj.db for SpatiaLite) keep using it
// until exit. Outside a CFaultVfs scope it passes every call through.
void InstallShimOnce() {
  static const bool installed = [] {
    g_real = sqlite3_vfs_find(nullptr);
    g_methods = sqlite3_io_methods{};
    g_methods.iVersion = 1;
    g_methods.xClose = ShimClose;
    g_methods.xRead = ShimRead;
    g_methods.xWrite = ShimWrite;
    g_methods.xTruncate = ShimTruncate;
    g_methods.xSync = ShimSync;
    g_methods.xFileSize = ShimFileSize;
    g_methods.xLock = ShimLock;
    g_methods.xUnlock = ShimUnlock;
    g_methods.xCheckReservedLock = ShimCheckReservedLock;
    g_methods.xFileControl = ShimFileControl;
    g_methods.xSectorSize = ShimSectorSize;
    g_methods.xDeviceCharacteristics = ShimDeviceCharacteristics;
    g_shim = *g_real;
    g_shim.iVersion = 1;
    g_shim.szOsFile = static_cast<int>(sizeof(ShimFile)) + g_real->szOsFile;
    g_shim.zName = "fault";
    g_shim.pNext = nullptr;
    g_shim.xOpen = ShimOpen;
    g_shim.xDelete = ShimDelete;
    g_shim.xAccess = ShimAccess;
    g_shim.xFullPathname = ShimFullPathname;
    return sqlite3_vfs_register(&g_shim, 1) == SQLITE_OK;
  }();
  (void)installed;
}

CFaultVfs::CFaultVfs() {
  InstallShimOnce();
  g_active = this;
}

CFaultVfs::~CFaultVfs() { g_active = nullptr; }

void CFaultVfs::FailAfter(int allowed, bool full) {
  full_ = full;
  writes_ = 0;
  allowed_ = allowed;
}

bool CFaultVfs::ShouldFail(int* code) {
  CFaultVfs* vfs = g_active;
  if (vfs == nullptr) return false;
  const int seen = vfs->writes_++;
  if (vfs->allowed_ < 0 || seen < vfs->allowed_) return false;
  *code = vfs->full_ ? SQLITE_FULL : SQLITE_IOERR_WRITE;
  return true;
}
