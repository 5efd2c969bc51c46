// `annotationlayer render`: a spatial engine on a real database, the view's scene drawn into a
// PNG, checked pixel by pixel where the features are and where they are not.
#include <gtest/gtest.h>

#include <QColor>
#include <QImage>

#include "CliFixtures.h"

namespace {

// The view of every test: 400 x 400 pixels over -40..40 degrees, 5 pixels a degree, so that
// (x, y) in degrees is at ((x + 40) * 5, (40 - y) * 5) in the picture.
const char kExtent[] = "-40,-40,40,40";
const char kSize[] = "400x400";

bool IsRed(QRgb pixel) { return qRed(pixel) > 200 && qGreen(pixel) < 60 && qBlue(pixel) < 60; }
bool IsGreen(QRgb pixel) { return qGreen(pixel) > 200 && qRed(pixel) < 60 && qBlue(pixel) < 60; }
bool IsWhite(QRgb pixel) { return pixel == qRgb(255, 255, 255); }

// The number of pixels of `rect` that are not white.
int InkIn(const QImage& image, const QRect& rect) {
  int ink = 0;
  for (int y = rect.top(); y <= rect.bottom(); ++y) {
    for (int x = rect.left(); x <= rect.right(); ++x) ink += IsWhite(image.pixel(x, y)) ? 0 : 1;
  }
  return ink;
}

class CliRenderTest : public CCliDatabaseTest {
 protected:
  void SetUp() override {
    CCliDatabaseTest::SetUp();
    // A green 9 x 9 icon for the symbol style.
    icon_ = dir_.File("icon.png");
    QImage icon(9, 9, QImage::Format_ARGB32);
    icon.fill(QColor(0, 255, 0));
    ASSERT_TRUE(icon.save(QString::fromStdString(icon_), "PNG"));

    SourceLayer layer;
    layer.name = "shapes";
    layer.fields = {{"name", OFTString}, {"OGR_STYLE", OFTString}};
    layer.rows = {
        // A red square with a blue outline, without a name.
        {"POLYGON ((10 10,20 10,20 20,10 20,10 10))",
         {"", "BRUSH(fc:#FF0000);PEN(c:#0000FF,w:2px)"}},
        // A point drawn with the icon.
        {"POINT (-30 -30)", {"", "SYMBOL(id:\"" + icon_ + "\")"}},
        // A named point: a dot and its name beside it.
        {"POINT (20 -30)", {"Harbour", "PEN(c:#000000);LABEL(c:#000000,s:14px)"}},
        // A name at the east edge (pixel 395, 200) that would run off the picture.
        {"POINT (39 0)", {"EastEdgeName", ""}},
        // Outside the view.
        {"POINT (60 60)", {"far", ""}},
    };
    const std::string source = dir_.File("shapes.geojson");
    ASSERT_TRUE(WriteSource(source, "GeoJSON", {layer}));
    const CProcessResult imported = RunTool({"import", db_, source});
    ASSERT_EQ(imported.exitCode, 0) << imported.err;
  }

  // Renders the database; the picture, or a null image when the tool failed.
  QImage Render(const std::vector<std::string>& extra, Json::Value* json,
               const std::string& extent = kExtent) {
    png_ = dir_.File("view.png");
    std::vector<std::string> args{"render", db_, "--extent", extent, "--size", kSize,
                                  "-o",     png_, "--json"};
    args.insert(args.end(), extra.begin(), extra.end());
    const CProcessResult result = RunTool(args);
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    if (json != nullptr) *json = ParseJson(result.out);
    return QImage(QString::fromStdString(png_));
  }

