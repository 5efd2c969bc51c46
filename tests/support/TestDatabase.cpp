#include "TestDatabase.h"

#include <sqlite3.h>

#include "AnnotationSchema.h"

CTestDatabase::CTestDatabase(const std::string& name) : path_(dir_.File(name)) {
  valid_ = AnnotationLayerNS::CreateAnnotationDatabase(path_, &rootUuid_);
}

std::string QueryScalar(const std::string& path, const std::string& sql) {
  sqlite3* db = nullptr;
  std::string result;
  if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt, nullptr) == SQLITE_OK &&
        sqlite3_step(stmt) == SQLITE_ROW) {
      const unsigned char* text = sqlite3_column_text(stmt, 0);
      if (text != nullptr) result = reinterpret_cast<const char*>(text);
    }
    sqlite3_finalize(stmt);
  }
  sqlite3_close(db);
  return result;
}
