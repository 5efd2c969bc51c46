// Helpers for the tests of the command-line tool: running the built tool, reading its JSON,
// writing vector sources with OGR, and reading back what an annotation database holds through the
// data model, in a form that compares easily.
#ifndef ANNOTATIONLAYER_TEST_CLI_FIXTURES_H
#define ANNOTATIONLAYER_TEST_CLI_FIXTURES_H

#include <gtest/gtest.h>
#include <json/value.h>
#include <ogr_core.h>

#include <QVariant>

#include <map>
#include <string>
#include <vector>

#include "GeometryDataType.h"
#include "ProcessRunner.h"
#include "TempDir.h"
#include "Vector3D.h"

// A fresh annotation database made by the tool in a temporary directory of the test's own: `db_`
// is its path, `root_` the uuid of its top folder.
class CCliDatabaseTest : public ::testing::Test {
 protected:
  void SetUp() override;
  // Imports `count` points (PointLayer) from `name`.geojson, written once, as the layer `name` with
  // the `extra` arguments; the uuid of the (first) layer of that name.
  std::string ImportPoints(const std::string& name, int count,
                           const std::vector<std::string>& extra = {});
  // The number of rows of `table`, or "" when the database cannot be read.
  std::string Count(const std::string& table);

  CTempDir dir_;
  std::string db_;
  std::string root_;
};

// Runs the built `annotationlayer` with `args`.
CProcessResult RunTool(const std::vector<std::string>& args);
// A refusal: exit `code`, exactly one line on standard error holding `fragment`, nothing on
// standard output.
void ExpectOneLineFailure(const CProcessResult& result, int code, const std::string& fragment);
// Parses a JSON document; a null value when it does not parse.
Json::Value ParseJson(const std::string& text);
// The number of lines of `text`.
int LineCount(const std::string& text);
// Runs `sql` on the database at `path` through a connection of its own; false when it fails.
bool ExecSql(const std::string& path, const std::string& sql);

struct SourceField {
  std::string name;
  OGRFieldType type = OFTString;
  OGRFieldSubType subType = OFSTNone;
};

// One feature of a source: its geometry as WKT ("" for none) and its values as text (OGR converts
// them to the field's type; "" leaves the field null).
struct SourceRow {
  std::string wkt;
  std::vector<std::string> values;
};

struct SourceLayer {
  std::string name;
  OGRwkbGeometryType type = wkbUnknown;
  int epsg = 4326;  // 0: no reference system
  std::vector<SourceField> fields;
  std::vector<SourceRow> rows;
};

// Writes `layers` to a new dataset at `path` with the GDAL driver `driver`.
bool WriteSource(const std::string& path, const std::string& driver,
                 const std::vector<SourceLayer>& layers);

// `count` points with five attributes (name, pop, area, big, flag), 2D, in a grid from (100, 30).
SourceLayer PointLayer(const std::string& name, int count);

// A feature as the database holds it.
struct StoredFeature {
  std::string name;
  E_GEOMETRY_DATA_TYPE kind = GEOMETRY_DATA_TYPE_UNKNOWN;
  std::vector<std::vector<CVector3D>> parts;
  std::map<std::string, QVariant> fields;
  bool operator==(const StoredFeature& other) const;
};

// The features of one layer of the database at `path`, in row order.
std::vector<StoredFeature> ReadLayer(const std::string& path, const std::string& layerUuid);
// The uuid of the (first) layer named `name`, or "".
std::string LayerUuid(const std::string& path, const std::string& name);
// The uuids of the children of a folder or layer in sibling order (through the data model).
std::vector<std::string> ChildUuids(const std::string& path, const std::string& parentUuid);
// An ostream-friendly text of a feature for failure messages.
std::string Describe(const StoredFeature& feature);

#endif  // ANNOTATIONLAYER_TEST_CLI_FIXTURES_H
