#include "SqlStatement.h"

#include <sqlite3.h>

#include "SpatialiteHandler.h"
#include "ZuLog.h"

CSqlStatement::CSqlStatement(sqlite3* db, const std::string& sql, const std::string& tag) {
  Prepare(db, sql, tag);
}

CSqlStatement::~CSqlStatement() { Finalize(); }

CSqlStatement::CSqlStatement(CSqlStatement&& other) noexcept
    : db_(other.db_), stmt_(other.stmt_), tag_(std::move(other.tag_)) {
  other.db_ = nullptr;
  other.stmt_ = nullptr;
}

CSqlStatement& CSqlStatement::operator=(CSqlStatement&& other) noexcept {
  if (this != &other) {
    Finalize();
    db_ = other.db_;
    stmt_ = other.stmt_;
    tag_ = std::move(other.tag_);
    other.db_ = nullptr;
    other.stmt_ = nullptr;
  }
  return *this;
}

bool CSqlStatement::Prepare(sqlite3* db, const std::string& sql, const std::string& tag) {
  Finalize();
  db_ = db;
  tag_ = tag;
  if (db == nullptr) return false;
  if (sqlite3_prepare_v2(db, sql.c_str(), static_cast<int>(sql.size()), &stmt_, nullptr) !=
      SQLITE_OK) {
    LogError();
    sqlite3_finalize(stmt_);
    stmt_ = nullptr;
    return false;
  }
  return stmt_ != nullptr;
}

void CSqlStatement::Finalize() {
  if (stmt_ != nullptr) sqlite3_finalize(stmt_);
  stmt_ = nullptr;
}

int CSqlStatement::BindText(int index, const std::string& text, bool toUtf8) {
  return CSpatialiteHandler::BindText(stmt_, index, text, toUtf8);
}

int CSqlStatement::BindInt(int index, int value) { return sqlite3_bind_int(stmt_, index, value); }

int CSqlStatement::BindInt64(int index, int64_t value) {
  return sqlite3_bind_int64(stmt_, index, static_cast<sqlite3_int64>(value));
}

int CSqlStatement::BindDouble(int index, double value) {
  return sqlite3_bind_double(stmt_, index, value);
}

int CSqlStatement::BindNull(int index) { return sqlite3_bind_null(stmt_, index); }

int CSqlStatement::BindBlob(int index, const void* data, int size) {
  return sqlite3_bind_blob(stmt_, index, data, size, SQLITE_TRANSIENT);
}

int CSqlStatement::Step() {
  if (stmt_ == nullptr) return SQLITE_MISUSE;
  return sqlite3_step(stmt_);
}

// A statement that failed to prepare has been logged already: stepping it says nothing more.
bool CSqlStatement::StepRow() {
  if (stmt_ == nullptr) return false;
  int rc = Step();
  if (rc == SQLITE_ROW) return true;
  if (rc != SQLITE_DONE) LogError();
  return false;
}

bool CSqlStatement::StepDone() {
  if (stmt_ == nullptr) return false;
  int rc = Step();
  if (rc == SQLITE_DONE) return true;
  LogError();
  return false;
}

void CSqlStatement::Reset() { CSpatialiteHandler::ResetStatement(stmt_); }

int CSqlStatement::ColumnInt(int column) const { return sqlite3_column_int(stmt_, column); }

int64_t CSqlStatement::ColumnInt64(int column) const {
  return static_cast<int64_t>(sqlite3_column_int64(stmt_, column));
}

double CSqlStatement::ColumnDouble(int column) const {
  return sqlite3_column_double(stmt_, column);
}

bool CSqlStatement::ColumnIsNull(int column) const {
  return sqlite3_column_type(stmt_, column) == SQLITE_NULL;
}

std::string CSqlStatement::ColumnText(int column, bool toLocal) const {
  return CSpatialiteHandler::ColumnText(
      reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column)), toLocal);
}

const void* CSqlStatement::ColumnBlob(int column) const {
  return sqlite3_column_blob(stmt_, column);
}

int CSqlStatement::ColumnBytes(int column) const { return sqlite3_column_bytes(stmt_, column); }

void CSqlStatement::LogError(const std::string& detail) const {
  ZuLogError(-1) << tag_ << detail << AnnotationLayerInner::ErrorMessage(db_);
}

namespace AnnotationLayerInner {

std::string ErrorMessage(sqlite3* db) {
  if (db == nullptr) return "no connection";
  sqlite3_mutex* mutex = sqlite3_db_mutex(db);
  sqlite3_mutex_enter(mutex);
  std::string message = sqlite3_errmsg(db);
  sqlite3_mutex_leave(mutex);
  return message;
}

bool ExecSql(sqlite3* db, const std::string& sql, const std::string& tag) {
  if (db == nullptr) return false;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) return true;
  ZuLogError(-1) << tag << ErrorMessage(db);
  return false;
}

}  // namespace AnnotationLayerInner
