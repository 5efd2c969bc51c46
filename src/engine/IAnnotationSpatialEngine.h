// The runtime spatial engine as the host sees it: the host reports the visible extent, and the
// engine supplies drawable entities, in draw order, for the features inside it. Every new entity
// is announced as a state event (state type 1623, code 551, the feature's uuid) through the
// module's event module; the end of a pass that changed entities as code 552.
//
// Lifecycle: Initialize(name, model) -> Start() <-> Stop() -> Uninitialize(). Operations that need
// a started engine return quietly before Start.
//
// Ownership: the data model and the listener stay the caller's and must outlive the engine's use
// of them (Uninitialize, or Stop for the listener's notifications).
//
// Threading contract: the host calls every operation from one thread. The engine's work runs on
// its own threads; operations only record the new state and return.
#ifndef ANNOTATIONLAYER_IANNOTATION_SPATIAL_ENGINE_H
#define ANNOTATIONLAYER_IANNOTATION_SPATIAL_ENGINE_H

#include <string>
#include <utility>
#include <vector>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"

class IAnnotationDBDataModel;
class IAnnotationSpatialEngineListener;

class ANNOTATIONLAYER_EXPORT IAnnotationSpatialEngine {
 public:
  // State type and event codes of the state events the engine sends.
  enum {
    kStateType = 1623,
    kEventEntityCreated = 551,
    kEventPassChanged = 552,
  };

  virtual ~IAnnotationSpatialEngine() = default;

  // Binds the engine to `model` (and its node cache calculator). False when model is null.
  virtual bool Initialize(const std::string& name, IAnnotationDBDataModel* model) = 0;
  // Stops the engine and unbinds it from its model.
  virtual bool Uninitialize() = 0;
  virtual std::string GetName() = 0;
  virtual int GetID() = 0;
  virtual IAnnotationDBDataModel* GetDataModel() = 0;
  // The parameter entities pass to the host's renderer when they attach their drawables (the id
  // of the view they are drawn in); 1 by default.
  virtual void SetAttachParam(int param) = 0;
  virtual int GetAttachParam() = 0;
  // A small table kept for the host and handed back unchanged.
  virtual void SetKeyedList(int key, const std::vector<std::pair<int, std::string>>& list) = 0;
  virtual std::vector<std::pair<int, std::string>> GetKeyedList(int key) = 0;
  // The most features one pass accepts; 7000 by default.
  virtual void SetMaxPerPass(int count) = 0;
  virtual int GetMaxPerPass() = 0;
  // Null detaches the listener.
  virtual void SetListener(IAnnotationSpatialEngineListener* listener) = 0;
  virtual IAnnotationSpatialEngineListener* GetListener() = 0;
  // Starts the traversal thread, the eight creator threads and the entity pool.
  virtual bool Start() = 0;
  // Stops every thread and releases every entity.
  virtual bool Stop() = 0;
  virtual bool IsStarted() = 0;
  // Drops every entity and forgets the view; nothing is shown until the next OnUpdateRange.
  virtual void ResetAll() = 0;
  // Drops every entity and rebuilds them for the same view.
  virtual void Refresh() = 0;
  // Attaches every entity's drawable again with the current attach parameter.
  virtual void ReattachAll() = 0;
  // The visible extent changed.
  virtual void OnUpdateRange(const EXTENT& range) = 0;
  virtual EXTENT GetRange() = 0;
  // One feature's data changed: its entity is rebuilt, or released when the feature is gone.
  virtual void UpdateFeature(const std::string& uuid) = 0;
  // An excluded feature is not shown until it is included again.
  virtual bool SetFeatureExcluded(const std::string& uuid, bool excluded) = 0;
  virtual bool IsFeatureExcluded(const std::string& uuid) = 0;

  // Each creator thread pauses this long after building an entity (10 ms unless set), which keeps
  // entity building at about 800 a second beside the host's own work. 0 builds without pausing, for
  // hosts that draw off-screen or want a view complete as soon as possible; negative values are
  // taken as 0. Takes effect at the creators' next entity.
  virtual void SetCreatorPause(int milliseconds) = 0;
  virtual int GetCreatorPause() = 0;
};

#endif  // ANNOTATIONLAYER_IANNOTATION_SPATIAL_ENGINE_H
