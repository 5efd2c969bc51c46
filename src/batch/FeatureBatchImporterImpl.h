// The implementation behind CFeatureBatchImporter. Internal to the module.
//
// Threading contract: as CFeatureBatchImporter.
#ifndef ANNOTATIONLAYER_FEATURE_BATCH_IMPORTER_IMPL_H
#define ANNOTATIONLAYER_FEATURE_BATCH_IMPORTER_IMPL_H

#include <map>
#include <memory>
#include <string>

#include "AnnotationLayerTypes.h"
#include "SiblingOrderAppender.h"
#include "SqlStatement.h"
#include "Stopwatch.h"

struct sqlite3;
class CFeatureStyleSet;
class CSpatialiteDBDataModel;
class CZuFieldSetObject;
class IAnnotationDBDataModel;
class IAnnotationFeature;
class IAnnotationGroup;

class CFeatureBatchImporterImpl {
 public:
  CFeatureBatchImporterImpl(IAnnotationDBDataModel* model, const std::string& rootUuid);
  ~CFeatureBatchImporterImpl();
  CFeatureBatchImporterImpl(const CFeatureBatchImporterImpl&) = delete;
  CFeatureBatchImporterImpl& operator=(const CFeatureBatchImporterImpl&) = delete;

  void SetNameField(const std::string& fieldName) { nameField_ = fieldName; }
  bool BeginImport();
  bool IsImporting() const { return importing_; }
  bool InsertLayer(IAnnotationGroup* group, E_LAYER_TYPE type);
  bool InsertFeature(IAnnotationFeature* feature);
  bool EndImport();
  bool DiscardImport();

 private:
  struct LayerRef {
    std::string uuid;
    int type = -1;  // -1 for a folder
  };
  // A layer's extent, grown by its features; `valid` once the first one was merged.
  struct Extent {
    EXTENT box;
    bool valid = false;
  };

  bool IsOpen() const;
  void ResetState();
  void FinalizeStatements();
  // Prepares `stmt` on first use; false (logged) when that fails.
  bool Ready(CSqlStatement& stmt, const std::string& sql, const char* tag);
  std::string FeatureName(IAnnotationFeature* feature) const;
  void MergeExtent(const std::string& layer, IAnnotationFeature* feature);
  void CollectStyles(const std::string& layer, const CFeatureStyleSet* styles);
  bool WriteLayerStyles();
  bool WriteLayerBases();

  CStopwatch stopwatch_;
  CSpatialiteDBDataModel* model_;
  sqlite3* db_ = nullptr;
  bool importing_ = false;
  std::string nameField_;
  std::string rootUuid_;
  int rootType_ = -1;
  std::map<IAnnotationGroup*, LayerRef> groups_;
  std::map<std::string, std::unique_ptr<CZuFieldSetObject>> headers_;
  std::map<std::string, std::unique_ptr<CFeatureStyleSet>> styles_;
  std::map<std::string, Extent> extents_;
  CSiblingOrderAppender appender_;
  CSqlStatement shapeInsert_, shapeStatusInsert_, shapeStyleInsert_, shapePropertyInsert_,
      layerInsert_, layerStatusInsert_;
};

#endif  // ANNOTATIONLAYER_FEATURE_BATCH_IMPORTER_IMPL_H
