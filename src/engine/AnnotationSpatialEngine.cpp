#include "AnnotationSpatialEngine.h"

#include <sqlite3.h>

#include <algorithm>

#include <QString>
#include <QVariant>

#include "AnnotationEntity.h"
#include "AnnotationLayerNS.h"
#include "CriticalLock.h"
#include "EntityAssignPool.h"
#include "EntityRecord.h"
#include "EventModule.h"
#include "EventObject.h"
#include "FeatureOption.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationLayerModule.h"
#include "IAnnotationSpatialEngineListener.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "Stopwatch.h"
#include "TaskEx.h"
#include "TextConversion.h"
#include "ZuCoreApplication.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

constexpr int kNormalPriority = 120;
constexpr int kReserved = 102400;
constexpr int kPassSleepMs = 10;
constexpr int kTraversalIdleMs = 200;
constexpr int kCreatorIdleMs = 100;
// How much of the database file a pass reads through memory mapping: all of a file of millions of
// features (SQLite lowers it to its own limit, 2 GiB in the usual builds).
constexpr long long kMappedBytes = 1LL << 32;

CNodeAttribute VisibleAttribute() {
  CNodeAttribute attribute;
  attribute.SetVisible(true);
  return attribute;
}

bool SameRange(const EXTENT& a, const EXTENT& b) {
  return a.min_x == b.min_x && a.min_y == b.min_y && a.max_x == b.max_x && a.max_y == b.max_y;
}

// Stops a task the way every owner in the module does, then detaches and deletes it. StopTask
// runs even when the body has already left, so that its thread is joined before the task goes.
void ReleaseTask(std::unique_ptr<CTaskEx>* task) {
  if (!*task) return;
  if (!(*task)->IsStopped()) (*task)->RequestStop();
  (*task)->StopTask(-1);
  (*task)->SetTaskUser(nullptr);
  task->reset();
}

}  // namespace

// Hands the features of a pass's extent walk, with their links, to the engine's feature visit.
class CAnnotationSpatialEngine::CPassLinkVisitor
    : public IAnnotationDBDataModel::IFeatureLinkVisitor {
 public:
  explicit CPassLinkVisitor(CAnnotationSpatialEngine* engine) : engine_(engine) {}
  E_HANDLE_TYPE ApplyFeatureLink(const std::string& uuid,
                                 const IAnnotationDBDataModel::FeatureLink* link) override {
    return engine_->VisitPassFeature(uuid, link);
  }
  bool IsAborted() override { return engine_->IsAborted(); }

 private:
  CAnnotationSpatialEngine* engine_;
};

CAnnotationSpatialEngine::CAnnotationSpatialEngine()
    : pendingLock_(new CCriticalLock), excludedLock_(new CCriticalLock) {
  for (std::atomic<double>& value : range_) value.store(0.0, std::memory_order_relaxed);
}

CAnnotationSpatialEngine::~CAnnotationSpatialEngine() {
  // Threads that outlived their engine would run on a destroyed object.
  Stop();
}

bool CAnnotationSpatialEngine::Initialize(const std::string& name, IAnnotationDBDataModel* model) {
  if (model == nullptr) return false;
  Stop();  // a running engine is re-bound only after its threads are gone
  id_.store(GenerateZuObjectID(), std::memory_order_relaxed);
  name_ = name;
  module_ = GetOrCreateAnnotationLayerModule();
  dataModel_ = model;
  started_.store(false, std::memory_order_relaxed);
  changeCount_.store(0, std::memory_order_relaxed);
  return true;
}

bool CAnnotationSpatialEngine::Uninitialize() {
  Stop();
  module_ = nullptr;
  dataModel_ = nullptr;
  name_.clear();
  id_.store(-1, std::memory_order_relaxed);
  return true;
}

std::string CAnnotationSpatialEngine::GetName() { return name_; }

int CAnnotationSpatialEngine::GetID() { return id_.load(std::memory_order_relaxed); }

IAnnotationDBDataModel* CAnnotationSpatialEngine::GetDataModel() { return dataModel_; }

void CAnnotationSpatialEngine::SetAttachParam(int param) {
  attachParam_.store(param, std::memory_order_relaxed);
}

int CAnnotationSpatialEngine::GetAttachParam() {
  return attachParam_.load(std::memory_order_relaxed);
}

void CAnnotationSpatialEngine::SetKeyedList(int key,
                                            const std::vector<std::pair<int, std::string>>& list) {
  keyedLists_[key] = list;
}

