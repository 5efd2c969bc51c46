#include "ImportCommand.h"

#include <cpl_string.h>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>
#include <sys/stat.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <chrono>
#include <memory>

#include "ArgumentParser.h"
#include "ChildLister.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "IAnnotationDBDataModel.h"
#include "InterruptFlag.h"
#include "KmlTreeImporter.h"
#include "KmlTreeReader.h"
#include "KmzArchive.h"
#include "LogCollector.h"
#include "NodeFormatter.h"
#include "ProgressBar.h"
#include "SourceImporter.h"

namespace {

// The layer kinds --layer-type accepts, by name or number.
bool ParseLayerType(const std::string& text, E_LAYER_TYPE* type) {
  static const struct {
    const char* name;
    E_LAYER_TYPE type;
  } kTypes[] = {{"annotation", LAYER_TYPE_ANNOTATION},   {"gis-point", LAYER_TYPE_GIS_POINT},
                {"gis-line", LAYER_TYPE_GIS_LINE},       {"gis-polygon", LAYER_TYPE_GIS_POLYGON}};
  for (const auto& entry : kTypes) {
    if (text == entry.name || text == std::to_string(static_cast<int>(entry.type))) {
      *type = entry.type;
      return true;
    }
  }
  return false;
}

// The file name without directory and extension: the name of a multi-layer source's layer.
std::string BaseName(const std::string& path) {
  std::string name = path;
  while (name.size() > 1 && name.back() == '/') name.pop_back();
  const size_t slash = name.find_last_of('/');
  if (slash != std::string::npos) name = name.substr(slash + 1);
  const size_t dot = name.find_last_of('.');
  if (dot != std::string::npos && dot > 0) name.erase(dot);
  return name.empty() ? "source" : name;
}

// Opens the source with the person's --oo open options (NAME=VALUE).
GDALDatasetUniquePtr OpenSource(const std::string& path,
                                const std::vector<std::string>& userOptions) {
  CPLStringList options;
  for (const std::string& option : userOptions) options.AddString(option.c_str());
  GDALDatasetUniquePtr dataset(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY,
                                                 nullptr, options.List()));
  if (!dataset || dataset->GetDriver() == nullptr) return dataset;
  // A CSV file's geometry is a WKT column; it should not come in as an attribute as well. The
  // person's own options win over these, for a file whose columns are named otherwise.
  if (EQUAL(dataset->GetDriver()->GetDescription(), "CSV")) {
    CPLStringList csvOptions;
    csvOptions.SetNameValue("GEOM_POSSIBLE_NAMES", "WKT,geometry,geom,the_geom");
    csvOptions.SetNameValue("KEEP_GEOM_COLUMNS", "NO");
    for (int i = 0; i < options.size(); ++i) {
      char* name = nullptr;
      const char* value = CPLParseNameValue(options[i], &name);
      csvOptions.SetNameValue(name, value);
      CPLFree(name);
    }
    const char* const csvOnly[] = {"CSV", nullptr};
    dataset.reset(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, csvOnly,
                                    csvOptions.List()));
  }
  return dataset;
}

bool HasField(GDALDataset* dataset, const std::string& name) {
  for (OGRLayer* layer : dataset->GetLayers()) {
    if (layer->GetLayerDefn()->GetFieldIndex(name.c_str()) >= 0) return true;
  }
  return false;
}

// Icons unpacked from a KMZ; removed again unless the import succeeded.
class CUnpackedIcons {
 public:
  CUnpackedIcons(CKmzArchive* archive, const std::string& directory)
      : archive_(archive), directory_(QString::fromStdString(directory)) {}
  ~CUnpackedIcons() {
    if (kept_) return;
    for (const QString& file : files_) QFile::remove(file);
    if (madeDirectory_) QDir().rmdir(directory_);
  }
  CUnpackedIcons(const CUnpackedIcons&) = delete;
  CUnpackedIcons& operator=(const CUnpackedIcons&) = delete;

  void Keep() { kept_ = true; }
  int Count() const { return static_cast<int>(files_.size()); }

