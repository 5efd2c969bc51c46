// The demo host: what a host application does with the annotation layer module, end to end, on
// real data. It loads the module with dlopen (CModuleLibrary), creates a database, imports the
// bundled Natural Earth sample (CSampleAtlas), prints the tree, moves a view across the world with
// a spatial engine while counting the engine's 551/552 events (CViewRenderer), edits one
// country's outline through the key-point database, places ocean names in the name database, and
// writes a picture of the view and the atlas as a KMZ (CKmlTreeWriter) that globe viewers open.
//
// The module's exported classes (the key-point and name databases, the batch importer behind the
// sample) are linked as the host's plugins link them; dlopen then finds the library already
// mapped and hands back the same module.
//
//   annotationlayer-demo [--out DIR] [--sample TOPOJSON] [--module LIBRARY]
//
// Without --out the files go to a new directory under the system's temporary directory; the demo
// prints where.
#include <stdlib.h>

#include <QBuffer>
#include <QColor>
#include <QFont>
#include <QImage>
#include <QPainter>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "AnnotationScene.h"
#include "EntityEventCounter.h"
#include "FeatureLabelStyle.h"
#include "FeatureOption.h"
#include "FeatureStyleSet.h"
#include "FolderOption.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationDBObjectVisitor.h"
#include "IAnnotationLayerModule.h"
#include "IAnnotationSpatialEngine.h"
#include "LayerOption.h"
#include "LogRoute.h"
#include "ModuleLibrary.h"
#include "NameRecorder.h"
#include "ObjectCreator.h"
#include "OffscreenGui.h"
#include "KmlTreeWriter.h"
#include "KmzArchive.h"
#include "SampleAtlas.h"
#include "SpatialiteEditorDB.h"
#include "SpatialiteNameDB.h"
#include "StyleJson.h"
#include "ViewRenderer.h"
#include "ZuCoreApplication.h"

namespace {

constexpr int kViewId = 1;
constexpr int kTimeoutMs = 60000;

int step = 0;

// One line of detail under a step, printf-style, on the same stream as the steps.
template <typename... Args>
void Detail(const char* format, Args... args) {
  char line[512];
  std::snprintf(line, sizeof line, format, args...);
  std::cout << "    " << line << std::endl;
}

bool Report(const std::string& what, bool ok, const std::string& why = std::string()) {
  std::cout << "[" << ++step << "] " << what << ": " << (ok ? "ok" : "FAILED") << std::endl;
  if (!ok && !why.empty()) std::cout << "    " << why << std::endl;
  return ok;
}

EXTENT Extent(double minX, double minY, double maxX, double maxY) {
  EXTENT extent;
  extent.min_x = minX;
  extent.min_y = minY;
  extent.max_x = maxX;
  extent.max_y = maxY;
  return extent;
}

// A little wider than the world: the engine takes the features lying inside the view, and the
// countries that cross the antimeridian reach from -180 to 180.
const EXTENT kWorld = Extent(-180.5, -90.5, 180.5, 90.5);
const EXTENT kEurope = Extent(-25, 34, 45, 72);

struct Options {
  std::string out;
  std::string sample = ANNOTATIONLAYER_SAMPLE_PATH;
  std::string module = ANNOTATIONLAYER_MODULE_PATH;
};

bool ParseOptions(int argc, char** argv, Options* options) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (i + 1 >= argc) return false;
    if (word == "--out") options->out = argv[++i];
    else if (word == "--sample") options->sample = argv[++i];
    else if (word == "--module") options->module = argv[++i];
    else return false;
  }
  return true;
}

// The tree as the host's tree view shows it: folders and layers in sibling order, indented, each
// layer with its number of features.
class CTreePrinter : public IAnnotationDBObjectVisitor {
 public:
  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel*, const std::list<std::string>& path,
                            const std::string& uuid, const CFolderOption& option) override {
    rows_.push_back({path.size(), "folder", option.GetName(), uuid});
    return HANDLE_TYPE_CONTINUE;
  }
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel*, const std::list<std::string>& path,
                           const std::string& uuid, const CLayerOption& option) override {
    rows_.push_back({path.size(), "layer", option.GetName(), uuid});
    return HANDLE_TYPE_CONTINUE;
  }
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string&, const CFeatureOption& option) override {
    ++features_[option.GetParentUUID()];
    return HANDLE_TYPE_CONTINUE;
  }
  bool IsOnlyUUID() override { return false; }

  void Print() const {
    for (const Row& row : rows_) {
      std::cout << "    " << std::string(2 * row.depth, ' ') << row.kind << " \"" << row.name
                << "\"";
      auto count = features_.find(row.uuid);
      if (count != features_.end()) std::cout << "  " << count->second << " features";
      std::cout << std::endl;
    }
  }

 private:
  struct Row {
    size_t depth;
    std::string kind, name, uuid;
  };
  std::vector<Row> rows_;
  std::map<std::string, int> features_;
};

