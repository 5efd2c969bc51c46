// CKmlTreeReader parses a KML document into a tree that keeps what a globe viewer shows: each
// <Document> and <Folder> a container (name, <visibility>, <open>, and whether it was written
// for a layer), each <Placemark> a feature of the host's type with its name, geometry, style and
// fields, all in document order.
//
// Geometries: Point, LineString, LinearRing and Polygon (its outer ring; inner rings are counted
// as dropped) and MultiGeometry of one of these kinds; coordinates without altitude get Z = 0.
// Any other geometry (Model, gx:Track, a MultiGeometry that mixes kinds) fails the read. A
// placemark without geometry is counted and left out.
// Styles: an inline <Style> or a styleUrl to a <Style> or <StyleMap> (its normal state) of the
// document, wherever in the document it is declared; a styleUrl that names nothing fails the read.
// LineStyle -> pen (width in pixels), PolyStyle -> brush (fill 0: no fill; outline 0: no pen),
// IconStyle -> icon (its href through the caller's resolver), LabelStyle -> label (scale times
// 12 pt). Colours lose their alpha, as the module keeps none.
// Fields: <SimpleData> take the type of their <SimpleField> (bool, int, float, double, string;
// an "int" field with a value beyond 32 bits becomes a 64-bit field), <Data> values are text;
// <description> becomes the first field, "description".
// A container's check state is 0 when it is hidden, 1 when something below it is hidden or
// partly shown, and 2 otherwise.
//
// Threading contract: one thread uses a reader.
#ifndef ANNOTATIONLAYER_CLI_KML_TREE_READER_H
#define ANNOTATIONLAYER_CLI_KML_TREE_READER_H

#include <QByteArray>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "AnnotationFeature.h"
#include "FeatureStyleSet.h"

class QXmlStreamReader;

class CKmlTreeReader {
 public:
  struct Item;
  struct Container {
    std::string name;  // UTF-8
    bool visible = true;
    bool open = false;
    bool layerMark = false;  // written for a layer
    int checkState = 2;
    std::vector<Item> items;
    bool HasPlacemarks() const;
  };
  struct RawField {
    std::string key;  // UTF-8
    QString text;
    std::string schema;  // the schema id of a SimpleData; empty for Data
  };
  struct Item {
    std::unique_ptr<Container> container;         // a folder, or
    std::unique_ptr<CAnnotationFeature> feature;  // a placemark
    bool visible = true;
    std::string styleUrl;
    std::string inlineStyle;  // the id given to an inline <Style>
    std::vector<RawField> fields;
  };
  struct Summary {
    int64_t placemarks = 0;
    int64_t withoutGeometry = 0;
    int64_t droppedInteriorRings = 0;
    int64_t skipped = 0;  // overlays, network links and other features that are not placemarks
  };
  // Turns an icon href into the url an icon style keeps (UTF-8); false fails the read.
  using IconResolver =
      std::function<bool(const std::string& href, std::string* url, std::string* error)>;

  explicit CKmlTreeReader(IconResolver resolver);
  CKmlTreeReader(const CKmlTreeReader&) = delete;
  CKmlTreeReader& operator=(const CKmlTreeReader&) = delete;

  // Parses `kml` into `document` (the <Document>, or the <kml> element when it has none). False
  // with a reason naming the line where the document went wrong.
  bool Read(const QByteArray& kml, Container* document, std::string* error);
  const Summary& GetSummary() const { return summary_; }

 private:
  // Style elements as read; turned into style sets once the whole document is known.
  struct KmlStyle {
    bool line = false, poly = false, icon = false, label = false;
    QString lineColor, polyColor, labelColor;
    double width = 1.0, iconScale = 1.0, heading = 0.0, labelScale = 1.0;
    bool fill = true, outline = true;
    std::string href;
  };

  bool ParseContainer(QXmlStreamReader& xml, Container* container);
  bool ParsePlacemark(QXmlStreamReader& xml, Item* item);
  void ParseStyle(QXmlStreamReader& xml, const std::string& id);
  void ParseStyleMap(QXmlStreamReader& xml, const std::string& id);
  void ParseSchema(QXmlStreamReader& xml);
  void ParseExtendedData(QXmlStreamReader& xml, std::vector<RawField>* fields);
  bool ParseGeometry(QXmlStreamReader& xml, std::vector<int>* kinds,
                     std::vector<CGeometryData>* parts);
  bool ParseCoordinates(QXmlStreamReader& xml, CGeometryData* part);
  bool Fail(QXmlStreamReader& xml, const std::string& reason);

  void FindWideFields(const Container& container);
  bool Finish(Container* container);
  bool StyleFor(const Item& item, CFeatureStyleSet* styles);
  bool FillFields(Item* item);

  IconResolver resolver_;
  Summary summary_;
  std::string error_;
  int inlineStyles_ = 0;
  int depth_ = 0;
  std::map<std::string, KmlStyle> styles_;
  std::map<std::string, std::string> styleMaps_;  // id -> the normal state's style url
  std::map<std::string, std::map<std::string, std::string>> schemas_;  // id -> field -> type
  std::map<std::string, bool> wideFields_;  // "schema/field" of int fields needing 64 bits
  std::map<std::string, std::string> resolvedIcons_;
};

#endif  // ANNOTATIONLAYER_CLI_KML_TREE_READER_H
