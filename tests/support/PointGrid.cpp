#include "PointGrid.h"

#include <algorithm>
#include <memory>

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "FeatureBatchImporter.h"
#include "IAnnotationDBDataModel.h"

namespace {

bool ImportLayer(IAnnotationDBDataModel* model, const std::string& parentUuid,
                 const std::string& name, const SPointGrid& grid, long first, long count,
                 std::vector<std::string>* layers) {
  CAnnotationGroup group(name);
  for (long n = first; n < first + count; ++n) {
    const int i = static_cast<int>(n % grid.columns);
    const int j = static_cast<int>(n / grid.columns);
    auto feature = std::make_unique<CAnnotationFeature>(GEOMETRY_DATA_TYPE_POINT);
    CGeometryData part;
    part.PushBack(CVector3D(grid.x0 + i * grid.step, grid.y0 + j * grid.step, 0));
    feature->AddPart(part);
    feature->SetName("p" + std::to_string(i) + "_" + std::to_string(j));
    group.AddFeature(std::move(feature));
  }
  CFeatureBatchImporter importer(model, parentUuid);
  if (!importer.BeginImport()) return false;
  bool ok = importer.InsertLayer(&group, LAYER_TYPE_ANNOTATION);
  for (int k = 0; ok && k < group.GetFeatureCount(); ++k) {
    ok = importer.InsertFeature(group.GetFeature(k));
  }
  if (!ok) {
    importer.DiscardImport();
    return false;
  }
  if (!importer.EndImport()) return false;
  if (layers != nullptr) {
    // The new layer is the parent's last child.
    bool isLayer = false;
    layers->push_back(model->IsLayerUUID(parentUuid) ? model->GetLastChildUUID(parentUuid, isLayer)
                                                     : model->GetLastLayerChildUUID(parentUuid));
  }
  return true;
}

}  // namespace

bool ImportPointGrid(IAnnotationDBDataModel* model, const std::string& parentUuid,
                     const std::string& layerName, const SPointGrid& grid, int perLayer,
                     std::vector<std::string>* layers) {
  const long total = static_cast<long>(grid.columns) * grid.rows;
  if (perLayer < 1 || total < 1) return false;
  const bool several = total > perLayer;
  int index = 0;
  for (long first = 0; first < total; first += perLayer, ++index) {
    const long count = std::min<long>(perLayer, total - first);
    const std::string name = several ? layerName + std::to_string(index) : layerName;
    if (!ImportLayer(model, parentUuid, name, grid, first, count, layers)) return false;
  }
  return true;
}