  std::string icon_, png_;
};

TEST_F(CliRenderTest, DrawsTheFeaturesInsideTheViewInTheirStyles) {
  Json::Value json;
  const QImage image = Render({"--timeout", "60"}, &json);
  ASSERT_FALSE(image.isNull());
  EXPECT_EQ(image.size(), QSize(400, 400));
  EXPECT_EQ(json["features"].asInt(), 4) << "the point outside the view is not taken";
  EXPECT_EQ(json["drawn"].asInt(), 4);
  EXPECT_EQ(json["icons"].asInt(), 2) << "the unstyled point takes the layer's first symbol";
  EXPECT_EQ(json["labels"].asInt(), 2);
  EXPECT_EQ(json["entitiesBuilt"].asInt(), 4);

  // The square is filled red inside and outlined in blue at its edge (x = 10 -> pixel 250).
  EXPECT_TRUE(IsRed(image.pixel(275, 125))) << std::hex << image.pixel(275, 125);
  const QRgb edge = image.pixel(250, 125);
  EXPECT_GT(qBlue(edge), 150);
  EXPECT_LT(qRed(edge), 150);
  // The icon is centred on its point (-30, -30 -> pixel 50, 350).
  EXPECT_TRUE(IsGreen(image.pixel(50, 350))) << std::hex << image.pixel(50, 350);
  // The named point: a dot at (20, -30 -> pixel 300, 350) and ink to its upper right.
  EXPECT_FALSE(IsWhite(image.pixel(300, 350)));
  EXPECT_GT(InkIn(image, QRect(305, 330, 60, 16)), 20);
  // The name at the edge is drawn whole to the left of its point instead.
  EXPECT_GT(InkIn(image, QRect(200, 175, 190, 25)), 20);
  // Empty map stays background.
  EXPECT_EQ(InkIn(image, QRect(0, 0, 150, 150)), 0);

  // A view of nothing stays background; the engine's limit cuts a view short (it takes one
  // feature over its limit before it ends the pass).
  QImage empty = Render({"--background", "#fffffe"}, &json, "100,-80,150,-60");
  ASSERT_FALSE(empty.isNull());
  EXPECT_EQ(json["features"].asInt(), 0);
  QImage background(empty.size(), empty.format());
  background.fill(qRgb(255, 255, 254));
  EXPECT_TRUE(empty == background);
  const QImage limited = Render({"--max-features", "1", "--level", "21"}, &json);
  ASSERT_FALSE(limited.isNull());
  EXPECT_EQ(json["features"].asInt(), 2);
  EXPECT_EQ(json["drawn"].asInt(), 2);
  EXPECT_EQ(json["level"].asInt(), 21);
}

TEST_F(CliRenderTest, MistakesAndFailuresWriteNoPicture) {
  const std::string png = dir_.File("never.png");
  const struct {
    std::vector<std::string> args;
    int code;
    const char* fragment;
  } cases[] = {
      {{"render", db_, "-o", png}, 2, "--extent is required"},
      {{"render", db_, "--extent", kExtent}, 2, "--output"},
      {{"render", db_, "--extent", "10,0,0,10", "-o", png}, 2, "MINX < MAXX"},
      {{"render", db_, "--extent", kExtent, "--size", "0x10", "-o", png}, 2, "--size"},
      {{"render", db_, "--extent", kExtent, "--level", "22", "-o", png}, 2, "--level"},
      {{"render", db_, "--extent", kExtent, "--max-features", "0", "-o", png}, 2, "--max-features"},
      {{"render", db_, "--extent", kExtent, "--timeout", "0", "-o", png}, 2, "--timeout"},
      {{"render", db_, "--extent", kExtent, "--background", "nocolour", "-o", png}, 2,
       "--background"},
      {{"render", db_, "--extent", kExtent, "-o", dir_.File("x.gif")}, 2, ".png, .jpg or .jpeg"},
      {{"render", db_, "--extent", kExtent, "-o", dir_.File("no/such/dir/x.png")}, 1,
       "cannot write"},
  };
  for (const auto& c : cases) ExpectOneLineFailure(RunTool(c.args), c.code, c.fragment);
  EXPECT_FALSE(FileExists(png));
  EXPECT_FALSE(FileExists(dir_.File("x.gif")));
}

}  // namespace
