// CFeatureBatchImporter loads a tree of the host's annotation groups and features into an open
// annotation database, below one existing folder or layer (the import root), in one transaction:
// each group becomes a layer, each feature a feature row with its geometry, status, attribute
// fields and style. It keeps its statements prepared for the whole import and writes per-layer
// data (styles, property headers, extents, sibling links) once at the end.
//
//   CFeatureBatchImporter importer(model, rootUuid);
//   importer.SetNameField("title");
//   importer.BeginImport();
//   importer.InsertLayer(group, LAYER_TYPE_ANNOTATION);   // every group before its contents
//   importer.InsertFeature(feature);                      // every feature
//   importer.EndImport();                                 // or DiscardImport()
//
// A feature's name is, in this order: the text of its field named by SetNameField when that is
// not empty, the feature's own name when that is not empty, the text of its field "name".
//
// Features of GIS layers (types 100..102) get their shape row only: no status, field, style or
// order rows.
//
// The class is a handle: copies share one implementation, which lives as long as any handle; an
// import still in progress when the last handle goes is discarded.
//
// Threading contract: one importer is used from one thread; it writes on the data model's
// connection, so nothing else may write through that model during an import.
#ifndef ANNOTATIONLAYER_FEATURE_BATCH_IMPORTER_H
#define ANNOTATIONLAYER_FEATURE_BATCH_IMPORTER_H

#include <memory>
#include <string>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"

class IAnnotationDBDataModel;
class IAnnotationFeature;
class IAnnotationGroup;
class CFeatureBatchImporterImpl;

class ANNOTATIONLAYER_EXPORT CFeatureBatchImporter {
 public:
  // The model must stay open while the importer is used.
  CFeatureBatchImporter(IAnnotationDBDataModel* model, const std::string& rootUuid);
  ~CFeatureBatchImporter();
  CFeatureBatchImporter(const CFeatureBatchImporter& other);
  CFeatureBatchImporter& operator=(const CFeatureBatchImporter& other);

  void SetNameField(const std::string& fieldName);
  // Opens the transaction and finds where the import root's children end.
  bool BeginImport();
  bool IsImporting() const;
  // A layer for `group`, under the layer of its parent group or else under the import root. Each
  // group is imported once. The group is not owned and must stay alive until EndImport.
  bool InsertLayer(IAnnotationGroup* group, E_LAYER_TYPE type);
  // A feature under the layer of its group, or under the import root.
  bool InsertFeature(IAnnotationFeature* feature);
  // Writes the per-layer data and commits; the result is the commit's.
  bool EndImport();
  // Rolls everything back; the result is the rollback's.
  bool DiscardImport();

 private:
  std::shared_ptr<CFeatureBatchImporterImpl> impl_;
};

#endif  // ANNOTATIONLAYER_FEATURE_BATCH_IMPORTER_H
