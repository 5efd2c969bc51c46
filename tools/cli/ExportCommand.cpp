#include "ExportCommand.h"

#include <gdal_priv.h>
#include <sys/stat.h>

#include <QBuffer>
#include <QFile>

#include <chrono>

#include "ArgumentParser.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "InterruptFlag.h"
#include "KmlTreeWriter.h"
#include "KmzArchive.h"
#include "LogCollector.h"
#include "NodeFormatter.h"
#include "OutputStaging.h"
#include "ProgressBar.h"
#include "SubtreeExporter.h"
#include "VectorFormat.h"

namespace {

// Opens DB and finds UUID, the folder or layer to export: kExitOk, or the failure's exit code.
int OpenSubtree(CCommandContext& context, CDatabaseSession* session, const std::string& uuid,
                E_NODE_KIND* kind) {
  std::string error;
  if (!session->Open(context.Args().Positional("DB"), &error)) return context.Fail(error);
  if (!session->Resolve(uuid, kind, &error)) return context.Fail(error);
  if (*kind == NODE_KIND_FEATURE) {
    return context.Fail("export takes a folder or a layer; " + uuid + " is a feature");
  }
  return CCommandContext::kExitOk;
}

}  // namespace

void CExportCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddPositional("UUID", "the folder or layer to export, with everything below it");
  parser->AddPositional("OUT", "the file (or directory, for some formats) to write; neither it nor "
                               "any side file the format adds may exist");
  parser->AddOption("format", "F",
                    "GDAL vector driver, e.g. GPKG, GeoJSON, \"ESRI Shapefile\", CSV, FlatGeobuf, "
                    "KML (default: from OUT's extension)");
  parser->AddFlag("tree", "write the subtree as nested KML folders (OUT.kml or OUT.kmz, which "
                          "also packs the icons), keeping order, visibility, open state, "
                          "styles and fields");
  parser->AddFlag("json", "print the summary as JSON");
  parser->AddExample("annotationlayer export notes.db 0f8c... cities.gpkg");
  parser->AddExample("annotationlayer export notes.db 0f8c... survey.kmz --tree");
  parser->AddExample("annotationlayer export notes.db 0f8c... out --format \"ESRI Shapefile\"");
}

int CExportCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  const auto start = std::chrono::steady_clock::now();
  const std::string out = args.Positional("OUT");
  if (out.empty()) return context.UsageError("OUT must not be empty");
  struct stat info;
  if (args.Has("tree") && args.Has("format")) {
    return context.UsageError("--format does not go with --tree (OUT ends in .kml or .kmz)");
  }
  if (stat(out.c_str(), &info) == 0) {
    return context.Fail(out + " exists already; refusing to overwrite it");
  }
  if (args.Has("tree")) return RunTree(context, out);
  std::string error;
  GDALDriver* driver = CVectorFormat::ForOutput(out, args.Value("format"), &error);
  if (driver == nullptr) return context.UsageError(error);

  CDatabaseSession session;
  const std::string uuid = args.Positional("UUID");
  E_NODE_KIND kind = NODE_KIND_NONE;
  const int opened = OpenSubtree(context, &session, uuid, &kind);
  if (opened != CCommandContext::kExitOk) return opened;

  COutputStaging staging(out);
  if (!staging.IsReady()) return context.Fail(staging.Error());
  context.Log()->ClearLastError();
  GDALDatasetUniquePtr dataset(
      driver->Create(staging.Path().c_str(), 0, 0, 0, GDT_Unknown, nullptr));
  if (!dataset) {
    return context.FailWithCause("cannot create " + out + " as " + CVectorFormat::Name(driver));
  }
  CInterruptFlag interrupt;
  CProgressBar bar(context.Err(), CProgressBar::StderrIsTerminal());
  CSubtreeExporter exporter(session.Model(), &bar, &interrupt);
  CSubtreeExporter::Summary summary;
  const CSubtreeExporter::E_OUTCOME outcome = exporter.Run(
      uuid, kind, dataset.get(), CVectorFormat::LayerOptions(driver), &summary, &error);
  bar.Finish();
  // Closing writes what formats keep in memory until then.
  dataset.reset();
  if (outcome == CSubtreeExporter::OUTCOME_INTERRUPTED) {
    return context.Fail("interrupted; what was written was removed",
                        CCommandContext::kExitInterrupted);
  }
  if (outcome != CSubtreeExporter::OUTCOME_DONE) {
    return context.FailWithCause(error + "; what was written was removed");
  }
  if (!staging.Publish(&error)) return context.Fail(error);

  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["out"] = out;
    result["format"] = CVectorFormat::Name(driver);
    result["layers"] = summary.layers;
    result["features"] = static_cast<Json::Int64>(summary.features);
    result["without_geometry"] = static_cast<Json::Int64>(summary.withoutGeometry);
    result["seconds"] = seconds;
    context.PrintJson(result);
  } else {
    context.Print("exported " + std::to_string(summary.features) + " features in " +
                  std::to_string(summary.layers) + (summary.layers == 1 ? " layer" : " layers") +
                  " to " + out + " (" + CVectorFormat::Name(driver) + ") in " +
                  CNodeFormatter::Seconds(seconds) + " s");
  }
  return CCommandContext::kExitOk;
}