std::vector<std::pair<int, std::string>> CAnnotationSpatialEngine::GetKeyedList(int key) {
  auto it = keyedLists_.find(key);
  return it == keyedLists_.end() ? std::vector<std::pair<int, std::string>>() : it->second;
}

void CAnnotationSpatialEngine::SetMaxPerPass(int count) {
  maxPerPass_.store(count, std::memory_order_relaxed);
}

int CAnnotationSpatialEngine::GetMaxPerPass() {
  return maxPerPass_.load(std::memory_order_relaxed);
}

void CAnnotationSpatialEngine::SetListener(IAnnotationSpatialEngineListener* listener) {
  listener_ = listener;
}

IAnnotationSpatialEngineListener* CAnnotationSpatialEngine::GetListener() { return listener_; }

bool CAnnotationSpatialEngine::Start() {
  if (started_.load(std::memory_order_relaxed)) return true;
  if (dataModel_ == nullptr) return false;
  started_.store(true, std::memory_order_relaxed);
  changeCount_.store(0, std::memory_order_relaxed);
  StoreRange(EXTENT());
  // The pool exists before any thread that uses it runs.
  if (!pool_) {
    pool_.reset(new CEntityAssignPool(this, module_, kEntityLimit));
    pool_->Start();
  }
  mainTask_.reset(new CTaskEx);
  mainTask_->SetTaskUser(this);
  mainTaskId_.store(mainTask_.get(), std::memory_order_relaxed);
  mainTask_->StartTask(std::string(), kNormalPriority, kReserved);
  for (int i = 0; i < kCreatorCount; ++i) {
    std::unique_ptr<CTaskEx> creator(new CTaskEx);
    creator->SetTaskUser(this);
    creator->StartTask(std::string(), kNormalPriority, kReserved);
    creatorTasks_.push_back(std::move(creator));
  }
  ZuLOG << Utf8ToLocal("[CAnnotationSpatialEngine] Start引擎 [") << name_ << "]";
  return true;
}

bool CAnnotationSpatialEngine::Stop() {
  if (!started_.load(std::memory_order_relaxed)) return true;
  started_.store(false, std::memory_order_relaxed);
  ReleaseTask(&mainTask_);
  mainTaskId_.store(nullptr, std::memory_order_relaxed);
  for (std::unique_ptr<CTaskEx>& creator : creatorTasks_) ReleaseTask(&creator);
  creatorTasks_.clear();
  if (pool_) {
    pool_->Stop();
    pool_.reset();  // releases every entity
  }
  if (listener_ != nullptr) listener_->OnReset();
  ZuLOG << Utf8ToLocal("[CAnnotationSpatialEngine] Stop引擎 [") << name_ << "]";
  return true;
}

bool CAnnotationSpatialEngine::IsStarted() { return started_.load(std::memory_order_relaxed); }

void CAnnotationSpatialEngine::ResetAll() {
  if (!pool_) return;
  DropAll(false);
}

void CAnnotationSpatialEngine::Refresh() {
  if (!pool_) return;
  DropAll(true);
}

void CAnnotationSpatialEngine::ReattachAll() {
  if (!started_.load(std::memory_order_relaxed) || !pool_) return;
  pool_->ReattachAll(attachParam_.load(std::memory_order_relaxed));
}

void CAnnotationSpatialEngine::OnUpdateRange(const EXTENT& range) {
  if (!started_.load(std::memory_order_relaxed)) return;
  const EXTENT current = LoadRange();
  if (SameRange(current, range)) return;
  const bool cutPass = AnnotationLayerNS::IsNeedUpdateRange(current, range);
  if (cutPass) {
    ZuLOG << Utf8ToLocal("[SpatialEngine::OnUpdateRange] 优先考虑更小的范围 [") << name_ << "]";
  }
  {
    // One step as the traversal thread sees it (see BeginPass): the pass under way is cut, or the
    // next pass takes the new range, never neither.
    CCriticalLockGuard guard(pendingLock_.get());
    if (cutPass) abortPass_.store(true, std::memory_order_relaxed);
    StoreRange(range);
    pendingFeatures_.clear();
    changeCount_.fetch_add(1, std::memory_order_relaxed);
  }
  if (listener_ != nullptr) listener_->OnRangeChanged(range);
}

EXTENT CAnnotationSpatialEngine::GetRange() { return LoadRange(); }

