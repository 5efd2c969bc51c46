#include "EntityAssignPool.h"

#include <chrono>

#include "AnnotationEntity.h"
#include "EntityRecord.h"
#include "EventModule.h"
#include "EventObject.h"
#include "IAnnotationLayerModule.h"
#include "IAnnotationSpatialEngine.h"
#include "ZuCoreApplication.h"

namespace {

constexpr int kIdlePriority = 255;
constexpr int kAfterItemMs = 100;
constexpr int kIdleMs = 30000;

}  // namespace

CEntityAssignPool::CEntityAssignPool(IAnnotationSpatialEngine* engine,
                                     IAnnotationLayerModule* module, int entityLimit)
    : engine_(engine), module_(module), id_(GenerateZuObjectID()), entityLimit_(entityLimit) {}

CEntityAssignPool::~CEntityAssignPool() {
  Stop();
  std::vector<std::shared_ptr<CEntityRecord>> records;
  std::deque<std::vector<std::shared_ptr<CAnnotationEntity>>> releases;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    records.assign(ages_.begin(), ages_.end());
    ages_.clear();
    records_.clear();
    releases.swap(releases_);
  }
  // Entities are retired and destroyed outside the pool's mutex: they call into the renderer.
  for (const auto& record : records) {
    std::shared_ptr<CAnnotationEntity> entity = record->Remove();
    if (entity) entity->Retire();
  }
}

bool CEntityAssignPool::Start() {
  {
    std::lock_guard<std::mutex> guard(mutex_);
    stopRequested_ = false;
  }
  return StartTask(std::string(), kIdlePriority, 102400);
}

void CEntityAssignPool::Stop() {
  {
    std::lock_guard<std::mutex> guard(mutex_);
    stopRequested_ = true;
  }
  wake_.notify_all();
  if (!IsStopped()) RequestStop();
  StopTask(-1);
}

void CEntityAssignPool::BeginTravel() {
  std::lock_guard<std::mutex> guard(mutex_);
  ++pass_;
  updates_.clear();
}

void CEntityAssignPool::EndTravel() {
  int updates = 0;
  bool evict = false;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    updates = static_cast<int>(updates_.size());
    updates_.clear();
    evict = CanEvictLocked();
  }
  // Records the pass did not touch may now be over the limit.
  if (evict) wake_.notify_all();
  if (updates > 0) SendPassEvent(updates);
}

int64_t CEntityAssignPool::GetPassNumber() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return pass_;
}

bool CEntityAssignPool::HasRecord(const std::string& uuid) const {
  std::lock_guard<std::mutex> guard(mutex_);
  return records_.count(uuid) != 0;
}

std::shared_ptr<CEntityRecord> CEntityAssignPool::AcquireRecord(const std::string& uuid) {
  if (uuid.empty()) return nullptr;
  std::lock_guard<std::mutex> guard(mutex_);
  if (stopRequested_) return nullptr;
  auto it = records_.find(uuid);
  if (it != records_.end()) {
    StampLocked(it->second);
    return *it->second;
  }
  auto record = std::make_shared<CEntityRecord>(uuid);
  record->SetStamp(pass_);
  records_.emplace(uuid, ages_.insert(ages_.end(), record));
  // Over the limit the thread releases the oldest records once a newer pass has begun.
  if (static_cast<int>(records_.size()) > entityLimit_ && CanEvictLocked()) wake_.notify_all();
  return record;
}

std::shared_ptr<CEntityRecord> CEntityAssignPool::FindRecord(const std::string& uuid) {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = records_.find(uuid);
  if (it == records_.end()) return nullptr;
  StampLocked(it->second);
  return *it->second;
}

bool CEntityAssignPool::AssignEntity(const std::string& uuid, int mask) {
  std::shared_ptr<CEntityRecord> record;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    auto it = records_.find(uuid);
    if (it == records_.end()) return false;
    record = *it->second;
  }
  const bool rebuild = (mask & ~CAnnotationEntity::kUpdateAttribute) != 0;
  std::shared_ptr<CAnnotationEntity> entity = record->GetEntity();
  if (entity) {
    entity->SetAttribute(record->GetAttribute());
    return entity->Update(mask) && rebuild;
  }

  IAnnotationDBDataModel* model = engine_->GetDataModel();
  if (model == nullptr) return false;
  entity.reset(module_ != nullptr ? module_->CreateEntity() : new CAnnotationEntity);
  if (!entity || !entity->Build(model, uuid)) return false;
  entity->SetAttribute(record->GetAttribute());
  // Another thread may have given the record an entity, or the pool dropped the record, while
  // this one was being built; the first entity stays and this one goes.
  if (!record->InstallEntity(entity)) {
    entity->Retire();
    return false;
  }
  // Refused only when the record was released in the meantime (the entity is retired then).
  return entity->Attach(engine_->GetAttachParam());
}

