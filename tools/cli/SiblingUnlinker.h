// CSiblingUnlinker takes a folder or layer out of its parent's sibling list before the batch
// deleter removes it: the left neighbour's right link and the right neighbour's left link are
// pointed past it, through the data model's option records. The batch deleter removes rows only
// and leaves these links alone.
//
// Links of a list that mixes layers and features live in two columns per side, and the model's
// readers prefer the layer column; when the new neighbour is a feature or there is none, the
// layer column is first cleared so that the old link to the removed layer cannot win.
//
// Threading contract: the thread that uses the model; call inside a model transaction.
#ifndef ANNOTATIONLAYER_CLI_SIBLING_UNLINKER_H
#define ANNOTATIONLAYER_CLI_SIBLING_UNLINKER_H

#include <string>

#include "AnnotationLayerTypes.h"

class IAnnotationDBDataModel;

class CSiblingUnlinker {
 public:
  explicit CSiblingUnlinker(IAnnotationDBDataModel* model);
  CSiblingUnlinker(const CSiblingUnlinker&) = delete;
  CSiblingUnlinker& operator=(const CSiblingUnlinker&) = delete;

  // False for a feature, and when a neighbour's record could not be written.
  bool Unlink(const std::string& uuid, E_NODE_KIND kind);

 private:
  // Points one side of the node `uuid` (a layer or a feature) at `target`.
  bool Relink(const std::string& uuid, bool isLayer, bool rightSide, const std::string& target,
              bool targetIsLayer);

  IAnnotationDBDataModel* model_;
};

#endif  // ANNOTATIONLAYER_CLI_SIBLING_UNLINKER_H
