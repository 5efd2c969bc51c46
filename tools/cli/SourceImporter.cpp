#include "SourceImporter.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <QColor>

#include <chrono>
#include <memory>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeatureBatchImporter.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "FieldConverter.h"
#include "GeometryConverter.h"
#include "ImportTransaction.h"
#include "InterruptFlag.h"
#include "LocalText.h"
#include "ProgressBar.h"
#include "StyleConverter.h"

namespace {

using Clock = std::chrono::steady_clock;

double SecondsBetween(Clock::time_point from, Clock::time_point to) {
  return std::chrono::duration<double>(to - from).count();
}

// One OGR layer on its way in: the group that becomes its layer and its field keys in the local
// code page.
struct SourceLayer {
  OGRLayer* layer = nullptr;
  IAnnotationGroup* group = nullptr;
  std::vector<std::string> keys;
};

// A feature's style string. KML's shared styles (a styleUrl) come through as "@name", which is
// looked up in the layer's style table, then the source's.
std::string StyleOf(const OGRFeature& feature, OGRLayer* layer, GDALDataset* source) {
  const char* style = feature.GetStyleString();
  if (style == nullptr) return std::string();
  if (style[0] != '@') return style;
  for (OGRStyleTable* table : {layer->GetStyleTable(), source->GetStyleTable()}) {
    if (table == nullptr) continue;
    // Tables keep their names with or without the '@', depending on the driver.
    const char* found = table->Find(style + 1);
    if (found == nullptr) found = table->Find(style);
    if (found != nullptr) return found;
  }
  return std::string();
}

// The style the host draws a feature with when it has none: a black solid pen one pixel wide.
void AddDefaultStyle(CFeatureStyleSet* styles) {
  auto pen = std::make_unique<CFeaturePenStyle>();
  pen->SetColor(QColor(Qt::black));
  pen->SetWidth(1.0);
  pen->SetUnit(GCS_UNIT_PIXEL);
  styles->PushBack(std::move(pen));
}

}  // namespace

CSourceImporter::CSourceImporter(IAnnotationDBDataModel* model, CProgressBar* progress,
                                 const CInterruptFlag* interrupt)
    : model_(model), progress_(progress), interrupt_(interrupt) {}

