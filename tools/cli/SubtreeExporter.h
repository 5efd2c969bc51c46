// CSubtreeExporter writes a folder or layer with everything below it to an OGR dataset: one OGR
// layer per annotation layer that holds features (a layer that only groups other layers gets
// none; an empty leaf layer gets an empty one), named after the layer (made unique), in WGS 84,
// with the layer's fields as OGR fields, every feature's attribute values, its geometry with Z
// (CGeometryConverter) and its style as an OGR style string for the formats that keep one.
//
// Each layer is read twice: once for the kinds of its features, which decide the OGR geometry
// type, and once to write. Writing runs in one dataset transaction where the format has them.
//
// Threading contract: one thread; nothing may write through the model during Run.
#ifndef ANNOTATIONLAYER_CLI_SUBTREE_EXPORTER_H
#define ANNOTATIONLAYER_CLI_SUBTREE_EXPORTER_H

#include <cstdint>
#include <string>
#include <vector>

#include "AnnotationLayerTypes.h"

class CInterruptFlag;
class CProgressBar;
class GDALDataset;
class IAnnotationDBDataModel;
class OGRLayer;

class CSubtreeExporter {
 public:
  struct Summary {
    int layers = 0;
    int64_t features = 0;
    int64_t withoutGeometry = 0;  // written with attributes only
  };
  enum E_OUTCOME { OUTCOME_DONE = 0, OUTCOME_FAILED = 1, OUTCOME_INTERRUPTED = 2 };

  // None of the pointers is owned; `progress` and `interrupt` may be null.
  CSubtreeExporter(IAnnotationDBDataModel* model, CProgressBar* progress,
                   const CInterruptFlag* interrupt);
  CSubtreeExporter(const CSubtreeExporter&) = delete;
  CSubtreeExporter& operator=(const CSubtreeExporter&) = delete;

  // Writes the subtree of `uuid` (a folder or layer) into `out`, creating its layers with
  // `layerOptions` (KEY=VALUE). On OUTCOME_FAILED `error` says why.
  E_OUTCOME Run(const std::string& uuid, E_NODE_KIND kind, GDALDataset* out,
                const std::vector<std::string>& layerOptions, Summary* summary,
                std::string* error);

 private:
  struct LayerEntry {
    std::string uuid;
    std::string name;  // local code page
    int64_t features = 0;
    bool hasSubLayers = false;
  };

  void CollectLayers(const std::string& uuid, E_NODE_KIND kind, std::vector<LayerEntry>* layers);
  E_OUTCOME ExportLayer(const LayerEntry& entry, GDALDataset* out,
                        const std::vector<std::string>& layerOptions,
                        std::vector<std::string>* usedNames, Summary* summary, std::string* error);
  bool Interrupted() const;

  IAnnotationDBDataModel* model_;
  CProgressBar* progress_;
  const CInterruptFlag* interrupt_;
};

#endif  // ANNOTATIONLAYER_CLI_SUBTREE_EXPORTER_H
