// The host's listener of a spatial engine: told when the engine's view changes, when its entities
// are all dropped, and when one feature's entity is removed or changed. Implementations that need
// only some notifications override those; the others do nothing.
//
// Threading contract: the engine calls the listener on the thread that called the engine's
// operation (the host's thread), never from the engine's own threads. The listener must not call
// back into the engine's Start or Stop from a notification.
#ifndef ANNOTATIONLAYER_IANNOTATION_SPATIAL_ENGINE_LISTENER_H
#define ANNOTATIONLAYER_IANNOTATION_SPATIAL_ENGINE_LISTENER_H

#include <string>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"

class ANNOTATIONLAYER_EXPORT IAnnotationSpatialEngineListener {
 public:
  virtual ~IAnnotationSpatialEngineListener() = default;

  // The view extent changed; a pass for `range` follows.
  virtual void OnRangeChanged(const EXTENT& range) {}
  // Every entity was dropped (reset, refresh or stop).
  virtual void OnReset() {}
  // The feature's entity was released and the feature will not be shown (excluded).
  virtual void OnFeatureRemoved(const std::string& uuid) {}
  // The feature's entity was rebuilt from the data model.
  virtual void OnFeatureChanged(const std::string& uuid) {}
};

#endif  // ANNOTATIONLAYER_IANNOTATION_SPATIAL_ENGINE_LISTENER_H