void CAnnotationSpatialEngine::UpdateFeature(const std::string& uuid) {
  if (!pool_ || dataModel_ == nullptr) return;
  if (!dataModel_->IsExistNode(uuid, NODE_KIND_FEATURE)) {
    pool_->ReleaseEntity(uuid);
    return;
  }
  if (IsFeatureExcluded(uuid)) return;
  std::shared_ptr<CEntityRecord> record = pool_->AcquireRecord(uuid);
  if (!record) return;
  CNodeCacheCalculator* calculator = dataModel_->GetNodeCacheCalculator();
  CNodeAttribute attribute =
      calculator != nullptr ? calculator->GetEntityAttribute(uuid) : VisibleAttribute();
  // The calculator knows no draw values; the feature keeps the one its last pass gave it.
  attribute.SetZValue(record->GetAttribute().GetZValue());
  // The record carries the fresh attribute too: AssignEntity hands the record's to the entity.
  record->SetAttribute(attribute);
  std::shared_ptr<CAnnotationEntity> entity = record->GetEntity();
  if (entity) {
    entity->SetAttribute(attribute);
  } else {
    record->SetFeatureType(dataModel_->GetFeatureType(uuid));
  }
  if (pool_->AssignEntity(uuid, CAnnotationEntity::kUpdateAll)) {
    entity = record->GetEntity();
    if (entity) entity->Attach(attachParam_.load(std::memory_order_relaxed));
  }
  if (listener_ != nullptr) listener_->OnFeatureChanged(uuid);
}

bool CAnnotationSpatialEngine::SetFeatureExcluded(const std::string& uuid, bool excluded) {
  excludedLock_->Lock();
  if (excluded) {
    // In the set before the entity goes: a pass or a creator that looks from now on skips the
    // feature, so none can give it an entity again that no later pass would release.
    excludedFeatures_.insert(uuid);
  } else {
    excludedFeatures_.erase(uuid);
  }
  const bool unlocked = excludedLock_->Unlock();
  if (excluded) {
    if (pool_) pool_->ReleaseEntity(uuid);
    if (listener_ != nullptr) listener_->OnFeatureRemoved(uuid);
  }
  return unlocked;
}

bool CAnnotationSpatialEngine::IsFeatureExcluded(const std::string& uuid) {
  CCriticalLockGuard guard(excludedLock_.get());
  return excludedFeatures_.count(uuid) != 0;
}

void CAnnotationSpatialEngine::SetCreatorPause(int milliseconds) {
  creatorPauseMs_.store(std::max(0, milliseconds), std::memory_order_relaxed);
}

int CAnnotationSpatialEngine::GetCreatorPause() {
  return creatorPauseMs_.load(std::memory_order_relaxed);
}

int CAnnotationSpatialEngine::GetPendingCount() {
  CCriticalLockGuard guard(pendingLock_.get());
  return static_cast<int>(pendingFeatures_.size());
}

std::vector<const CTask*> CAnnotationSpatialEngine::GetTasks() const {
  std::vector<const CTask*> tasks;
  if (mainTask_) tasks.push_back(mainTask_.get());
  for (const std::unique_ptr<CTaskEx>& creator : creatorTasks_) tasks.push_back(creator.get());
  return tasks;
}

void CAnnotationSpatialEngine::OnRunTaskEx(CTaskEx* task) {
  if (task == mainTaskId_.load(std::memory_order_relaxed)) {
    while (!task->IsStopped() && started_.load(std::memory_order_relaxed)) {
      const bool ran = RunTraversalStep();
      task->SleepWhileRunning(ran ? kPassSleepMs : kTraversalIdleMs);
    }
    return;
  }
  while (!task->IsStopped() && started_.load(std::memory_order_relaxed)) {
    const bool took = RunCreationStep();
    const int pause = creatorPauseMs_.load(std::memory_order_relaxed);
    if (!took) {
      task->SleepWhileRunning(kCreatorIdleMs);
    } else if (pause > 0) {
      task->SleepWhileRunning(pause);
    }
  }
}

