#include "CacheSizeScope.h"

#include <sqlite3.h>

#include <string>

namespace {

bool Exec(sqlite3* db, const std::string& sql) {
  return sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK;
}

}  // namespace

CCacheSizeScope::CCacheSizeScope(sqlite3* db, int64_t kibibytes) : db_(db) {
  if (db_ == nullptr) return;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, "PRAGMA cache_size", -1, &stmt, nullptr) != SQLITE_OK) return;
  const bool read = sqlite3_step(stmt) == SQLITE_ROW;
  if (read) previous_ = sqlite3_column_int64(stmt, 0);
  sqlite3_finalize(stmt);
  if (!read) return;
  // A positive size counts pages: compare in KiB with the page size of the main database.
  int64_t previousKib = -previous_;
  if (previous_ > 0) {
    int64_t pageSize = 4096;
    if (sqlite3_prepare_v2(db_, "PRAGMA page_size", -1, &stmt, nullptr) == SQLITE_OK) {
      if (sqlite3_step(stmt) == SQLITE_ROW) pageSize = sqlite3_column_int64(stmt, 0);
      sqlite3_finalize(stmt);
    }
    previousKib = previous_ * pageSize / 1024;
  }
  if (previousKib >= kibibytes) return;
  changed_ = Exec(db_, "PRAGMA cache_size = -" + std::to_string(kibibytes));
}

CCacheSizeScope::~CCacheSizeScope() {
  if (changed_) Exec(db_, "PRAGMA cache_size = " + std::to_string(previous_));
}