// Finds the feature named `name` among a layer's features.
class CFeatureFinder : public IAnnotationDBObjectVisitor {
 public:
  CFeatureFinder(std::string layer, std::string name)
      : layer_(std::move(layer)), name_(std::move(name)) {}
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string& uuid, const CFeatureOption& option) override {
    if (option.GetParentUUID() != layer_ || option.GetName() != name_) return HANDLE_TYPE_CONTINUE;
    found = uuid;
    return HANDLE_TYPE_STOP;
  }
  std::string found;

 private:
  std::string layer_, name_;
};

// Moves the view to `extent` and prints what the engine did.
bool MoveView(CViewRenderer* view, const std::string& name, const EXTENT& extent) {
  CViewRenderer::ViewReport report;
  std::string error;
  const bool ok = view->ShowExtent(extent, kTimeoutMs, nullptr, &report, &error);
  Report("view over " + name, ok, error);
  if (ok) {
    Detail("%d features in view (%d drawn before), events: %d x 551 (entity built), "
                "%d x 552 (draw order renewed), %.2f s",
                report.expected, report.alreadyDrawn, report.entitiesBuilt, report.passesChanged,
                report.seconds);
  }
  return ok;
}

int VertexCount(const IAnnotationFeature& feature) {
  int count = 0;
  for (int i = 0; i < feature.GetPartCount(); ++i) count += feature.GetPart(i).GetSize();
  return count;
}

// Moves the northernmost vertex of Iceland one degree north and adds a vertex after it, through
// the key-point database, and writes the outline back.
bool EditIceland(IAnnotationDBDataModel* model, IAnnotationSpatialEngine* engine,
                 const std::string& countriesLayer) {
  CFeatureFinder finder(countriesLayer, "Iceland");
  model->Travel(&finder);
  if (!Report("find Iceland among the countries", !finder.found.empty())) return false;
  CAnnotationFeature feature;
  if (!model->QueryGeometryData(finder.found, &feature)) return Report("read its outline", false);
  const int before = VertexCount(feature);

  CSpatialiteEditorDB editor;
  bool ok = editor.Open("demo", &feature);
  CVector3D north;
  const int id = ok ? editor.QueryClosestKeyPoint(north, Extent(-25, 62, -12, 68),
                                                  CVector3D(-17, 70, 0))
                    : -1;
  ok = ok && id >= 0;
  const CVector3D moved(north.X(), north.Y() + 1.0, north.Z());
  const bool revised = ok && editor.ReviseKeyPoint(id, moved);
  int movedId = -1;
  if (revised) {
    // Moving gives the point a new id: find it again where it went.
    CVector3D at;
    movedId = editor.QueryPickedKeyPoint(at, moved, 1e-3);  // the index keeps floats
  }
  ok = ok && movedId >= 0 &&
       editor.InsertKeyPoint(movedId, CVector3D(moved.X() + 1.0, moved.Y() - 0.5, 0)) >= 0 &&
       editor.CombineToData(&feature);
  editor.Close();
  ok = ok && model->ModifyGeometryData(finder.found, &feature);
  if (ok) engine->UpdateFeature(finder.found);
  Report("edit Iceland's outline through the key-point database", ok);
  if (ok) {
    Detail("vertex (%.2f, %.2f) moved to (%.2f, %.2f), one vertex added: %d -> %d vertices",
                north.X(), north.Y(), moved.X(), moved.Y(), before, VertexCount(feature));
  }
  return ok;
}

struct OceanName {
  const char* name;
  double x, y;
};
const OceanName kOceans[] = {{"Pacific Ocean", -150, 5},   {"Atlantic Ocean", -38, 22},
                             {"Indian Ocean", 78, -22},    {"Southern Ocean", 20, -62},
                             {"Arctic Ocean", -10, 82},    {"Mediterranean Sea", 18, 36}};

