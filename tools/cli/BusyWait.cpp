#include "BusyWait.h"

#include <sqlite3.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>

namespace {

constexpr int kStepMs = 20;

std::atomic<bool> g_noticeShown(false);

int OnBusy(void* connection, int attempts) {
  if (attempts * kStepMs >= CBusyWait::kWaitMs) return 0;
  if (!g_noticeShown.exchange(true) && isatty(STDERR_FILENO)) {
    const char* path = sqlite3_db_filename(static_cast<sqlite3*>(connection), "main");
    std::fprintf(stderr, "annotationlayer: %s is locked by another process; waiting up to %d s\n",
                 path != nullptr && *path != '\0' ? path : "the database",
                 CBusyWait::kWaitMs / 1000);
  }
  sqlite3_sleep(kStepMs);
  return 1;
}

// Registered as an automatic extension: SQLite calls it for every connection opened afterwards.
int InstallHandler(sqlite3* db, char**, const sqlite3_api_routines*) {
  sqlite3_busy_handler(db, OnBusy, db);
  return SQLITE_OK;
}

using AutoExtension = void (*)(void);

}  // namespace

CBusyWait::CBusyWait() {
  sqlite3_auto_extension(reinterpret_cast<AutoExtension>(InstallHandler));
}

CBusyWait::~CBusyWait() {
  sqlite3_cancel_auto_extension(reinterpret_cast<AutoExtension>(InstallHandler));
}