  // The local file for `href` when the archive holds it (an equal file already there is
  // reused); other hrefs are kept as they are.
  bool Resolve(const std::string& href, std::string* url, std::string* error) {
    *url = href;
    if (archive_ == nullptr || !archive_->Contains(href)) return true;
    QByteArray bytes;
    if (!archive_->Read(href, &bytes, error)) return false;
    if (!QDir(directory_).exists()) {
      if (!QDir().mkpath(directory_)) {
        *error = "cannot make the icon directory " + directory_.toStdString();
        return false;
      }
      madeDirectory_ = true;
    }
    const QFileInfo name(QString::fromStdString(href));
    for (int n = 1;; ++n) {
      const QString file = directory_ + "/" + name.completeBaseName() +
                           (n > 1 ? "-" + QString::number(n) : QString()) +
                           (name.suffix().isEmpty() ? QString() : "." + name.suffix());
      QFile existing(file);
      if (existing.exists()) {
        if (existing.open(QIODevice::ReadOnly) && existing.readAll() == bytes) {
          *url = file.toStdString();
          return true;
        }
        continue;
      }
      QFile out(file);
      if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.flush()) {
        *error = "cannot write the icon " + file.toStdString();
        return false;
      }
      files_.push_back(file);
      *url = file.toStdString();
      return true;
    }
  }

 private:
  CKmzArchive* archive_;
  QString directory_;
  std::vector<QString> files_;
  bool madeDirectory_ = false;
  bool kept_ = false;
};

bool IsKmz(const std::string& path) {
  QFile file(QString::fromStdString(path));
  return file.open(QIODevice::ReadOnly) && file.read(2) == "PK";
}

}  // namespace

void CImportCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database (made with 'create')");
  parser->AddPositional("SOURCE", "a vector file or data source that GDAL/OGR can read");
  parser->AddOption("under", "UUID", "the folder or layer to import under (default: the top root)");
  parser->AddOption("name-field", "F", "name each feature after its attribute F");
  parser->AddOption("layer-type", "T",
                    "kind of the new layers: annotation (default), gis-point, gis-line or "
                    "gis-polygon; GIS layers keep geometry only");
  parser->AddRepeatableOption("oo", "NAME=VALUE",
                              "a GDAL open option of the source's driver, e.g. "
                              "X_POSSIBLE_NAMES=lng for a CSV with coordinate columns");
  parser->AddFlag("tree", "read a KML or KMZ file as a tree: folders, layers, placemarks, "
                          "visibility, open state, styles and fields, in document order");
  parser->AddFlag("json", "print the summary as JSON");
  parser->AddExample("annotationlayer import notes.db cities.geojson --name-field name");
  parser->AddExample("annotationlayer import notes.db survey.kmz --tree");
  parser->AddExample("annotationlayer import notes.db sites.csv --oo X_POSSIBLE_NAMES=lng "
                     "--oo Y_POSSIBLE_NAMES=lat");
  parser->AddExample("annotationlayer import notes.db roads.gpkg --under 0f8c...");
}

int CImportCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  if (args.Has("tree")) return RunTree(context);
  const auto start = std::chrono::steady_clock::now();
  CSourceImporter::Options options;
  if (args.Has("layer-type") && !ParseLayerType(args.Value("layer-type"), &options.layerType)) {
    return context.UsageError("--layer-type wants annotation, gis-point, gis-line or gis-polygon");
  }
  if (args.Has("under") && !CDatabaseSession::IsWellFormedUuid(args.Value("under"))) {
    return context.UsageError("--under: '" + args.Value("under") + "' is not a node uuid");
  }
  options.nameField = args.Value("name-field");
  if (args.Has("name-field") && options.nameField.empty()) {
    return context.UsageError("--name-field wants a field name");
  }

  const std::vector<std::string> openOptions = args.Values("oo");
  for (const std::string& option : openOptions) {
    const size_t equals = option.find('=');
    if (equals == 0 || equals == std::string::npos) {
      return context.UsageError("--oo wants NAME=VALUE, not '" + option + "'");
    }
  }

  const std::string sourcePath = args.Positional("SOURCE");
  GDALDatasetUniquePtr source = OpenSource(sourcePath, openOptions);
  if (!source) {
    struct stat info;
    if (stat(sourcePath.c_str(), &info) != 0 && sourcePath.find(':') == std::string::npos) {
      return context.Fail(sourcePath + ": no such file");
    }
    return context.FailWithCause("cannot read " + sourcePath + " as vector data");
  }
  if (source->GetLayerCount() < 1) return context.Fail(sourcePath + " holds no vector layers");
  if (!options.nameField.empty() && !HasField(source.get(), options.nameField)) {
    return context.Fail("no layer of " + sourcePath + " has a field named '" + options.nameField +
                        "'");
  }
  options.sourceName = BaseName(sourcePath);

  CDatabaseSession session;
  std::string error;
  if (!session.Open(args.Positional("DB"), &error, CDatabaseSession::OPEN_FOR_WRITING)) {
    return context.Fail(error);
  }
  options.parentUuid = args.Value("under", session.RootUuid());
  E_NODE_KIND kind = NODE_KIND_NONE;
  if (!session.Resolve(options.parentUuid, &kind, &error)) return context.Fail("--under: " + error);
  if (kind == NODE_KIND_FEATURE) {
    return context.Fail("--under must name a folder or a layer, not a feature");
  }

  CInterruptFlag interrupt;
  CProgressBar bar(context.Err(), CProgressBar::StderrIsTerminal());
  CSourceImporter importer(session.Model(), &bar, &interrupt);
  CSourceImporter::Summary summary;
  context.Log()->ClearLastError();
  const CSourceImporter::E_OUTCOME outcome =
      importer.Run(source.get(), options, &summary, &error);
  bar.Finish();
  if (outcome == CSourceImporter::OUTCOME_INTERRUPTED) {
    return context.Fail("interrupted; nothing was imported", CCommandContext::kExitInterrupted);
  }
  if (outcome != CSourceImporter::OUTCOME_DONE) {
    std::string reason = error + "; nothing was imported";
    if (summary.features == 0 && summary.skippedEmpty > 0 &&
        EQUAL(source->GetDriver()->GetDescription(), "CSV")) {
      reason += " (name a CSV's coordinate columns with --oo X_POSSIBLE_NAMES=... "
                "--oo Y_POSSIBLE_NAMES=...)";
    }
    return context.FailWithCause(reason);
  }

  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  // The import appended its layer as the parent's last child layer.
  std::string newLayer;
  CChildLister lister(false, false);
  std::vector<CChildLister::Child> children;
  lister.List(session.Model(), options.parentUuid, kind, &children);
  for (auto child = children.rbegin(); child != children.rend() && newLayer.empty(); ++child) {
    if (child->kind == NODE_KIND_LAYER) newLayer = child->uuid;
  }
  const int64_t skipped =
      summary.skippedEmpty + summary.skippedUnsupported + summary.skippedUntransformable;
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["source"] = sourcePath;
    result["parent"] = options.parentUuid;
    result["layer"] = newLayer;
    result["features"] = static_cast<Json::Int64>(summary.features);
    result["layers"] = summary.layers;
    result["styled"] = static_cast<Json::Int64>(summary.styled);
    Json::Value skippedJson(Json::objectValue);
    skippedJson["without_geometry"] = static_cast<Json::Int64>(summary.skippedEmpty);
    skippedJson["unsupported_kind"] = static_cast<Json::Int64>(summary.skippedUnsupported);
    skippedJson["not_transformable"] = static_cast<Json::Int64>(summary.skippedUntransformable);
    result["skipped"] = skippedJson;
    result["dropped_interior_rings"] = static_cast<Json::Int64>(summary.droppedInteriorRings);
    result["seconds"] = seconds;
    result["read_seconds"] = summary.readSeconds;
    result["convert_seconds"] = summary.convertSeconds;
    result["write_seconds"] = summary.writeSeconds;
    context.PrintJson(result);
    return CCommandContext::kExitOk;
  }
  std::string line = "imported " + std::to_string(summary.features) + " features into " +
                     std::to_string(summary.layers) + (summary.layers == 1 ? " layer" : " layers") +
                     " in " + CNodeFormatter::Seconds(seconds) + " s (reading " +
                     CNodeFormatter::Seconds(summary.readSeconds) + " s, converting " +
                     CNodeFormatter::Seconds(summary.convertSeconds) + " s, writing " +
                     CNodeFormatter::Seconds(summary.writeSeconds) + " s)";
  if (skipped > 0) {
    line += "; skipped " + std::to_string(skipped) + " (" +
            std::to_string(summary.skippedEmpty) + " without geometry, " +
            std::to_string(summary.skippedUnsupported) + " of an unsupported kind, " +
            std::to_string(summary.skippedUntransformable) + " not transformable)";
  }
  if (summary.droppedInteriorRings > 0) {
    line += "; dropped " + std::to_string(summary.droppedInteriorRings) + " interior rings";
  }
  context.Print(line);
  return CCommandContext::kExitOk;
}