// Places the oceans' names in the name database (the host's free-standing labels).
bool PlaceNames(CSpatialiteNameDB* names) {
  if (!names->Open("demo")) return Report("open the name database", false);
  CFeatureStyleSet styles;
  auto label = std::make_unique<CFeatureLabelStyle>();
  label->SetForegroundColor(QColor("#2c5a8c"));
  label->SetItalic(true);
  label->SetSize(11);
  styles.PushBack(std::move(label));
  int placed = 0;
  for (const OceanName& ocean : kOceans) {
    CNameRecorder record;
    record.uuid = std::string("ocean-") + std::to_string(placed);
    record.name = ocean.name;
    record.style = AnnotationLayerNS::ToJsonStyle(&styles);
    record.position = CVector3D(ocean.x, ocean.y, 0);
    placed += names->InsertName(record) ? 1 : 0;
  }
  const int expected = static_cast<int>(sizeof kOceans / sizeof kOceans[0]);
  return Report("place " + std::to_string(placed) + " ocean names in the name database",
                placed == expected);
}

// Draws the names of the name database inside `extent` over the picture, as the host's label
// layer would.
class CNamePainter : public CSpatialiteNameDB::INameVisitor {
 public:
  CNamePainter(QImage* image, const EXTENT& extent) : painter_(image), extent_(extent) {
    painter_.setRenderHint(QPainter::Antialiasing, true);
    sx_ = image->width() / (extent.max_x - extent.min_x);
    sy_ = image->height() / (extent.max_y - extent.min_y);
  }
  bool VisitName(const CNameRecorder& record) override {
    // The traversal hands over uuid and position; the rest comes from the row.
    records.push_back(record);
    return false;
  }
  int Paint(CSpatialiteNameDB* names) {
    int drawn = 0;
    for (const CNameRecorder& brief : records) {
      const CNameRecorder record = names->QueryNameRecorder(brief.uuid);
      CFeatureStyleSet styles;
      record.ConvertToStyle(&styles);
      QFont font;
      QColor colour(Qt::darkBlue);
      for (int i = 0; i < styles.GetCount(); ++i) {
        if (const auto* label = dynamic_cast<const CFeatureLabelStyle*>(styles.At(i))) {
          font.setItalic(label->IsItalic());
          font.setPointSizeF(label->GetSize());
          colour = label->GetForegroundColor();
        }
      }
      painter_.setFont(font);
      painter_.setPen(colour);
      const QPointF at((record.position.X() - extent_.min_x) * sx_,
                       (extent_.max_y - record.position.Y()) * sy_);
      const QString text = QString::fromStdString(record.name);
      const QRectF box = painter_.fontMetrics().boundingRect(text);
      painter_.drawText(at - box.center(), text);
      ++drawn;
    }
    return drawn;
  }
  std::vector<CNameRecorder> records;

 private:
  QPainter painter_;
  EXTENT extent_;
  double sx_ = 1, sy_ = 1;
};

// Paints the view at `extent` into `path`, with the name database's names on top.
// The atlas's folders, layers and features as nested KML folders in a KMZ.
bool ExportAtlas(IAnnotationDBDataModel* model, const std::string& folder,
                 const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
  QBuffer document;
  document.open(QIODevice::WriteOnly);
  CKmlTreeWriter writer(model, nullptr);
  CKmlTreeWriter::Summary summary;
  std::string error;
  bool ok = writer.Write(folder, NODE_KIND_FOLDER, true, &document, &summary, &error) ==
            CKmlTreeWriter::OUTCOME_DONE;
  ok = ok && CKmzArchive::Write(path, document.data(), writer.PackedFiles(), &error);
  if (ok) {
    Detail("%lld placemarks in %d layers and %d folders, %d shared styles",
           static_cast<long long>(summary.features), summary.layers, summary.folders,
           summary.styles);
  }
  return Report("export the atlas as " + path, ok, error);
}

bool WritePicture(CViewRenderer* view, CSpatialiteNameDB* names, const EXTENT& extent, int width,
                  int height, const std::string& path) {
  QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
  image.fill(QColor("#eaf2f8"));  // the sea
  CScenePainter::Result drawn;
  const int level = CViewRenderer::LevelForExtent(extent, width);
  bool ok = view->Paint(extent, level, &image, &drawn);
  int oceanNames = 0;
  if (ok) {
    CNamePainter painter(&image, extent);
    names->TravelViaExtent(extent, 0, painter);
    oceanNames = painter.Paint(names);
  }
  ok = ok && image.save(QString::fromStdString(path), "PNG");
  Report("write " + path, ok);
  if (ok) {
    Detail("level %d: %d shapes, %d feature names, %d ocean names", level, drawn.shapes,
                drawn.labels, oceanNames);
  }
  return ok;
}

