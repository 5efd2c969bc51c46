#include "RenderCommand.h"

#include <QColor>
#include <QFile>
#include <QFileInfo>
#include <QImage>

#include <chrono>
#include <cstdio>
#include <vector>

#include "ArgumentParser.h"
#include "CommandContext.h"
#include "DatabaseSession.h"
#include "ExtentCondition.h"
#include "FeatureOption.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationLayerModule.h"
#include "IAnnotationSpatialEngine.h"
#include "InterruptFlag.h"
#include "OffscreenGui.h"
#include "ProgressBar.h"
#include "ViewRenderer.h"

namespace {

// The host renderer's view the tool draws into; any id not used by another view in the process.
constexpr int kViewId = 7301;
constexpr int kMaxSide = 16384;

bool ParseSize(const std::string& text, int* width, int* height) {
  const size_t x = text.find('x');
  if (x == std::string::npos) return false;
  int64_t w = 0, h = 0;
  if (!CArgumentParser::ParseInteger(text.substr(0, x), 1, kMaxSide, &w) ||
      !CArgumentParser::ParseInteger(text.substr(x + 1), 1, kMaxSide, &h)) {
    return false;
  }
  *width = static_cast<int>(w);
  *height = static_cast<int>(h);
  return true;
}

// The features whose index box meets the view, visible or not: what a cut view leaves out is
// told from this, which the spatial index answers without reading a geometry.
class CFeatureCounter : public IAnnotationDBObjectVisitor {
 public:
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string&, const CFeatureOption&) override {
    ++count;
    return HANDLE_TYPE_CONTINUE;
  }
  bool IsOnlyUUID() override { return true; }
  int64_t count = 0;
};

int64_t CountMeeting(IAnnotationDBDataModel* model, const EXTENT& extent) {
  CFeatureCounter counter;
  if (!model->TravelViaSQL(&counter, NODE_KIND_FEATURE, CExtentCondition::IndexBoxMeets(extent))) {
    return -1;
  }
  return counter.count;
}

// The image format for the output's suffix: PNG or JPEG, which Qt writes itself; null otherwise.
const char* FormatOf(const std::string& path) {
  const QString suffix = QFileInfo(QString::fromStdString(path)).suffix().toLower();
  if (suffix == "png") return "PNG";
  if (suffix == "jpg" || suffix == "jpeg") return "JPEG";
  return nullptr;
}

std::string FormatSeconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", seconds);
  return text;
}

}  // namespace

void CRenderCommand::Declare(CArgumentParser* parser) const {
  parser->AddPositional("DB", "the annotation database");
  parser->AddOption("extent", "MINX,MINY,MAXX,MAXY",
                    "the view in degrees (longitude, latitude); required");
  parser->AddOption("output", "FILE", "the picture to write, .png or .jpg; required", 'o');
  parser->AddOption("size", "WxH", "the picture's size in pixels (default 1024x512)");
  parser->AddOption("level", "N",
                    "the display level to draw, 0-21 (default: the level matching the extent "
                    "and width, 0 showing the world on 256 pixels)");
  parser->AddOption("background", "COLOR", "the background, a Qt colour name (default #ffffff)");
  parser->AddOption("max-features", "N",
                    "the most features the engine takes for the view (default 7000)");
  parser->AddOption("timeout", "SECONDS",
                    "how long to wait for the view's entities (default 120)");
  parser->AddFlag("json", "print what was drawn as a JSON object");
  parser->AddExample("annotationlayer render notes.db --extent -181,-91,181,91 --size 1024x512 "
                     "-o world.png");
}