CSourceImporter::E_OUTCOME CSourceImporter::Run(GDALDataset* source, const Options& options,
                                                Summary* summary, std::string* error) {
  *summary = Summary();
  const int layerCount = source->GetLayerCount();
  if (layerCount < 1) {
    *error = "the source holds no vector layers";
    return OUTCOME_FAILED;
  }

  // The groups stand for the new layers and must live until the import ends. A multi-layer
  // source gets one group named after it, holding a group per OGR layer.
  std::vector<std::unique_ptr<CAnnotationGroup>> topGroups;
  CAnnotationGroup* container = nullptr;
  if (layerCount > 1) {
    topGroups.push_back(
        std::make_unique<CAnnotationGroup>(CLocalText::FromUtf8(options.sourceName)));
    container = topGroups.back().get();
  }
  std::vector<SourceLayer> layers;
  int64_t total = 0;
  bool totalKnown = true;
  for (int i = 0; i < layerCount; ++i) {
    SourceLayer entry;
    entry.layer = source->GetLayer(i);
    if (entry.layer == nullptr) continue;
    auto group = std::make_unique<CAnnotationGroup>(CLocalText::FromUtf8(entry.layer->GetName()));
    if (container != nullptr) {
      entry.group = container->AddGroup(std::move(group));
    } else {
      entry.group = group.get();
      topGroups.push_back(std::move(group));
    }
    OGRFeatureDefn* definition = entry.layer->GetLayerDefn();
    for (int f = 0; f < definition->GetFieldCount(); ++f) {
      entry.keys.push_back(CLocalText::FromUtf8(definition->GetFieldDefn(f)->GetNameRef()));
    }
    // Counting may need a full scan for some formats: only ask where it is cheap.
    const int64_t count = entry.layer->TestCapability(OLCFastFeatureCount)
                              ? entry.layer->GetFeatureCount(FALSE)
                              : -1;
    if (count < 0) totalKnown = false;
    total += count < 0 ? 0 : count;
    layers.push_back(entry);
  }

  CFeatureBatchImporter importer(model_, options.parentUuid);
  importer.SetNameField(CLocalText::FromUtf8(options.nameField));
  if (!importer.BeginImport()) {
    *error = "the import could not start";
    return OUTCOME_FAILED;
  }
  CImportTransaction transaction(&importer);

  if (container != nullptr) {
    if (!importer.InsertLayer(container, LAYER_TYPE_ANNOTATION)) {
      *error = "the layer for the source could not be stored";
      return OUTCOME_FAILED;
    }
    ++summary->layers;
  }
  for (const SourceLayer& entry : layers) {
    if (!importer.InsertLayer(entry.group, options.layerType)) {
      *error = std::string("the layer for ") + entry.layer->GetName() + " could not be stored";
      return OUTCOME_FAILED;
    }
    ++summary->layers;
  }

  if (progress_ != nullptr) progress_->Start("import", totalKnown ? total : 0);
  // Formats whose features carry styles (KML, DXF, MapInfo...) say so.
  const bool stylesFeatures =
      source->GetDriver() != nullptr &&
      CPLFetchBool(source->GetDriver()->GetMetadata(), GDAL_DCAP_FEATURE_STYLES, false);
  CAnnotationFeature feature;
  for (const SourceLayer& entry : layers) {
    CGeometryConverter geometries;
    if (!geometries.SetSourceReference(entry.layer->GetSpatialRef(), error)) {
      *error = std::string("layer ") + entry.layer->GetName() + ": " + *error;
      return OUTCOME_FAILED;
    }
    entry.layer->ResetReading();
    while (true) {
      if (interrupt_ != nullptr && interrupt_->IsSet()) return OUTCOME_INTERRUPTED;
      const Clock::time_point readStart = Clock::now();
      OGRFeatureUniquePtr read(entry.layer->GetNextFeature());
      const Clock::time_point readEnd = Clock::now();
      summary->readSeconds += SecondsBetween(readStart, readEnd);
      if (!read) break;
      if (progress_ != nullptr) progress_->Advance();

      const CGeometryConverter::E_RESULT converted =
          geometries.ToFeature(read->GetGeometryRef(), &feature);
      if (converted != CGeometryConverter::RESULT_CONVERTED) {
        if (converted == CGeometryConverter::RESULT_EMPTY) ++summary->skippedEmpty;
        if (converted == CGeometryConverter::RESULT_UNSUPPORTED) ++summary->skippedUnsupported;
        if (converted == CGeometryConverter::RESULT_TRANSFORM_FAILED) {
          ++summary->skippedUntransformable;
        }
        summary->convertSeconds += SecondsBetween(readEnd, Clock::now());
        continue;
      }
      // A GIS layer is drawn as one kind of geometry: a source of another kind is refused whole
      // (the transaction takes back what was stored) rather than stored half.
      if (!CGeometryConverter::FitsLayerType(feature.GetGeometryType(), options.layerType)) {
        const char* family = CGeometryConverter::GisFamilyName(options.layerType);
        *error = "feature " + std::to_string(read->GetFID()) + " of layer " +
                 entry.layer->GetName() + " is a " +
                 OGRGeometryTypeToName(read->GetGeometryRef()->getGeometryType()) + ", but a gis-" +
                 family + " layer holds " + family +
                 " geometries only (choose --layer-type annotation, which holds any kind)";
        return OUTCOME_FAILED;
      }
      feature.ClearFields();
      const int fieldCount = static_cast<int>(entry.keys.size());
      for (int f = 0; f < fieldCount && f < read->GetFieldCount(); ++f) {
        const QVariant value = CFieldConverter::ToVariant(*read, f);
        if (value.isValid()) feature.SetFieldValue(entry.keys[static_cast<size_t>(f)], value);
      }
      feature.GetStyleSet()->Clear();
      const std::string style = StyleOf(*read, entry.layer, source);
      if (!style.empty() && CStyleConverter::FromStyleString(style, feature.GetStyleSet()) > 0) {
        ++summary->styled;
      } else if (stylesFeatures) {
        // The layer's style is gathered from its features' first styles, and a feature without
        // one is drawn with it: in a source whose features carry styles, an unstyled feature
        // would take its neighbour's colours. It gets the host's default as a style of its own.
        AddDefaultStyle(feature.GetStyleSet());
      }
      feature.SetGroup(entry.group);
      const Clock::time_point writeStart = Clock::now();
      summary->convertSeconds += SecondsBetween(readEnd, writeStart);

      const bool stored = importer.InsertFeature(&feature);
      summary->writeSeconds += SecondsBetween(writeStart, Clock::now());
      if (!stored) {
        *error = "feature " + std::to_string(read->GetFID()) + " of layer " +
                 entry.layer->GetName() + " could not be stored";
        return OUTCOME_FAILED;
      }
      ++summary->features;
    }
    summary->droppedInteriorRings += geometries.DroppedInteriorRings();
  }
  if (interrupt_ != nullptr && interrupt_->IsSet()) return OUTCOME_INTERRUPTED;
  // Empty layers would only hide the mistake (most often a CSV read without its coordinate
  // columns), so a source that gives nothing to store fails and leaves nothing behind.
  if (summary->features == 0) {
    const int64_t skipped =
        summary->skippedEmpty + summary->skippedUnsupported + summary->skippedUntransformable;
    *error = "the source gave no feature to import" +
             (skipped > 0 ? " (" + std::to_string(skipped) + " skipped, " +
                                std::to_string(summary->skippedEmpty) + " without geometry)"
                          : std::string());
    return OUTCOME_FAILED;
  }

  const Clock::time_point commitStart = Clock::now();
  const bool committed = transaction.Commit();
  summary->writeSeconds += SecondsBetween(commitStart, Clock::now());
  if (progress_ != nullptr) progress_->Finish();
  if (!committed) {
    *error = "the import could not be committed";
    return OUTCOME_FAILED;
  }
  return OUTCOME_DONE;
}
