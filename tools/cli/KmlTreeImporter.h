// CKmlTreeImporter stores a tree read by CKmlTreeReader below a folder or layer, in one
// transaction: containers become folders where they hold no placemarks of their own (and stand
// under a folder), layers otherwise (and always when they were written for a layer); placemarks
// become features. Layers and features go in through CFeatureBatchImporter; folders, and the
// check and expand states the batch importer does not take, through the data model inside the
// same transaction. Document order becomes sibling order (a folder lists its folders before its
// layers, as every folder does).
//
// A document whose top holds placemarks becomes one layer, named after the document or else the
// fallback name; otherwise its top containers go directly below the parent.
//
// Any failure, and an interrupt, leaves the database as it was.
//
// Threading contract: one thread; nothing else may write through the model during Run.
#ifndef ANNOTATIONLAYER_CLI_KML_TREE_IMPORTER_H
#define ANNOTATIONLAYER_CLI_KML_TREE_IMPORTER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "AnnotationLayerTypes.h"
#include "KmlTreeReader.h"

class CAnnotationGroup;
class CFeatureBatchImporter;
class CInterruptFlag;
class IAnnotationDBDataModel;

class CKmlTreeImporter {
 public:
  struct Summary {
    int folders = 0;
    int layers = 0;
    int64_t features = 0;
  };
  enum E_OUTCOME { OUTCOME_DONE = 0, OUTCOME_FAILED = 1, OUTCOME_INTERRUPTED = 2 };

  // Neither pointer is owned; `interrupt` may be null.
  CKmlTreeImporter(IAnnotationDBDataModel* model, const CInterruptFlag* interrupt);
  CKmlTreeImporter(const CKmlTreeImporter&) = delete;
  CKmlTreeImporter& operator=(const CKmlTreeImporter&) = delete;

  // Takes the features out of `document`. On OUTCOME_FAILED `error` says why.
  E_OUTCOME Run(CKmlTreeReader::Container* document, const std::string& parentUuid,
                E_NODE_KIND parentKind, const std::string& fallbackName, Summary* summary,
                std::string* error);

 private:
  using Container = CKmlTreeReader::Container;

  bool StoreUnder(const std::string& parent, E_NODE_KIND kind,
                  const std::vector<Container*>& containers);
  std::string AppendFolder(const std::string& parent, const Container& container);
  bool ImportLayers(const std::string& parent, E_NODE_KIND kind,
                    const std::vector<Container*>& layers);
  bool InsertLayer(CFeatureBatchImporter* importer, Container* container,
                   std::unique_ptr<CAnnotationGroup> group, CAnnotationGroup* parent,
                   std::vector<std::unique_ptr<CAnnotationGroup>>* tops);
  bool ApplyStates(const Container& container, const std::string& uuid);
  bool Interrupted() const;

  IAnnotationDBDataModel* model_;
  const CInterruptFlag* interrupt_;
  Summary* summary_ = nullptr;
  std::string error_;
};

#endif  // ANNOTATIONLAYER_CLI_KML_TREE_IMPORTER_H