int CRenderCommand::Run(CCommandContext& context) {
  const CArgumentParser& args = context.Args();
  if (!args.Has("extent")) return context.UsageError("--extent is required");
  if (!args.Has("output")) return context.UsageError("--output (-o) is required");
  std::vector<double> box;
  if (!CArgumentParser::ParseNumberList(args.Value("extent"), 4, &box)) {
    return context.UsageError("--extent wants four numbers: MINX,MINY,MAXX,MAXY");
  }
  if (box[0] >= box[2] || box[1] >= box[3]) {
    return context.UsageError("--extent wants MINX < MAXX and MINY < MAXY");
  }
  int width = 1024, height = 512;
  if (args.Has("size") && !ParseSize(args.Value("size"), &width, &height)) {
    return context.UsageError("--size wants WIDTHxHEIGHT in pixels, each 1 to 16384");
  }
  EXTENT extent;
  extent.min_x = box[0];
  extent.min_y = box[1];
  extent.max_x = box[2];
  extent.max_y = box[3];
  int64_t level = CViewRenderer::LevelForExtent(extent, width);
  if (args.Has("level") && !CArgumentParser::ParseInteger(args.Value("level"), 0, 21, &level)) {
    return context.UsageError("--level wants a whole number from 0 to 21");
  }
  const QColor background(QString::fromStdString(args.Value("background", "#ffffff")));
  if (!background.isValid()) {
    return context.UsageError("--background wants a colour name such as white or #f0f0e8");
  }
  int64_t maxFeatures = 7000;
  if (args.Has("max-features") &&
      !CArgumentParser::ParseInteger(args.Value("max-features"), 1, 1000000, &maxFeatures)) {
    return context.UsageError("--max-features wants a whole number from 1 to 1000000");
  }
  int64_t timeout = 120;
  if (args.Has("timeout") &&
      !CArgumentParser::ParseInteger(args.Value("timeout"), 1, 86400, &timeout)) {
    return context.UsageError("--timeout wants a whole number of seconds, 1 or more");
  }
  const std::string output = args.Value("output");
  const char* format = FormatOf(output);
  if (format == nullptr) return context.UsageError("--output wants a .png, .jpg or .jpeg file");

  // The image exists before the database is touched: a size the machine cannot hold fails first.
  QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
  if (image.isNull()) return context.Fail("cannot make a picture of " + args.Value("size"));
  image.fill(background);

  COffscreenGui gui;
  CDatabaseSession session;
  std::string error;
  if (!session.Open(args.Positional("DB"), &error)) return context.Fail(error);
  // Rendering only reads: an interrupt just has to end the command before the picture is saved.
  CInterruptFlag interrupt;
  const auto interrupted = [&context]() {
    return context.Fail("interrupted; nothing was written", CCommandContext::kExitInterrupted);
  };
  CViewRenderer view(GetOrCreateAnnotationLayerModule(), session.Model(), kViewId);
  view.SetInterrupt(&interrupt);
  const int timeoutMs = static_cast<int>(timeout * 1000);
  if (!view.Start("render", timeoutMs, &error)) return context.FailWithCause(error);
  view.Engine()->SetMaxPerPass(static_cast<int>(maxFeatures));

  CProgressBar bar(context.Err(), CProgressBar::StderrIsTerminal());
  CViewRenderer::ViewReport report;
  if (!view.ShowExtent(extent, timeoutMs, &bar, &report, &error)) {
    return interrupt.IsSet() ? interrupted() : context.FailWithCause(error);
  }
  CScenePainter::Result drawn;
  if (!view.Paint(extent, static_cast<int>(level), &image, &drawn)) {
    return context.Fail("cannot draw the view");
  }
  if (interrupt.IsSet()) return interrupted();
  if (!image.save(QString::fromStdString(output), format)) {
    QFile::remove(QString::fromStdString(output));
    return context.Fail("cannot write " + output);
  }

  // The engine's walk stops one feature past its per-pass limit: then the view was cut.
  const bool cut = report.expected > maxFeatures;
  const int64_t inView = cut ? CountMeeting(session.Model(), extent) : report.expected;
  if (context.Json()) {
    Json::Value result(Json::objectValue);
    result["output"] = output;
    result["in_view"] = static_cast<Json::Int64>(inView);
    result["cut"] = cut;
    result["width"] = width;
    result["height"] = height;
    result["level"] = static_cast<int>(level);
    Json::Value box(Json::arrayValue);
    for (double value : {extent.min_x, extent.min_y, extent.max_x, extent.max_y}) {
      box.append(value);
    }
    result["extent"] = box;
    result["features"] = report.expected;
    result["drawn"] = drawn.shapes;
    result["labels"] = drawn.labels;
    result["icons"] = drawn.icons;
    result["entitiesBuilt"] = report.entitiesBuilt;
    result["seconds"] = report.seconds;
    context.PrintJson(result);
  } else {
    context.Print("drew " + std::to_string(drawn.shapes) + " features (" +
                  std::to_string(drawn.labels) + " names, " + std::to_string(drawn.icons) +
                  " icons) of " + std::to_string(report.expected) + " in the view at level " +
                  std::to_string(level) + " into " + output + " (" + std::to_string(width) + "x" +
                  std::to_string(height) + ") in " + FormatSeconds(report.seconds) + " s");
    if (cut) {
      context.Print("the view meets " + std::to_string(inView) + " features; --max-features " +
                    std::to_string(maxFeatures) + " let the engine take " +
                    std::to_string(report.expected) + " of them");
    }
  }
  return CCommandContext::kExitOk;
}
