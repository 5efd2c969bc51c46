#include "SubtreeExporter.h"

#include <cpl_string.h>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>

#include "AnnotationFeature.h"
#include "AnnotationLayerNS.h"
#include "ChildLister.h"
#include "FeatureOption.h"
#include "FeatureStyleSet.h"
#include "FieldConverter.h"
#include "FieldValueList.h"
#include "GeometryConverter.h"
#include "IAnnotationDBDataModel.h"
#include "InterruptFlag.h"
#include "LayerOption.h"
#include "LocalText.h"
#include "ProgressBar.h"
#include "StyleConverter.h"
#include "ZuFieldSetObject.h"

namespace {

// Holds a dataset transaction, where the format has them, until Commit; rolls back otherwise.
class CDatasetTransaction {
 public:
  explicit CDatasetTransaction(GDALDataset* dataset)
      : dataset_(dataset), open_(dataset->TestCapability(ODsCTransactions) &&
                                 dataset->StartTransaction(FALSE) == OGRERR_NONE) {}
  ~CDatasetTransaction() {
    if (open_) dataset_->RollbackTransaction();
  }
  CDatasetTransaction(const CDatasetTransaction&) = delete;
  CDatasetTransaction& operator=(const CDatasetTransaction&) = delete;

  bool Commit() {
    if (!open_) return true;
    open_ = false;
    return dataset_->CommitTransaction() == OGRERR_NONE;
  }

 private:
  GDALDataset* dataset_;
  bool open_;
};

// The uuids of a layer's features, in row order.
class CFeatureUuids : public IAnnotationDBObjectVisitor {
 public:
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string& uuid, const CFeatureOption&) override {
    uuids.push_back(uuid);
    return HANDLE_TYPE_CONTINUE;
  }
  bool IsOnlyUUID() override { return true; }
  std::vector<std::string> uuids;
};

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// A layer name not used yet in this export; formats often compare names without case.
std::string UniqueName(const std::string& wanted, std::vector<std::string>* used) {
  const std::string base = wanted.empty() ? "layer" : wanted;
  std::string name = base;
  for (int n = 2;; ++n) {
    const bool taken = std::any_of(used->begin(), used->end(), [&name](const std::string& other) {
      return Lower(other) == Lower(name);
    });
    if (!taken) break;
    name = base + "_" + std::to_string(n);
  }
  used->push_back(name);
  return name;
}

}  // namespace

CSubtreeExporter::CSubtreeExporter(IAnnotationDBDataModel* model, CProgressBar* progress,
                                   const CInterruptFlag* interrupt)
    : model_(model), progress_(progress), interrupt_(interrupt) {}

bool CSubtreeExporter::Interrupted() const {
  return interrupt_ != nullptr && interrupt_->IsSet();
}

void CSubtreeExporter::CollectLayers(const std::string& uuid, E_NODE_KIND kind,
                                     std::vector<LayerEntry>* layers) {
  CChildLister lister(false, false);
  std::vector<CChildLister::Child> children;
  lister.List(model_, uuid, kind, &children);
  for (const CChildLister::Child& child : children) {
    if (child.kind == NODE_KIND_LAYER) {
      LayerEntry entry;
      entry.uuid = child.uuid;
      entry.name = child.layer.GetName();
      layers->push_back(entry);
    }
    CollectLayers(child.uuid, child.kind, layers);
  }
}

CSubtreeExporter::E_OUTCOME CSubtreeExporter::Run(const std::string& uuid, E_NODE_KIND kind,
                                                  GDALDataset* out,
                                                  const std::vector<std::string>& layerOptions,
                                                  Summary* summary, std::string* error) {
  *summary = Summary();
  std::vector<LayerEntry> layers;
  if (kind == NODE_KIND_LAYER) {
    LayerEntry entry;
    entry.uuid = uuid;
    entry.name = model_->QueryLayerOption(uuid).GetName();
    layers.push_back(entry);
  }
  CollectLayers(uuid, kind, &layers);

  // Own features are a layer's children less its sub-layers.
  std::vector<LayerEntry> written;
  int64_t total = 0;
  for (LayerEntry& entry : layers) {
    CChildLister lister(false, false);
    std::vector<CChildLister::Child> children;
    lister.List(model_, entry.uuid, NODE_KIND_LAYER, &children);
    const int all = model_->CountChildren(entry.uuid, NODE_KIND_LAYER);
    entry.features = std::max<int64_t>(0, all - static_cast<int64_t>(children.size()));
    entry.hasSubLayers = !children.empty();
    if (entry.features == 0 && entry.hasSubLayers) continue;  // only groups other layers
    total += entry.features;
    written.push_back(entry);
  }
  if (written.empty()) {
    *error = "nothing to export: " + uuid + " holds no layers";
    return OUTCOME_FAILED;
  }

  if (progress_ != nullptr) progress_->Start("export", 2 * total);
  CDatasetTransaction transaction(out);
  std::vector<std::string> usedNames;
  for (const LayerEntry& entry : written) {
    const E_OUTCOME outcome = ExportLayer(entry, out, layerOptions, &usedNames, summary, error);
    if (outcome != OUTCOME_DONE) return outcome;
  }
  if (!transaction.Commit()) {
    *error = "the output could not be committed";
    return OUTCOME_FAILED;
  }
  if (progress_ != nullptr) progress_->Finish();
  return OUTCOME_DONE;
}

