// The one wrapper around an SQLite connection with the SpatiaLite extension. Every database of the
// module goes through it: it opens and closes the connection, makes sure the file carries
// SpatiaLite's metadata, adds geometry columns with their spatial index, switches pragmas, runs the
// transaction statements, and offers stateless statement helpers.
//
// Users take the raw connection from GetDB() and run their own statements (see CSqlStatement).
//
// Ownership: the destructor does nothing; the owner calls Close() before destroying the handler.
// Thread safety: none. One handler serves one thread at a time.
#ifndef ANNOTATIONLAYER_SPATIALITE_HANDLER_H
#define ANNOTATIONLAYER_SPATIALITE_HANDLER_H

#include <string>

struct sqlite3;
struct sqlite3_stmt;

class CSpatialiteHandler {
 public:
  CSpatialiteHandler();
  ~CSpatialiteHandler();
  CSpatialiteHandler(const CSpatialiteHandler&) = delete;
  CSpatialiteHandler& operator=(const CSpatialiteHandler&) = delete;

  // Opens an existing file (never creates it) with SpatiaLite, adding its metadata when missing.
  // Paths are in the local code page. True at once when a spatial connection is already open.
  bool Open(const std::string& path, bool readOnly);
  // Opens an existing file without SpatiaLite. True at once when any connection is open.
  bool OpenNoSpatial(const std::string& path, bool readOnly);
  // Opens read-write, creating the file when missing, with SpatiaLite and its metadata.
  bool OpenByCreate(const std::string& path);
  // Closes any connection and releases SpatiaLite's state. Always true.
  bool Close();

  // True when the file has SpatiaLite's metadata, creating it when missing.
  bool InitSpatialMetadata();
  // Creates table.column as a geometry column (SRID 4326) with its R*Tree index. True only when
  // this call created both; an existing column or index gives false without a log line.
  bool AddGeometryColumn(const std::string& table, const std::string& column, int typeCode);
  bool SetForeignKeys(bool on);
  bool SetSynchronous(bool on);
  // "BEGIN" / "COMMIT" / "ROLLBACK"; no nesting here (the data model nests).
  bool Transaction();
  bool Commit();
  bool RollBack();

  sqlite3* GetDB() const { return db_; }

  // Binds text with SQLITE_TRANSIENT, converting from the local code page to UTF-8 when asked.
  static int BindText(sqlite3_stmt* statement, int index, const std::string& text, bool toUtf8);
  // sqlite3_reset and sqlite3_clear_bindings; a null statement is ignored.
  static void ResetStatement(sqlite3_stmt* statement);
  // A column's UTF-8 text, converted to the local code page when asked; null gives "".
  static std::string ColumnText(const char* text, bool toLocal);
  // The WKT of a SpatiaLite geometry blob, or "" when it cannot be read.
  static std::string BlobToWkt(const unsigned char* blob, int size);
  // SpatiaLite's type name for an ISO WKB Z code (1001..1007); anything else is "GEOMETRY".
  static std::string GeometryTypeName(int typeCode);

 private:
  bool OpenWithFlags(const std::string& path, int flags, bool spatial, const char* errorText);

  sqlite3* db_;
  void* cache_;  // SpatiaLite connection cache; null unless opened with SpatiaLite
};

#endif  // ANNOTATIONLAYER_SPATIALITE_HANDLER_H
