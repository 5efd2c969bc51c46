// Lifecycle, identity, observers, nested transactions and IsEmpty of CSpatialiteDBDataModel.
#include "SpatialiteDBDataModel.h"

#include <sqlite3.h>

#include "AnnotationDBObjectNotifier.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteHandler.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "StatementCache.h"
#include "TextConversion.h"
#include "ZuCoreApplication.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

CSpatialiteDBDataModel::CSpatialiteDBDataModel()
    : objectId_(-1),
      notifier_(new CAnnotationDBObjectNotifier),
      statements_(new CStatementCache),
      db_(nullptr),
      depth_(0) {}

CSpatialiteDBDataModel::~CSpatialiteDBDataModel() {
  // A model destroyed while installed still stops its pass and closes its file.
  calculator_.reset();
  statements_->Clear();
  if (handler_) handler_->Close();
}

int CSpatialiteDBDataModel::GetObjectID() { return objectId_; }

bool CSpatialiteDBDataModel::Initialize(const std::string& name) {
  objectId_ = GenerateZuObjectID();
  name_ = name;
  return true;
}

bool CSpatialiteDBDataModel::Uninitialize() {
  Uninstall();
  objectId_ = -1;
  name_.clear();
  return true;
}

std::string CSpatialiteDBDataModel::GetObjectName() { return name_; }

bool CSpatialiteDBDataModel::Install(const std::string& path) {
  if (handler_ || db_ != nullptr) return false;

  handler_.reset(new CSpatialiteHandler);
  if (handler_->Open(path, false)) {
    if (!handler_->SetForeignKeys(false)) {
      ZuLogWarn << "[CSpatialiteDBDataModel::Install] " << Utf8ToLocal("关闭外键失效");
    }
    if (!handler_->SetSynchronous(false)) {
      // The tag names the importer class; kept so that existing log filters still match.
      ZuLogWarn << "[CFeatureBatchImporter] " << Utf8ToLocal("开启不立即同步数据失败");
    }
    db_ = handler_->GetDB();
    if (db_ != nullptr) {
      if (!calculator_) {
        calculator_.reset(new CNodeCacheCalculator(this));
        calculator_->Refresh();
      }
      depth_ = 0;
      filePath_ = path;
      return true;
    }
  }
  handler_->Close();
  handler_.reset();
  db_ = nullptr;
  return false;
}

bool CSpatialiteDBDataModel::IsInstalled() { return handler_ && db_ != nullptr; }

bool CSpatialiteDBDataModel::Uninstall() {
  // The calculator goes first: its pass reads through the connection that is closed below.
  calculator_.reset();
  statements_->Clear();
  if (handler_) {
    handler_->Close();
    handler_.reset();
  }
  db_ = nullptr;
  depth_ = 0;
  return true;
}

std::string CSpatialiteDBDataModel::GetFilePath() { return filePath_; }

CNodeCacheCalculator* CSpatialiteDBDataModel::GetNodeCacheCalculator() { return calculator_.get(); }

bool CSpatialiteDBDataModel::AddObserver(IAnnotationDBObjectObserver* observer) {
  return notifier_ ? notifier_->AddObserver(observer) : false;
}

bool CSpatialiteDBDataModel::RemoveObserver(IAnnotationDBObjectObserver* observer) {
  return notifier_ ? notifier_->RemoveObserver(observer) : false;
}

IAnnotationDBObjectNotifier* CSpatialiteDBDataModel::GetNotifier() { return notifier_.get(); }

bool CSpatialiteDBDataModel::IsEmpty() {
  if (db_ == nullptr) return true;
  CSqlStatement count(db_, std::string("SELECT") + " COUNT(*)" + " FROM" + " folder",
                      "IsEmpty Error! ");
  if (!count.IsValid()) return true;
  // One folder (the top root) still counts as empty.
  return count.Step() == SQLITE_ROW && count.ColumnInt(0) <= 1;
}

// Uuids are spliced between single quotes into many statements; one that holds a quote (or a NUL)
// could end the text early or smuggle in SQL, so it is refused before it gets there.
bool CSpatialiteDBDataModel::IsSafeUUID(const std::string& uuid, const std::string& tag) {
  if (AnnotationLayerInner::IsSafeSqlText(uuid)) return true;
  ZuLogWarn << tag << "uuid refused, it cannot stand between quotes: " << uuid;
  return false;
}

bool CSpatialiteDBDataModel::BeginTransaction() {
  if (!handler_) return false;
  if (depth_ < 1) {
    if (!handler_->Transaction()) return false;
    depth_ = 0;
    ZuLOG << "[CSpatialiteDBDataModel] " << Utf8ToLocal("启动事务") << " >>>>>";
  }
  ++depth_;
  return true;
}

bool CSpatialiteDBDataModel::CommitTransaction() {
  if (!handler_) return false;
  const int before = depth_--;
  // Inner commits (and an unmatched one, which leaves -1) only count down.
  if (before != 1) return true;
  if (!handler_->Commit()) return false;
  depth_ = 0;
  ZuLOG << "[CSpatialiteDBDataModel] " << Utf8ToLocal("提交事务") << " <<<<<";
  return true;
}

bool CSpatialiteDBDataModel::RollBackTransaction() {
  if (!handler_) return false;
  const int before = depth_--;
  // An inner roll-back only counts down: the outermost call decides the fate of all the work.
  if (before != 1) return true;
  if (!handler_->RollBack()) return false;
  depth_ = 0;
  ZuLOG << "[CSpatialiteDBDataModel] " << Utf8ToLocal("回滚事务") << " <<<<<";
  return true;
}

bool CSpatialiteDBDataModel::IsInTransaction() { return handler_ && depth_ > 0; }

void CSpatialiteDBDataModel::NotifyFolderChanged(const CFolderOption& option) {
  if (calculator_) calculator_->SetLChange(option);
}

void CSpatialiteDBDataModel::NotifyLayerChanged(const CLayerOption& option) {
  if (calculator_) calculator_->SetLChange(option);
}

