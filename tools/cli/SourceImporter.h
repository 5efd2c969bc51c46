// CSourceImporter reads every layer of an OGR dataset into an annotation database through
// CFeatureBatchImporter, in one transaction: each OGR layer becomes a layer (below one layer
// named after the source when the source has several), each OGR feature a feature with its
// geometry (CGeometryConverter), its attribute fields (CFieldConverter) and its style
// (CStyleConverter). Features are converted and stored one at a time, so memory stays flat
// whatever the source's size.
//
// Features without geometry, with an empty one or with a kind that has no counterpart are
// skipped and counted. The time spent reading through OGR, converting and writing is measured
// separately.
//
// Any failure, and an interrupt, rolls the whole import back: the database is left as it was. A
// source that yields no feature to store is a failure too.
//
// Threading contract: one thread; nothing else may write through the model during Run.
#ifndef ANNOTATIONLAYER_CLI_SOURCE_IMPORTER_H
#define ANNOTATIONLAYER_CLI_SOURCE_IMPORTER_H

#include <cstdint>
#include <string>

#include "AnnotationLayerTypes.h"

class CInterruptFlag;
class CProgressBar;
class GDALDataset;
class IAnnotationDBDataModel;

class CSourceImporter {
 public:
  struct Options {
    std::string parentUuid;      // the folder or layer the new layers go under
    std::string nameField;       // UTF-8; empty: the importer's default naming
    E_LAYER_TYPE layerType = LAYER_TYPE_ANNOTATION;
    std::string sourceName;      // UTF-8 name of the group layer of a multi-layer source
  };
  struct Summary {
    int64_t features = 0;
    int layers = 0;
    int64_t skippedEmpty = 0;
    int64_t skippedUnsupported = 0;
    int64_t skippedUntransformable = 0;
    int64_t droppedInteriorRings = 0;
    int64_t styled = 0;
    double readSeconds = 0;
    double convertSeconds = 0;
    double writeSeconds = 0;
  };
  enum E_OUTCOME { OUTCOME_DONE = 0, OUTCOME_FAILED = 1, OUTCOME_INTERRUPTED = 2 };

  // None of the pointers is owned; `progress` and `interrupt` may be null.
  CSourceImporter(IAnnotationDBDataModel* model, CProgressBar* progress,
                  const CInterruptFlag* interrupt);
  CSourceImporter(const CSourceImporter&) = delete;
  CSourceImporter& operator=(const CSourceImporter&) = delete;

  // Imports all of `source`; on OUTCOME_FAILED `error` says why.
  E_OUTCOME Run(GDALDataset* source, const Options& options, Summary* summary,
                std::string* error);

 private:
  IAnnotationDBDataModel* model_;
  CProgressBar* progress_;
  const CInterruptFlag* interrupt_;
};

#endif  // ANNOTATIONLAYER_CLI_SOURCE_IMPORTER_H
