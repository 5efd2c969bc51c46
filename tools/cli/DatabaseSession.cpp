#include "DatabaseSession.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include "BusyWait.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationLayerModule.h"
#include "LocalText.h"

namespace {

// The registered class name of the SpatiaLite data model.
constexpr const char kModelClass[] = "CSpatialiteDBDataModel";

struct SqliteCloser {
  void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct StatementFinalizer {
  void operator()(sqlite3_stmt* stmt) const { sqlite3_finalize(stmt); }
};

bool Exists(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0;
}

// Whether a writer left something to roll back or to fold in: a rollback journal or a WAL.
bool NeedsRecovery(const std::string& path) {
  return Exists(path + "-journal") || Exists(path + "-wal");
}

}  // namespace

void CDatabaseSession::ModelDeleter::operator()(IAnnotationDBDataModel* model) const {
  model->Uninstall();
  model->Uninitialize();
  delete model;
}

CDatabaseSession::CDatabaseSession() = default;

CDatabaseSession::~CDatabaseSession() {
  model_.reset();  // the model goes before the module that made it
  if (moduleStarted_) DestroyAnnotationLayerModule();
}

bool CDatabaseSession::Probe(const std::string& path, E_ACCESS access, std::string* error) const {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    *error = path + ": no such file";
    return false;
  }
  if (S_ISDIR(info.st_mode)) {
    *error = path + " is a directory, not an annotation database";
    return false;
  }
  // Read-only where it can be, so that a command that only reads never changes the file.
  const bool readWrite = access == OPEN_FOR_WRITING || NeedsRecovery(path);
  sqlite3* raw = nullptr;
  const int opened = sqlite3_open_v2(
      path.c_str(), &raw, readWrite ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY, nullptr);
  std::unique_ptr<sqlite3, SqliteCloser> db(raw);
  if (opened != SQLITE_OK) {
    *error = "cannot open " + path + ": " + (db ? sqlite3_errmsg(db.get()) : "out of memory");
    return false;
  }
  sqlite3_stmt* rawStmt = nullptr;
  const char* sql =
      "SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name IN ('folder', 'layer', "
      "'shape', 'folder_order', 'layer_order', 'shape_order')";
  const int prepared = sqlite3_prepare_v2(db.get(), sql, -1, &rawStmt, nullptr);
  std::unique_ptr<sqlite3_stmt, StatementFinalizer> stmt(rawStmt);
  if (prepared == SQLITE_NOTADB) {
    *error = path + " is not an SQLite database";
    return false;
  }
  if (prepared != SQLITE_OK || sqlite3_step(stmt.get()) != SQLITE_ROW) {
    *error = "cannot read " + path + ": " + sqlite3_errmsg(db.get());
    return false;
  }
  if (sqlite3_column_int(stmt.get(), 0) != 6) {
    *error = path + " is not an annotation database (its folder, layer and shape tables are missing)";
    return false;
  }
  stmt.reset();
  if (access == OPEN_FOR_WRITING) {
    // Taking the write lock and letting it go at once: this is where the busy handler waits.
    const int begun = sqlite3_exec(db.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
    if (begun == SQLITE_BUSY) {
      *error = path + " is locked by another process that is writing it (waited " +
               std::to_string(CBusyWait::kWaitMs / 1000) + " s)";
      return false;
    }
    if (begun != SQLITE_OK) {
      *error = "cannot write " + path + ": " + sqlite3_errmsg(db.get());
      return false;
    }
    sqlite3_exec(db.get(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
  return true;
}

bool CDatabaseSession::Open(const std::string& path, std::string* error, E_ACCESS access) {
  if (model_) {
    *error = "a database is open already";
    return false;
  }
  if (!Probe(path, access, error)) return false;
  if (CLocalText::ToUtf8(CLocalText::FromUtf8(path)) != path) {
    *error = path + ": the path has characters the module's code page (GBK) cannot hold";
    return false;
  }

  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  moduleStarted_ = module != nullptr;
  if (module == nullptr || !module->Start()) {
    *error = "the annotation layer module did not start";
    return false;
  }
  model_.reset(module->CreateObject(kModelClass));
  if (!model_) {
    *error = std::string("the module made no ") + kModelClass;
    return false;
  }
  model_->Initialize("annotationlayer");
  if (!model_->Install(CLocalText::FromUtf8(path))) {
    model_.reset();
    *error = "cannot open " + path;
    return false;
  }
  rootUuid_ = model_->GetTopRootUUID();
  if (rootUuid_.empty()) {
    model_.reset();
    *error = path + " has no top root folder";
    return false;
  }
  return true;
}

bool CDatabaseSession::IsWellFormedUuid(const std::string& uuid) {
  if (uuid.empty() || uuid.size() > 64) return false;
  for (unsigned char c : uuid) {
    const bool ok = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                    c == '-' || c == '_' || c == '{' || c == '}';
    if (!ok) return false;
  }
  return true;
}

bool CDatabaseSession::Resolve(const std::string& uuid, E_NODE_KIND* kind,
                               std::string* error) const {
  if (!IsWellFormedUuid(uuid)) {
    *error = "'" + uuid + "' is not a node uuid";
    return false;
  }
  if (!model_) {
    *error = "no database is open";
    return false;
  }
  *kind = model_->QueryNodeKind(uuid);
  if (*kind == NODE_KIND_NONE) {
    *error = "no folder, layer or feature has the uuid " + uuid;
    return false;
  }
  return true;
}