int CExportCommand::RunTree(CCommandContext& context, const std::string& out) {
  const CArgumentParser& args = context.Args();
  const auto start = std::chrono::steady_clock::now();
  const QString suffix = QString::fromStdString(out).section('.', -1).toLower();
  if (suffix != "kml" && suffix != "kmz") {
    return context.UsageError("--tree writes OUT.kml or OUT.kmz, not " + out);
  }
  const bool kmz = suffix == "kmz";
  std::string error;
  CDatabaseSession session;
  const std::string uuid = args.Positional("UUID");
  E_NODE_KIND kind = NODE_KIND_NONE;
  const int opened = OpenSubtree(context, &session, uuid, &kind);
  if (opened != CCommandContext::kExitOk) return opened;

  COutputStaging staging(out);
  if (!staging.IsReady()) return context.Fail(staging.Error());
  QBuffer document;
  document.open(QIODevice::WriteOnly);
  CInterruptFlag interrupt;
  CKmlTreeWriter writer(session.Model(), &interrupt);
  CKmlTreeWriter::Summary summary;
  const CKmlTreeWriter::E_OUTCOME outcome =
      writer.Write(uuid, kind, kmz, &document, &summary, &error);
  if (outcome == CKmlTreeWriter::OUTCOME_INTERRUPTED) {
    return context.Fail("interrupted; nothing was written", CCommandContext::kExitInterrupted);
  }
  if (outcome != CKmlTreeWriter::OUTCOME_DONE) return context.Fail(error + "; nothing was written");
  if (kmz) {
    if (!CKmzArchive::Write(staging.Path(), document.data(), writer.PackedFiles(), &error)) {
      return context.Fail(error);
    }
  } else {
    QFile file(QString::fromStdString(staging.Path()));
    if (!file.open(QIODevice::WriteOnly) || file.write(document.data()) != document.size() ||
        !file.flush()) {
      return context.Fail("cannot write " + out);
    }
  }
  if (!staging.Publish(&error)) return context.Fail(error);

  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  const int icons = static_cast<int>(writer.PackedFiles().size());
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["out"] = out;
    result["format"] = kmz ? "KMZ" : "KML";
    result["folders"] = summary.folders;
    result["layers"] = summary.layers;
    result["features"] = static_cast<Json::Int64>(summary.features);
    result["styles"] = summary.styles;
    result["icons"] = icons;
    result["seconds"] = seconds;
    context.PrintJson(result);
  } else {
    context.Print("exported " + std::to_string(summary.features) + " features in " +
                  std::to_string(summary.layers) + " layers and " +
                  std::to_string(summary.folders) + " folders to " + out + " (" +
                  (kmz ? "KMZ, " + std::to_string(icons) + " icons packed" : std::string("KML")) +
                  ") in " + CNodeFormatter::Seconds(seconds) + " s");
  }
  return CCommandContext::kExitOk;
}
