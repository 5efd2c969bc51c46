// CAnnotationEntity is the drawable form of one feature: its shape, styles, name and type read
// from the data model, and its inherited display attribute (visibility, level ranges, z value).
// Attaching puts the drawable into a scene of the host's renderer, the one whose id is the attach
// parameter; detaching takes it out again.
//
// The entity pool of a spatial engine makes one entity per feature in view, attaches it, keeps its
// attribute current pass by pass and retires it when the feature leaves the view. A retired
// entity is detached for good: it refuses to attach again, so a late call from another thread
// cannot bring a released feature back on screen.
//
// Update masks: kUpdateGeometry, kUpdateStyle and kUpdateBase (name and type) re-read that part
// from the data model; kUpdateAttribute only republishes the display attribute. kUpdateAll is all
// four.
//
// Threading contract: every operation may be called from any thread; an internal mutex guards the
// entity. The data model is read before that mutex is taken. The mutex is held while calling the
// scene, whose own lock is a leaf, so updates reach the scene in the order they were made.
#ifndef ANNOTATIONLAYER_ANNOTATION_ENTITY_H
#define ANNOTATIONLAYER_ANNOTATION_ENTITY_H

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "NodeAttribute.h"
#include "SceneDrawable.h"

class IAnnotationDBDataModel;

class ANNOTATIONLAYER_EXPORT CAnnotationEntity {
 public:
  enum {
    kUpdateGeometry = 1,
    kUpdateStyle = 2,
    kUpdateBase = 4,
    kUpdateAttribute = 8,
    kUpdateAll = 15,
  };

  CAnnotationEntity();
  // Detaches the drawable if it is still attached.
  ~CAnnotationEntity();
  CAnnotationEntity(const CAnnotationEntity&) = delete;
  CAnnotationEntity& operator=(const CAnnotationEntity&) = delete;

  // A process-wide id; entities made later have larger ids. The renderer's scenes use it to tell
  // a feature's current entity from one being retired.
  int64_t GetID() const { return id_; }

  // Reads the feature `uuid` from `model`: geometry, style (the feature's own or else its
  // layer's), name and type. False, with the entity unchanged, when the feature or its geometry
  // cannot be read. The model is kept for later updates and must outlive the entity's use of it.
  bool Build(IAnnotationDBDataModel* model, const std::string& uuid);
  std::string GetUUID() const;
  std::string GetName() const;
  E_ANNOTATION_TYPE GetFeatureType() const;
  E_GEOMETRY_DATA_TYPE GetGeometryType() const;
  int GetPartCount() const;
  // A copy of what the entity attaches (owner and key included).
  CSceneDrawable GetDrawable() const;

  void SetAttribute(const CNodeAttribute& attribute);
  CNodeAttribute GetAttribute() const;

  // Re-reads the parts of the feature named by `mask` and republishes the drawable if it is
  // attached. False when nothing is built yet or a part could not be read (the entity keeps what
  // it had).
  bool Update(int mask);

  // Puts the drawable into the scene `attachParam` (a view id, 0 or more), moving it there from
  // another scene, or refreshing it in the same one. False when retired, not built, for a
  // negative parameter, or when a newer entity of the same feature holds the scene's slot.
  bool Attach(int attachParam);
  // Takes the drawable out of its scene. False when it was not attached.
  bool Detach();
  bool IsAttached() const;
  // The scene the drawable is in, or -1.
  int GetAttachParam() const;
  // Detaches for good; later Attach calls are refused.
  void Retire();
  bool IsRetired() const;

  // The number of entities alive in the process (for leak checks).
  static int GetLiveCount();

 private:
  // Copies the attribute into the drawable's display values. Requires mutex_.
  void ApplyAttributeLocked();
  bool DetachLocked();

  const int64_t id_;
  mutable std::mutex mutex_;
  IAnnotationDBDataModel* model_ = nullptr;  // not owned
  bool built_ = false;
  bool retired_ = false;
  int attachParam_ = -1;  // -1 while detached
  E_ANNOTATION_TYPE featureType_ = ANNOTATION_TYPE_UNKNOWN;
  CNodeAttribute attribute_;
  CSceneDrawable drawable_;

  static std::atomic<int> liveCount_;
};

#endif  // ANNOTATIONLAYER_ANNOTATION_ENTITY_H
