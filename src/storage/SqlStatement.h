// A prepared SQLite statement that finalizes itself, with the bind/step/column plumbing and the
// module's error logging in one place.
//
//   CSqlStatement stmt(db, "SELECT uuid FROM folder WHERE puuid = ?", "[Tag]:");
//   if (!stmt.IsValid()) return false;       // "[Tag]:" + sqlite3_errmsg was logged
//   stmt.BindText(1, parent, false);
//   while (stmt.StepRow()) { ... stmt.ColumnText(0, false) ... }
//
// Errors are logged at error level as the tag followed directly by sqlite3_errmsg of the
// connection. The statement borrows the connection, which must outlive it.
//
// Thread safety: none; a statement belongs to the thread that uses its connection.
#ifndef ANNOTATIONLAYER_SQL_STATEMENT_H
#define ANNOTATIONLAYER_SQL_STATEMENT_H

#include <cstdint>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

class CSqlStatement {
 public:
  CSqlStatement() = default;
  // Prepares `sql`; on failure logs the tag and leaves the statement invalid.
  CSqlStatement(sqlite3* db, const std::string& sql, const std::string& tag);
  ~CSqlStatement();
  CSqlStatement(CSqlStatement&& other) noexcept;
  CSqlStatement& operator=(CSqlStatement&& other) noexcept;
  CSqlStatement(const CSqlStatement&) = delete;
  CSqlStatement& operator=(const CSqlStatement&) = delete;

  // Finalizes any previous statement and prepares a new one. A null connection fails silently.
  bool Prepare(sqlite3* db, const std::string& sql, const std::string& tag);
  void Finalize();
  bool IsValid() const { return stmt_ != nullptr; }
  sqlite3_stmt* Get() const { return stmt_; }

  // Binding; each returns the SQLite result code. Texts and blobs are copied by SQLite.
  int BindText(int index, const std::string& text, bool toUtf8);
  int BindInt(int index, int value);
  int BindInt64(int index, int64_t value);
  int BindDouble(int index, double value);
  int BindNull(int index);
  int BindBlob(int index, const void* data, int size);

  // Steps once and returns the SQLite result code (SQLITE_ROW, SQLITE_DONE or an error).
  int Step();
  // True for SQLITE_ROW; false at the end or on error (an error is logged with the tag).
  bool StepRow();
  // True for SQLITE_DONE; anything else is logged with the tag and gives false.
  bool StepDone();
  // sqlite3_reset followed by sqlite3_clear_bindings.
  void Reset();

  int ColumnInt(int column) const;
  int64_t ColumnInt64(int column) const;
  double ColumnDouble(int column) const;
  bool ColumnIsNull(int column) const;
  // The text of a column through CSpatialiteHandler::ColumnText; NULL gives "".
  std::string ColumnText(int column, bool toLocal) const;
  const void* ColumnBlob(int column) const;
  int ColumnBytes(int column) const;

  // Logs the tag followed by `detail` and sqlite3_errmsg of the connection.
  void LogError(const std::string& detail = std::string()) const;

 private:
  sqlite3* db_ = nullptr;
  sqlite3_stmt* stmt_ = nullptr;
  std::string tag_;
};

namespace AnnotationLayerInner {

// A copy of sqlite3_errmsg of the connection, taken under the connection's mutex: other threads
// share the connection, and the text sqlite3_errmsg points at changes with their next error.
std::string ErrorMessage(sqlite3* db);

// Runs `sql` with sqlite3_exec; on failure logs the tag followed by sqlite3_errmsg and returns
// false. A null connection gives false without a log line.
bool ExecSql(sqlite3* db, const std::string& sql, const std::string& tag);

}  // namespace AnnotationLayerInner

#endif  // ANNOTATIONLAYER_SQL_STATEMENT_H
