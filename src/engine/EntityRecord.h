// CEntityRecord is what an entity pool keeps for one feature it has met: the feature's inherited
// attribute and type as the last pass saw them, its entity once one is made, and the number of the
// last pass that touched it (its stamp), by which the pool picks what to release first.
//
// A record is shared: the pool files it, and callers that asked the pool for it hold it while they
// work. A record the pool has dropped is marked removed; an entity offered to it afterwards is
// refused, so an entity never lives in a record the pool no longer knows.
//
// Threading contract: every operation may be called from any thread; a small internal mutex
// guards the fields and is never held while calling out.
#ifndef ANNOTATIONLAYER_ENTITY_RECORD_H
#define ANNOTATIONLAYER_ENTITY_RECORD_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "AnnotationLayerTypes.h"
#include "NodeAttribute.h"

class CAnnotationEntity;

class CEntityRecord {
 public:
  explicit CEntityRecord(const std::string& uuid);
  CEntityRecord(const CEntityRecord&) = delete;
  CEntityRecord& operator=(const CEntityRecord&) = delete;

  const std::string& GetUUID() const { return uuid_; }

  CNodeAttribute GetAttribute() const;
  void SetAttribute(const CNodeAttribute& attribute);
  void SetZValue(int z);
  E_ANNOTATION_TYPE GetFeatureType() const;
  void SetFeatureType(E_ANNOTATION_TYPE type);

  // The feature's entity, or null while none has been made.
  std::shared_ptr<CAnnotationEntity> GetEntity() const;
  bool HasEntity() const;

  int64_t GetStamp() const { return stamp_.load(std::memory_order_relaxed); }
  void SetStamp(int64_t pass) { stamp_.store(pass, std::memory_order_relaxed); }

  // Stores the entity unless the record already holds one or has been removed.
  bool InstallEntity(const std::shared_ptr<CAnnotationEntity>& entity);
  // Marks the record removed and hands out its entity (null when it had none).
  std::shared_ptr<CAnnotationEntity> Remove();
  bool IsRemoved() const;

 private:
  const std::string uuid_;
  std::atomic<int64_t> stamp_{0};
  mutable std::mutex mutex_;
  CNodeAttribute attribute_;
  E_ANNOTATION_TYPE featureType_ = ANNOTATION_TYPE_UNKNOWN;
  std::shared_ptr<CAnnotationEntity> entity_;
  bool removed_ = false;
};

#endif  // ANNOTATIONLAYER_ENTITY_RECORD_H