bool CAnnotationSpatialEngine::RunTraversalStep() {
  if (dataModel_ == nullptr || changeCount_.load(std::memory_order_relaxed) < 1) return false;
  if (!passOrder_.Empty()) return true;  // a pass is still being ranked
  EXTENT range;
  if (!BeginPass(&range)) return false;
  const CStopwatch stopwatch;
  ZuLOG << "----> Travel Begin [" << name_ << "]>>>>>" << range.min_x << ", " << range.min_y
        << ", " << range.max_x << ", " << range.max_y;
  pool_->BeginTravel();
  acceptedCount_.store(0, std::memory_order_relaxed);
  // Taken at every pass: the model makes a new calculator each time it is installed again.
  passCalculator_ = dataModel_->GetNodeCacheCalculator();
  MapConnectionForReading();

  // The polygon form finds every feature whose box meets the view, also those reaching beyond it
  // (a country with islands outside the view); the rectangle form would keep only boxes inside.
  // Each feature comes with its link, read in the walk's own statement where the model can.
  CPassLinkVisitor links(this);
  dataModel_->TravelFeatureLinksViaExtent(&links, AnnotationLayerNS::ExtentRing(range), -1);

  // The lowest key gets the largest draw value, the last one 1.
  int z = passOrder_.Size();
  passOrder_.ForEach(
      [&](const CNodeOrder&, const std::string& uuid) { ApplyDrawOrder(uuid, z--); });
  pool_->EndTravel();
  ZuLOG << "----> Travel End [" << name_ << "] <<<<< d="
        << static_cast<long long>(stopwatch.ElapsedMs()) << "ms size=" << passOrder_.Size();
  passOrder_.Clear();
  passCalculator_ = nullptr;
  passCount_.fetch_add(1, std::memory_order_release);
  return true;
}

