// CSubtreeExtent gives the area a folder or layer covers: the union of what lies below it. A
// layer counts with the extent stored in its record when it has one; a layer whose stored extent
// is all zero (GIS layers, layers imported without attributes, container layers) counts with the
// bounding boxes of its own features, read from their geometry, and with its sub-layers. A folder
// is the union of its folders and layers.
//
// Threading contract: one thread; the model is borrowed for the call.
#ifndef ANNOTATIONLAYER_CLI_SUBTREE_EXTENT_H
#define ANNOTATIONLAYER_CLI_SUBTREE_EXTENT_H

#include <string>

#include "AnnotationLayerTypes.h"

class IAnnotationDBDataModel;

class CSubtreeExtent {
 public:
  CSubtreeExtent() = delete;

  // The extent below the folder or layer `uuid`; false when nothing below it has a geometry.
  static bool Compute(IAnnotationDBDataModel* model, const std::string& uuid, E_NODE_KIND kind,
                      EXTENT* extent);
};

#endif  // ANNOTATIONLAYER_CLI_SUBTREE_EXTENT_H
