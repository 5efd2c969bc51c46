// A GeoJSON text imported the way `annotationlayer import` does it: GDAL reads the bytes from a
// /vsimem/ file, CSourceImporter stores every feature through CFeatureBatchImporter into a real
// annotation database opened with CDatabaseSession.
//
// The database is made once per process. Each input is imported inside an outer transaction that
// is rolled back afterwards: the importer's own commit then only counts down, so every input
// starts from the same empty database without a file copy or a reopen.
//
// After a successful import the new layer must hold exactly the features the summary counts, and
// every input must leave the database empty again.
#include <gdal_priv.h>
#include <ogrsf_frmts.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "AnnotationSchema.h"
#include "DatabaseSession.h"
#include "GdalEnvironment.h"
#include "IAnnotationDBDataModel.h"
#include "LocalText.h"
#include "LogCollector.h"
#include "NodeCacheCalculator.h"
#include "SourceImporter.h"
#include "ZuLog.h"

namespace {

constexpr const char kInputPath[] = "/vsimem/fuzz_geojson_import/input.geojson";

// Everything that lives for the whole run. Never destroyed: libFuzzer leaves through exit(), and
// the module's and GDAL's globals may already be gone by then; the files go in an atexit handler.
struct ImportFixture {
  std::shared_ptr<CLogCollector> log = std::make_shared<CLogCollector>(nullptr);
  std::unique_ptr<CGdalEnvironment> gdal;
  std::string directory;
  std::string databasePath;
  CDatabaseSession session;
};

ImportFixture* g_fixture = nullptr;

void RemoveFiles() {
  if (g_fixture == nullptr || g_fixture->directory.empty()) return;
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
    unlink((g_fixture->databasePath + suffix).c_str());
  }
  rmdir(g_fixture->directory.c_str());
}

// The layer kind comes from the input's length, so that mutations reach the GIS layers too.
E_LAYER_TYPE LayerTypeFor(size_t size) {
  static const E_LAYER_TYPE kTypes[] = {LAYER_TYPE_ANNOTATION, LAYER_TYPE_GIS_POINT,
                                        LAYER_TYPE_GIS_LINE, LAYER_TYPE_GIS_POLYGON};
  return kTypes[size % 4];
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  g_fixture = new ImportFixture;
  CLocalText::Prepare();
  CZuLog::SetSink(g_fixture->log);
  g_fixture->gdal = std::make_unique<CGdalEnvironment>(g_fixture->log.get());
  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp != nullptr && *tmp != '\0' ? tmp : "/tmp") +
                        "/fuzz_geojson_import.XXXXXX";
  if (mkdtemp(&pattern[0]) == nullptr) std::abort();
  g_fixture->directory = pattern;
  g_fixture->databasePath = pattern + "/annotation.db";
  std::atexit(RemoveFiles);
  std::string error;
  if (!AnnotationLayerNS::CreateAnnotationDatabase(g_fixture->databasePath) ||
      !g_fixture->session.Open(g_fixture->databasePath, &error)) {
    std::fprintf(stderr, "fuzz_geojson_import: no database: %s\n", error.c_str());
    std::abort();
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  VSILFILE* file = VSIFileFromMemBuffer(kInputPath, const_cast<GByte*>(data),
                                        static_cast<vsi_l_offset>(size), FALSE);
  if (file == nullptr) return 0;
  VSIFCloseL(file);
  const char* const geojsonOnly[] = {"GeoJSON", nullptr};
  GDALDatasetUniquePtr source(
      GDALDataset::Open(kInputPath, GDAL_OF_VECTOR | GDAL_OF_READONLY, geojsonOnly));
  if (source && source->GetLayerCount() > 0) {
    IAnnotationDBDataModel* model = g_fixture->session.Model();
    const std::string& root = g_fixture->session.RootUuid();
    CSourceImporter::Options options;
    options.parentUuid = root;
    options.sourceName = "input";
    options.layerType = LayerTypeFor(size);
    // As `--name-field name` would, when the source has such a field.
    OGRLayer* first = source->GetLayer(0);
    if (first != nullptr && first->GetLayerDefn()->GetFieldIndex("name") >= 0) {
      options.nameField = "name";
    }
    if (!model->BeginTransaction()) __builtin_trap();
    CSourceImporter importer(model, nullptr, nullptr);
    CSourceImporter::Summary summary;
    std::string error;
    if (importer.Run(source.get(), options, &summary, &error) == CSourceImporter::OUTCOME_DONE) {
      const std::string layer = model->GetLastLayerChildUUID(root);
      if (summary.layers != 1 || layer.empty() ||
          model->CountChildren(layer, NODE_KIND_LAYER) != summary.features) {
        __builtin_trap();
      }
    }
    if (!model->RollBackTransaction() || model->IsInTransaction() ||
        model->CountChildren(root, NODE_KIND_FOLDER) != 0) {
      __builtin_trap();
    }
    // The node cache keeps the layers the import announced, rolled back or not. A fresh pass
    // drops them, so that each input leaves the heap as it found it: libFuzzer otherwise takes
    // the growth for a leak and runs its costly leak check after nearly every input.
    CNodeCacheCalculator* calculator = model->GetNodeCacheCalculator();
    calculator->Refresh();
    if (!calculator->WaitForFinished(10000)) __builtin_trap();
  }
  source.reset();
  VSIUnlink(kInputPath);
  return 0;
}