// A pass looks up each feature of the view by its uuid in the shape and order tables; at a million
// features the leaves of those indexes are far more than the connection's page cache holds, and
// each lookup read them from the file again, one system call a page. Mapped, a page the system
// has cached costs a memory read. Set once per connection (a model installed again has a new
// one); a setting of the connection only, and only SpatiaLite models have one.
void CAnnotationSpatialEngine::MapConnectionForReading() {
  auto* spatialite = dynamic_cast<CSpatialiteDBDataModel*>(dataModel_);
  sqlite3* connection = spatialite != nullptr ? spatialite->GetConnection() : nullptr;
  if (connection == nullptr || connection == mappedConnection_) return;
  const std::string sql = "PRAGMA mmap_size = " + std::to_string(kMappedBytes);
  if (sqlite3_exec(connection, sql.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK) {
    mappedConnection_ = connection;
  }
}

bool CAnnotationSpatialEngine::BeginPass(EXTENT* range) {
  // The host's requests (range change, reset, refresh) change the abort flag, the range and the
  // change count in one step under pendingLock; taking all three here in one step too means a
  // request lands either before this pass (which then walks its range) or during it (which it
  // cuts, and whose change runs the next pass). A reset in between leaves no change: no pass.
  CCriticalLockGuard guard(pendingLock_.get());
  abortPass_.store(false, std::memory_order_relaxed);
  if (changeCount_.exchange(0, std::memory_order_relaxed) < 1) return false;
  *range = LoadRange();
  return true;
}

IAnnotationDBObjectVisitor::E_HANDLE_TYPE CAnnotationSpatialEngine::ApplyFeature(
    IAnnotationDBDataModel*, const std::list<std::string>&, const std::string& uuid,
    const CFeatureOption&) {
  return VisitPassFeature(uuid, nullptr);
}

IAnnotationDBObjectVisitor::E_HANDLE_TYPE CAnnotationSpatialEngine::VisitPassFeature(
    const std::string& uuid, const IAnnotationDBDataModel::FeatureLink* link) {
  // Answering "stop" ends the extent walk; it is the answer once the pass is to be cut short.
  auto goOn = [this] {
    return abortPass_.load(std::memory_order_relaxed) ? HANDLE_TYPE_STOP : HANDLE_TYPE_CONTINUE;
  };
  // A pass cut before its first feature records nothing.
  if (abortPass_.load(std::memory_order_relaxed)) return HANDLE_TYPE_STOP;
  if (IsFeatureExcluded(uuid)) return goOn();
  CNodeAttribute attribute = VisibleAttribute();
  CNodeOrder order;
  E_ANNOTATION_TYPE type = ANNOTATION_TYPE_UNKNOWN;
  if (passCalculator_ != nullptr) {
    // Visibility, order key and, from the same read of the feature's row, its type.
    attribute = link != nullptr ? passCalculator_->GetVisibleLinkOrder(*link, &order, &type)
                                : passCalculator_->GetVisibleEntityOrder(uuid, &order, &type);
    if (!attribute.IsVisible()) return goOn();
  } else if (link != nullptr) {
    type = static_cast<E_ANNOTATION_TYPE>(link->type);
  }
  std::shared_ptr<CEntityRecord> record = pool_->AcquireRecord(uuid);
  if (!record) return HANDLE_TYPE_CONTINUE;
  // The record always carries this pass's attribute: AssignEntity hands the record's to the
  // entity, also to one that exists already.
  record->SetAttribute(attribute);
  std::shared_ptr<CAnnotationEntity> entity = record->GetEntity();
  if (entity) {
    entity->SetAttribute(attribute);
  } else {
    if (type == ANNOTATION_TYPE_UNKNOWN) type = dataModel_->GetFeatureType(uuid);
    record->SetFeatureType(type);
    // Queued again on every pass in which the feature still has no entity; not once a request
    // has cut the pass, since that request emptied the queue for a view this pass no longer has.
    CCriticalLockGuard guard(pendingLock_.get());
    if (abortPass_.load(std::memory_order_relaxed)) return HANDLE_TYPE_STOP;
    pendingFeatures_.push_back(uuid);
  }
  if (passCalculator_ != nullptr) {
    // An equal key keeps the feature met first; this one gets no draw value in this pass.
    passOrder_.Insert(order, uuid);
  } else {
    ApplyDrawOrder(uuid, 0);
  }
  const int accepted = acceptedCount_.fetch_add(1, std::memory_order_relaxed) + 1;
  if (accepted > maxPerPass_.load(std::memory_order_relaxed)) {
    abortPass_.store(true, std::memory_order_relaxed);
    return HANDLE_TYPE_STOP;
  }
  return goOn();
}

bool CAnnotationSpatialEngine::IsAborted() {
  return abortPass_.load(std::memory_order_relaxed) || !started_.load(std::memory_order_relaxed);
}

void CAnnotationSpatialEngine::ApplyDrawOrder(const std::string& uuid, int z) {
  if (!pool_) return;
  pool_->HasRecord(uuid);  // asked as the pool's protocol has it; the answer is not needed
  std::shared_ptr<CEntityRecord> record = pool_->FindRecord(uuid);
  if (!record) return;
  record->SetZValue(z);
  std::shared_ptr<CAnnotationEntity> entity = record->GetEntity();
  if (!entity) return;
  // The entity holds this pass's attribute already; only its draw value changes.
  CNodeAttribute attribute = entity->GetAttribute();
  attribute.SetZValue(z);
  entity->SetAttribute(attribute);
  entity->Update(CAnnotationEntity::kUpdateAttribute);
  pool_->QueueUpdate(uuid);
}

bool CAnnotationSpatialEngine::RunCreationStep() {
  std::string uuid;
  {
    CCriticalLockGuard guard(pendingLock_.get());
    if (pendingFeatures_.empty()) return false;
    uuid = std::move(pendingFeatures_.front());
    pendingFeatures_.pop_front();
  }
  if (IsFeatureExcluded(uuid) || !pool_) return false;
  if (pool_->AssignEntity(uuid, CAnnotationEntity::kUpdateAttribute)) SendEntityEvent(uuid);
  return true;
}

void CAnnotationSpatialEngine::DropAll(bool keepRange) {
  {
    // One step as the traversal thread sees it (see BeginPass).
    CCriticalLockGuard guard(pendingLock_.get());
    abortPass_.store(true, std::memory_order_relaxed);
    if (!keepRange) StoreRange(EXTENT());
    pendingFeatures_.clear();
    changeCount_.store(0, std::memory_order_relaxed);
  }
  pool_->ClearAll();
  if (keepRange) {
    // Only now: a pass that began before the pool was emptied would lose its records to it.
    CCriticalLockGuard guard(pendingLock_.get());
    changeCount_.store(1, std::memory_order_relaxed);
  }
  if (listener_ != nullptr) listener_->OnReset();
}

void CAnnotationSpatialEngine::StoreRange(const EXTENT& range) {
  range_[0].store(range.min_x, std::memory_order_relaxed);
  range_[1].store(range.min_y, std::memory_order_relaxed);
  range_[2].store(range.max_x, std::memory_order_relaxed);
  range_[3].store(range.max_y, std::memory_order_relaxed);
}

EXTENT CAnnotationSpatialEngine::LoadRange() const {
  EXTENT range;
  range.min_x = range_[0].load(std::memory_order_relaxed);
  range.min_y = range_[1].load(std::memory_order_relaxed);
  range.max_x = range_[2].load(std::memory_order_relaxed);
  range.max_y = range_[3].load(std::memory_order_relaxed);
  return range;
}

void CAnnotationSpatialEngine::SendEntityEvent(const std::string& uuid) {
  if (module_ == nullptr) return;
  CEventModule* events = module_->GetEventModule();
  if (events == nullptr) return;
  const CStateEventObject event(kStateType, GetID(), kEventEntityCreated,
                                QVariant(QString::fromStdString(uuid)));
  events->SendEvent(&event);
}