bool CEntityAssignPool::ReleaseEntity(const std::string& uuid) {
  std::shared_ptr<CEntityRecord> record;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    auto it = records_.find(uuid);
    if (it == records_.end()) return false;
    record = *it->second;
    ages_.erase(it->second);
    records_.erase(it);
  }
  RetireRecords({record});
  return true;
}

void CEntityAssignPool::QueueUpdate(const std::string& uuid) {
  std::lock_guard<std::mutex> guard(mutex_);
  updates_.push_back(uuid);
}

void CEntityAssignPool::ClearAll() {
  std::vector<std::shared_ptr<CEntityRecord>> records;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    records.assign(ages_.begin(), ages_.end());
    ages_.clear();
    records_.clear();
    updates_.clear();
  }
  RetireRecords(records);
}

int CEntityAssignPool::ReattachAll(int attachParam) {
  std::vector<std::shared_ptr<CEntityRecord>> records;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    records.assign(ages_.begin(), ages_.end());
  }
  int attached = 0;
  for (const auto& record : records) {
    std::shared_ptr<CAnnotationEntity> entity = record->GetEntity();
    if (entity && entity->Attach(attachParam)) ++attached;
  }
  return attached;
}

int CEntityAssignPool::GetRecordCount() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return static_cast<int>(records_.size());
}

int CEntityAssignPool::GetEntityCount() const {
  std::vector<std::shared_ptr<CEntityRecord>> records;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    records.assign(ages_.begin(), ages_.end());
  }
  int count = 0;
  for (const auto& record : records) count += record->HasEntity() ? 1 : 0;
  return count;
}

int CEntityAssignPool::GetPendingReleaseCount() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return static_cast<int>(releases_.size());
}

bool CEntityAssignPool::WaitForIdle(int timeoutMs) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return idle_.wait_for(lock, std::chrono::milliseconds(timeoutMs), [this] {
    return !busy_ && releases_.empty() && !CanEvictLocked();
  });
}

void CEntityAssignPool::OnRunTask() {
  while (!IsStopped()) {
    std::vector<std::shared_ptr<CAnnotationEntity>> released;
    std::vector<std::shared_ptr<CEntityRecord>> evicted;
    {
      std::lock_guard<std::mutex> guard(mutex_);
      if (stopRequested_) break;
      if (!releases_.empty()) {
        released = std::move(releases_.front());
        releases_.pop_front();
      } else if (CanEvictLocked()) {
        evicted = TakeEvictableLocked();
      }
      busy_ = !released.empty() || !evicted.empty();
    }
    const bool handled = !released.empty() || !evicted.empty();
    // Destroying the last references here keeps that work off the engine's and host's threads.
    released.clear();
    RetireRecords(evicted);

    std::unique_lock<std::mutex> lock(mutex_);
    busy_ = false;
    idle_.notify_all();
    wake_.wait_for(lock, std::chrono::milliseconds(handled ? kAfterItemMs : kIdleMs), [this] {
      return stopRequested_ || !releases_.empty() || CanEvictLocked();
    });
  }
}

void CEntityAssignPool::StampLocked(AgeList::iterator age) {
  if ((*age)->GetStamp() == pass_) return;
  (*age)->SetStamp(pass_);
  ages_.splice(ages_.end(), ages_, age);
}

bool CEntityAssignPool::CanEvictLocked() const {
  return static_cast<int>(records_.size()) > entityLimit_ && !ages_.empty() &&
         ages_.front()->GetStamp() < pass_;
}

std::vector<std::shared_ptr<CEntityRecord>> CEntityAssignPool::TakeEvictableLocked() {
  std::vector<std::shared_ptr<CEntityRecord>> taken;
  while (CanEvictLocked()) {
    std::shared_ptr<CEntityRecord> record = std::move(ages_.front());
    ages_.pop_front();
    records_.erase(record->GetUUID());
    taken.push_back(std::move(record));
  }
  return taken;
}

void CEntityAssignPool::RetireRecords(const std::vector<std::shared_ptr<CEntityRecord>>& records) {
  std::vector<std::shared_ptr<CAnnotationEntity>> entities;
  for (const auto& record : records) {
    std::shared_ptr<CAnnotationEntity> entity = record->Remove();
    if (!entity) continue;
    entity->Retire();
    entities.push_back(std::move(entity));
  }
  if (entities.empty()) return;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    releases_.push_back(std::move(entities));
  }
  wake_.notify_all();
}

void CEntityAssignPool::SendPassEvent(int updates) {
  if (module_ == nullptr) return;
  CEventModule* events = module_->GetEventModule();
  if (events == nullptr) return;
  const CStateEventObject event(IAnnotationSpatialEngine::kStateType, engine_->GetID(),
                                IAnnotationSpatialEngine::kEventPassChanged, QVariant(updates));
  events->SendEvent(&event);
}
