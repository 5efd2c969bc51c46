// CEntityAssignPool owns the entities of one spatial engine. It keeps a record per feature that a
// traversal pass met (attribute, feature type, entity), stamped with the number of the last pass
// that touched it; makes, updates and releases entities on request; and runs a background thread
// at idle priority that destroys released entities and keeps the number of records at or below
// the entity limit by releasing the records least recently stamped. Records of features that
// left the view therefore go in the background, and memory stays bounded while the view moves.
//
// Entities are shared: a caller that got one from a record keeps it alive while it works, even if
// the pool releases it meanwhile. Released entities are retired (detached for good) at once and
// destroyed on the pool's thread.
//
// The pool announces, through the module's event module, the end of a pass that updated entities:
// a state event of state type 1623, code 552, the number of updates as value.
//
// Threading contract: every operation may be called from any thread. One mutex guards the maps
// and queues; it is never held while calling the data model, an entity, a record or the event
// kernel. The thread sleeps on a condition variable: 100 ms after handling a queued item, 30 s
// when there is nothing to do, and wakes early when work is queued or the pool is stopped.
#ifndef ANNOTATIONLAYER_ENTITY_ASSIGN_POOL_H
#define ANNOTATIONLAYER_ENTITY_ASSIGN_POOL_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "Task.h"

class CAnnotationEntity;
class CEntityRecord;
class IAnnotationLayerModule;
class IAnnotationSpatialEngine;

class CEntityAssignPool : public CTask {
 public:
  // The pool reads the engine's data model, id and attach parameter, and makes entities and sends
  // events through `module` (which may be null: entities are then made directly and no event is
  // sent). Neither is owned; both must outlive the pool.
  CEntityAssignPool(IAnnotationSpatialEngine* engine, IAnnotationLayerModule* module,
                    int entityLimit);
  // Stops the thread and releases every entity.
  ~CEntityAssignPool() override;
  CEntityAssignPool(const CEntityAssignPool&) = delete;
  CEntityAssignPool& operator=(const CEntityAssignPool&) = delete;

  // Starts the pool's thread at idle priority.
  bool Start();
  // Wakes the thread, asks it to stop and waits for it.
  void Stop();

  int GetID() const { return id_; }
  int GetEntityLimit() const { return entityLimit_; }

  // A traversal pass begins: the pass number goes up by one, and every record touched from now on
  // is stamped with it.
  void BeginTravel();
  // The pass ended: announces it when it updated entities.
  void EndTravel();
  int64_t GetPassNumber() const;

  bool HasRecord(const std::string& uuid) const;
  // Finds or makes the feature's record and stamps it. Null for an empty uuid or while stopping.
  std::shared_ptr<CEntityRecord> AcquireRecord(const std::string& uuid);
  // Finds the feature's record and stamps it; null when there is none.
  std::shared_ptr<CEntityRecord> FindRecord(const std::string& uuid);

  // Gives the feature's record an entity. Without one, an entity is made, built from the data
  // model, given the record's attribute and attached; the result says whether this call made and
  // attached it. With one, the entity takes the record's attribute and updates by `mask`; the
  // result is true only for a mask that rebuilds it from the data model (more than attribute
  // bits). False when the feature has no record.
  bool AssignEntity(const std::string& uuid, int mask);
  // Drops the feature's record; its entity is detached now and destroyed on the pool's thread.
  // False when there was no record.
  bool ReleaseEntity(const std::string& uuid);
  // Notes an entity updated during the current pass.
  void QueueUpdate(const std::string& uuid);
  // Drops every record: each entity's drawable is detached now, and the entities are destroyed
  // on the pool's thread.
  void ClearAll();
  // Attaches every entity's drawable again with `attachParam`; returns how many attached.
  int ReattachAll(int attachParam);

  int GetRecordCount() const;
  int GetEntityCount() const;
  // Batches of released entities still waiting for the pool's thread.
  int GetPendingReleaseCount() const;
  // Waits until the pool's thread has destroyed every released entity and nothing over the limit
  // is left to release. False when `timeoutMs` ran out first.
  bool WaitForIdle(int timeoutMs) const;

 protected:
  void OnRunTask() override;

 private:
  using AgeList = std::list<std::shared_ptr<CEntityRecord>>;

  // Stamps the record with the current pass and moves it to the young end. Requires mutex_.
  void StampLocked(AgeList::iterator age);
  // Whether records over the limit can be released now. Requires mutex_.
  bool CanEvictLocked() const;
  // Takes the oldest records out until the limit is met or only records of the last pass are
  // left. Requires mutex_.
  std::vector<std::shared_ptr<CEntityRecord>> TakeEvictableLocked();
  // Marks the records removed, retires their entities and queues them for destruction.
  void RetireRecords(const std::vector<std::shared_ptr<CEntityRecord>>& records);
  void SendPassEvent(int updates);

  IAnnotationSpatialEngine* const engine_;
  IAnnotationLayerModule* const module_;
  const int id_;
  const int entityLimit_;

  mutable std::mutex mutex_;
  std::condition_variable wake_;
  mutable std::condition_variable idle_;  // the thread finished an item
  bool stopRequested_ = false;
  bool busy_ = false;  // the thread is handling an item outside the mutex
  int64_t pass_ = 0;
  // Records from the least to the most recently stamped; the map points into it.
  AgeList ages_;
  std::unordered_map<std::string, AgeList::iterator> records_;
  std::deque<std::vector<std::shared_ptr<CAnnotationEntity>>> releases_;
  std::vector<std::string> updates_;
};

#endif  // ANNOTATIONLAYER_ENTITY_ASSIGN_POOL_H