int CImportCommand::RunTree(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  const auto start = std::chrono::steady_clock::now();
  for (const char* option : {"name-field", "layer-type", "oo"}) {
    if (args.Has(option)) {
      return context.UsageError(std::string("--") + option + " does not go with --tree");
    }
  }
  if (args.Has("under") && !CDatabaseSession::IsWellFormedUuid(args.Value("under"))) {
    return context.UsageError("--under: '" + args.Value("under") + "' is not a node uuid");
  }
  const std::string sourcePath = args.Positional("SOURCE");
  const std::string dbPath = args.Positional("DB");
  QFile source(QString::fromStdString(sourcePath));
  if (!source.exists()) return context.Fail(sourcePath + ": no such file");

  CDatabaseSession session;
  std::string error;
  if (!session.Open(dbPath, &error, CDatabaseSession::OPEN_FOR_WRITING)) {
    return context.Fail(error);
  }
  const std::string parent = args.Value("under", session.RootUuid());
  E_NODE_KIND kind = NODE_KIND_NONE;
  if (!session.Resolve(parent, &kind, &error)) return context.Fail("--under: " + error);
  if (kind == NODE_KIND_FEATURE) {
    return context.Fail("--under must name a folder or a layer, not a feature");
  }

  std::unique_ptr<CKmzArchive> archive;
  QByteArray document;
  if (IsKmz(sourcePath)) {
    archive.reset(new CKmzArchive);
    if (!archive->Open(sourcePath, &error)) return context.Fail(error + "; nothing was imported");
    const std::string name = archive->DocumentName();
    if (name.empty()) {
      return context.Fail(sourcePath + " holds no KML document; nothing was imported");
    }
    if (!archive->Read(name, &document, &error)) {
      return context.Fail(sourcePath + ": " + error + "; nothing was imported");
    }
  } else {
    if (!source.open(QIODevice::ReadOnly)) return context.Fail("cannot read " + sourcePath);
    if (source.size() > CKmzArchive::kMaxUnpackedBytes) {
      return context.Fail(sourcePath + " is larger than " +
                          std::to_string(CKmzArchive::kMaxUnpackedBytes >> 20) +
                          " MiB; nothing was imported");
    }
    document = source.readAll();
  }

  CUnpackedIcons icons(archive.get(), dbPath + "-icons");
  const QDir sourceDir = QFileInfo(source).absoluteDir();
  CKmlTreeReader reader([&](const std::string& href, std::string* url, std::string* why) {
    if (archive) return icons.Resolve(href, url, why);
    // A relative href of a plain KML file names a file beside it.
    *url = href;
    const QString path = QString::fromStdString(href);
    if (href.find("://") == std::string::npos && QFileInfo(path).isRelative() &&
        QFileInfo(sourceDir, path).isFile()) {
      *url = QFileInfo(sourceDir, path).absoluteFilePath().toStdString();
    }
    return true;
  });
  CKmlTreeReader::Container tree;
  if (!reader.Read(document, &tree, &error)) {
    return context.Fail(sourcePath + ": " + error + "; nothing was imported");
  }

  CInterruptFlag interrupt;
  CKmlTreeImporter importer(session.Model(), &interrupt);
  CKmlTreeImporter::Summary summary;
  context.Log()->ClearLastError();
  const CKmlTreeImporter::E_OUTCOME outcome =
      importer.Run(&tree, parent, kind, BaseName(sourcePath), &summary, &error);
  if (outcome == CKmlTreeImporter::OUTCOME_INTERRUPTED) {
    return context.Fail("interrupted; nothing was imported", CCommandContext::kExitInterrupted);
  }
  if (outcome != CKmlTreeImporter::OUTCOME_DONE) {
    return context.FailWithCause(sourcePath + ": " + error + "; nothing was imported");
  }
  icons.Keep();

  const CKmlTreeReader::Summary& read = reader.GetSummary();
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["source"] = sourcePath;
    result["parent"] = parent;
    result["folders"] = summary.folders;
    result["layers"] = summary.layers;
    result["features"] = static_cast<Json::Int64>(summary.features);
    result["icons"] = icons.Count();
    result["without_geometry"] = static_cast<Json::Int64>(read.withoutGeometry);
    result["skipped_other"] = static_cast<Json::Int64>(read.skipped);
    result["dropped_interior_rings"] = static_cast<Json::Int64>(read.droppedInteriorRings);
    result["seconds"] = seconds;
    context.PrintJson(result);
    return CCommandContext::kExitOk;
  }
  std::string line = "imported " + std::to_string(summary.features) + " features into " +
                     std::to_string(summary.layers) + " layers and " +
                     std::to_string(summary.folders) + " folders in " +
                     CNodeFormatter::Seconds(seconds) + " s";
  if (icons.Count() > 0) line += "; " + std::to_string(icons.Count()) + " icons unpacked";
  if (read.withoutGeometry + read.skipped > 0) {
    line += "; skipped " + std::to_string(read.withoutGeometry) +
            " placemarks without geometry and " + std::to_string(read.skipped) +
            " overlays or links";
  }
  if (read.droppedInteriorRings > 0) {
    line += "; dropped " + std::to_string(read.droppedInteriorRings) + " interior rings";
  }
  context.Print(line);
  return CCommandContext::kExitOk;
}