CSubtreeExporter::E_OUTCOME CSubtreeExporter::ExportLayer(
    const LayerEntry& entry, GDALDataset* out, const std::vector<std::string>& layerOptions,
    std::vector<std::string>* usedNames, Summary* summary, std::string* error) {
  const std::string nameUtf8 = CLocalText::ToUtf8(entry.name);

  // First pass: the features and the kinds they hold, which decide the layer's geometry type.
  CFeatureUuids features;
  model_->TravelLayer(&features, entry.uuid, 0, -1);
  std::set<E_GEOMETRY_DATA_TYPE> kinds;
  for (const std::string& uuid : features.uuids) {
    if (Interrupted()) return OUTCOME_INTERRUPTED;
    kinds.insert(AnnotationLayerNS::MappingGeomType(model_->QueryFeatureBase(uuid).GetType()));
    if (progress_ != nullptr) progress_->Advance();
  }
  const OGRwkbGeometryType geometryType = CGeometryConverter::LayerType(kinds);

  if (!out->TestCapability(ODsCCreateLayer)) {
    *error = "the output format holds one layer only, and the subtree has more (layer '" +
             nameUtf8 + "'); export one layer, or use a format such as GPKG";
    return OUTCOME_FAILED;
  }
  CPLStringList options;
  for (const std::string& option : layerOptions) options.AddString(option.c_str());
  OGRSpatialReference wgs84 = CGeometryConverter::Wgs84();
  const std::string layerName = UniqueName(nameUtf8, usedNames);
  OGRLayer* layer = out->CreateLayer(layerName.c_str(), &wgs84, geometryType, options.List());
  if (layer == nullptr) {
    *error = "the output layer '" + layerName + "' could not be created";
    return OUTCOME_FAILED;
  }
  ++summary->layers;

  // The layer's field header becomes the OGR schema, in its order.
  CZuFieldSetObject headers;
  model_->QueryLayerHeaderList(entry.uuid, headers);
  const CFieldValueList headerList(headers);
  std::map<std::string, int> fieldIndex;
  for (const CZuFieldSetObject::__tagField& field : headerList.fields) {
    OGRFieldSubType subType = OFSTNone;
    const OGRFieldType type = CFieldConverter::OgrType(field.type, &subType);
    OGRFieldDefn definition(CLocalText::ToUtf8(field.key).c_str(), type);
    definition.SetSubType(subType);
    if (layer->CreateField(&definition) != OGRERR_NONE) {
      *error = "the field '" + CLocalText::ToUtf8(field.key) + "' of layer '" + layerName +
               "' could not be created";
      return OUTCOME_FAILED;
    }
    // Formats may rename a field (shapefiles shorten names); its position stays.
    fieldIndex[field.key] = layer->GetLayerDefn()->GetFieldCount() - 1;
  }

  // Second pass: the features themselves.
  CAnnotationFeature feature;
  CZuFieldSetObject fields;
  for (const std::string& uuid : features.uuids) {
    if (Interrupted()) return OUTCOME_INTERRUPTED;
    OGRFeatureUniquePtr target(OGRFeature::CreateFeature(layer->GetLayerDefn()));

    fields.Cleanup();
    model_->QueryField(uuid, fields);
    const CFieldValueList values(fields);
    for (const CZuFieldSetObject::__tagField& field : values.fields) {
      auto found = fieldIndex.find(field.key);
      if (found != fieldIndex.end()) {
        CFieldConverter::SetOgrField(target.get(), found->second, field.value);
      }
    }

    feature.ClearParts();
    feature.SetGeometryType(GEOMETRY_DATA_TYPE_UNKNOWN);
    OGRGeometryUniquePtr geometry;
    if (model_->QueryGeometryData(uuid, &feature)) geometry = CGeometryConverter::ToOgr(feature);
    if (geometry) {
      geometry->assignSpatialReference(layer->GetSpatialRef());
      target->SetGeometryDirectly(
          CGeometryConverter::FitToLayerType(std::move(geometry), geometryType).release());
    } else {
      ++summary->withoutGeometry;
    }

    CFeatureStyleSet styles;
    if (model_->QueryStyle(&styles, uuid, false)) {
      const std::string style = CStyleConverter::ToStyleString(styles);
      if (!style.empty()) target->SetStyleString(style.c_str());
    }

    if (layer->CreateFeature(target.get()) != OGRERR_NONE) {
      *error = "feature " + uuid + " could not be written to layer '" + layerName + "'";
      return OUTCOME_FAILED;
    }
    ++summary->features;
    if (progress_ != nullptr) progress_->Advance();
  }
  return OUTCOME_DONE;
}