std::string MakeOutputDir(const std::string& requested) {
  std::error_code ec;
  if (!requested.empty()) {
    std::filesystem::create_directories(requested, ec);
    return ec ? std::string() : std::filesystem::absolute(requested).string() + "/";
  }
  std::string pattern =
      (std::filesystem::temp_directory_path() / "annotationlayer-demo-XXXXXX").string();
  return mkdtemp(&pattern[0]) != nullptr ? pattern + "/" : std::string();
}

int Run(const Options& options) {
  const std::string out = MakeOutputDir(options.out);
  if (!Report("output directory " + out, !out.empty())) return 1;
  // The module keeps its cache (key points, names) in the host's data directory, and its log in a
  // file there.
  CZuCoreApplication::GetInstance()->SetDataDir(out);
  const std::string logPath = out + "module.log";
  CLogRoute log(std::make_shared<CZuLogFileSink>(logPath));

  CModuleLibrary library;
  std::string error;
  if (!Report("load " + options.module, library.Load(options.module, &error), error)) return 1;
  IAnnotationLayerModule* module = library.Module();
  if (!Report("start the module", module != nullptr && module->Start())) return 1;

  const std::string dbPath = out + "world.db";
  std::error_code ignored;
  std::filesystem::remove(dbPath, ignored);  // a fresh database on every run
  if (!Report("create " + dbPath, library.CreateDatabase(dbPath))) return 1;
  std::unique_ptr<IAnnotationDBDataModel> model(dynamic_cast<IAnnotationDBDataModel*>(
      CObjectCreatorSingleton::GetInstance()->CreateObject("CSpatialiteDBDataModel")));
  if (!Report("make a \"CSpatialiteDBDataModel\" through the object creator", model != nullptr)) {
    return 1;
  }
  model->Initialize("demo");
  bool ok = Report("install it on the database", model->Install(dbPath));

  CSampleAtlas::Contents atlas;
  ok = ok && Report("import " + options.sample,
                    CSampleAtlas::Build(model.get(), options.sample, &atlas, &error), error);
  if (ok) {
    std::cout << "    " << atlas.features << " features; the tree:" << std::endl;
    CTreePrinter tree;
    model->Travel(&tree);
    tree.Print();
  }

  {
    COffscreenGui gui;
    CViewRenderer view(module, model.get(), kViewId);
    CSpatialiteNameDB names;
    ok = ok && Report("start a spatial engine on the model", view.Start("demo", kTimeoutMs, &error),
                      error);
    ok = ok && MoveView(&view, "Europe", kEurope) &&
         MoveView(&view, "Africa", Extent(-20, -36, 55, 38)) &&
         MoveView(&view, "East Asia", Extent(70, -12, 150, 55)) &&
         MoveView(&view, "the Americas", Extent(-170, -57, -30, 75)) &&
         MoveView(&view, "Europe again", kEurope);
    ok = ok && EditIceland(model.get(), view.Engine(), atlas.countriesLayer);
    ok = ok && PlaceNames(&names);
    ok = ok && MoveView(&view, "the world", kWorld) &&
         WritePicture(&view, &names, kWorld, 1600, 800, out + "world.png");
    if (ok) {
      Detail("engine events in all: %d x 551, %d x 552", view.Events()->EntitiesBuilt(),
                  view.Events()->PassesChanged());
    }
    ok = Report("close the name database (commits the names)", names.Close()) && ok;
  }
  ok = ok && ExportAtlas(model.get(), atlas.atlasFolder, out + "world.kmz");

  const std::string namesPath = module->GetCacheDir() + "name_cluster_demo.db";
  model->Uninstall();
  model->Uninitialize();
  model.reset();
  library.DestroyModule();
  if (ok) {
    std::cout << "database: " << dbPath << std::endl
              << "picture: " << out << "world.png" << std::endl
              << "atlas as KMZ: " << out << "world.kmz" << std::endl
              << "names: " << namesPath << std::endl;
  }
  std::cout << "module log: " << logPath << std::endl;
  std::cout << (ok ? "demo finished" : "demo failed") << std::endl;
  return ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, &options)) {
    std::fputs("usage: annotationlayer-demo [--out DIR] [--sample TOPOJSON] [--module LIBRARY]",
               stderr);
    return 2;
  }
  return Run(options);
}
