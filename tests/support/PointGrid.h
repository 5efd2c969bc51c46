// Fills annotation databases with grids of point features through CFeatureBatchImporter, for tests
// and benchmarks of the spatial engine that need many features with geometry.
#ifndef ANNOTATIONLAYER_TEST_POINT_GRID_H
#define ANNOTATIONLAYER_TEST_POINT_GRID_H

#include <string>
#include <vector>

class IAnnotationDBDataModel;

// columns x rows points at (x0 + i * step, y0 + j * step), z 0, named "p<i>_<j>".
struct SPointGrid {
  int columns = 1;
  int rows = 1;
  double x0 = 0.0;
  double y0 = 0.0;
  double step = 1.0;
};

// Imports the grid below the folder or layer `parentUuid`, as layers of at most `perLayer` points
// each (one import, and so one transaction, per layer; the layers are named `layerName` with a
// number appended when there is more than one). The uuids of the new layers are appended to
// `layers` when it is not null. False when an import failed.
bool ImportPointGrid(IAnnotationDBDataModel* model, const std::string& parentUuid,
                     const std::string& layerName, const SPointGrid& grid, int perLayer = 50000,
                     std::vector<std::string>* layers = nullptr);

#endif  // ANNOTATIONLAYER_TEST_POINT_GRID_H
