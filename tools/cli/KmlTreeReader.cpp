#include "KmlTreeReader.h"

#include <QColor>
#include <QXmlStreamReader>
#include <climits>

#include "FeatureBrushStyle.h"
#include "FeatureIconStyle.h"
#include "FeatureLabelStyle.h"
#include "FeaturePenStyle.h"
#include "KmlTreeWriter.h"
#include "LocalText.h"

namespace {

const char kDescriptionKey[] = "description";
// StyleMaps may point at StyleMaps; a loop of them must end somewhere.
const int kMaxStyleDepth = 8;
// Folders and MultiGeometries are read recursively; a document nested deeper is refused rather
// than allowed to exhaust the stack.
const int kMaxNesting = 200;

std::string Utf8(const QStringRef& text) {
  return text.toString().toStdString();
}
std::string Utf8(const QString& text) {
  return text.toStdString();
}

bool IsTrue(const QString& text) {
  const QString value = text.trimmed();
  return value == "1" || value.compare("true", Qt::CaseInsensitive) == 0;
}

double NumberOr(const QString& text, double fallback) {
  bool ok = false;
  const double value = text.trimmed().toDouble(&ok);
  return ok ? value : fallback;
}

// aabbggrr; the alpha is dropped.
QColor ColorOf(const QString& text) {
  const QString hex = text.trimmed();
  bool ok = false;
  const uint value = hex.toUInt(&ok, 16);
  if (!ok || hex.size() != 8) return QColor(Qt::white);
  return QColor(value & 0xff, (value >> 8) & 0xff, (value >> 16) & 0xff);
}

// Elements of a placemark that are features of their own in KML but have no counterpart here.
bool IsOtherFeature(const QStringRef& name) {
  return name == QLatin1String("NetworkLink") || name == QLatin1String("GroundOverlay") ||
         name == QLatin1String("ScreenOverlay") || name == QLatin1String("PhotoOverlay") ||
         name == QLatin1String("Tour");
}

bool IsGeometry(const QStringRef& name) {
  for (const char* known : {"Point", "LineString", "LinearRing", "Polygon", "MultiGeometry",
                            "Model", "Track", "MultiTrack"}) {
    if (name == QLatin1String(known)) return true;
  }
  return false;
}

}  // namespace

bool CKmlTreeReader::Container::HasPlacemarks() const {
  for (const Item& item : items) {
    if (item.feature) return true;
  }
  return false;
}

CKmlTreeReader::CKmlTreeReader(IconResolver resolver) : resolver_(std::move(resolver)) {}

bool CKmlTreeReader::Fail(QXmlStreamReader& xml, const std::string& reason) {
  if (error_.empty()) {
    error_ = "line " + std::to_string(xml.lineNumber()) + ", column " +
             std::to_string(xml.columnNumber()) + ": " + reason;
  }
  return false;
}

bool CKmlTreeReader::Read(const QByteArray& kml, Container* document, std::string* error) {
  QXmlStreamReader xml(kml);
  bool ok = xml.readNextStartElement();
  if (ok && xml.name() != QLatin1String("kml")) {
    ok = Fail(xml, "the document's root is <" + Utf8(xml.name()) + ">, not <kml>");
  } else if (ok) {
    // The <kml> element is read as a container; a <Document> in it is the document itself.
    Container top;
    ok = ParseContainer(xml, &top);
    if (ok && top.items.size() == 1 && top.items[0].container && !top.HasPlacemarks()) {
      *document = std::move(*top.items[0].container);
    } else if (ok) {
      *document = std::move(top);
    }
  }
  if (xml.hasError()) {
    error_.clear();
    Fail(xml, "not well-formed XML (" + Utf8(xml.errorString()) + ")");
    ok = false;
  }
  if (ok) FindWideFields(*document);
  if (ok && !Finish(document)) ok = false;
  if (!ok) *error = error_.empty() ? "not a KML document" : error_;
  return ok;
}

bool CKmlTreeReader::ParseContainer(QXmlStreamReader& xml, Container* container) {
  if (++depth_ > kMaxNesting) {
    return Fail(xml, "folders are nested deeper than " + std::to_string(kMaxNesting));
  }
  while (xml.readNextStartElement()) {
    const QStringRef name = xml.name();
    if (name == QLatin1String("name")) {
      container->name = Utf8(xml.readElementText(QXmlStreamReader::IncludeChildElements));
    } else if (name == QLatin1String("visibility")) {
      container->visible = IsTrue(xml.readElementText());
    } else if (name == QLatin1String("open")) {
      container->open = IsTrue(xml.readElementText());
    } else if (name == QLatin1String("ExtendedData")) {
      std::vector<RawField> fields;
      ParseExtendedData(xml, &fields);
      for (const RawField& field : fields) {
        if (field.key == CKmlTreeWriter::kNodeKey) {
          container->layerMark = field.text.trimmed() == CKmlTreeWriter::kLayerNode;
        }
      }
    } else if (name == QLatin1String("Style")) {
      ParseStyle(xml, Utf8(xml.attributes().value("id")));
    } else if (name == QLatin1String("StyleMap")) {
      ParseStyleMap(xml, Utf8(xml.attributes().value("id")));
    } else if (name == QLatin1String("Schema")) {
      ParseSchema(xml);
    } else if (name == QLatin1String("Folder") || name == QLatin1String("Document")) {
      Item item;
      item.container.reset(new Container);
      if (!ParseContainer(xml, item.container.get())) return false;
      container->items.push_back(std::move(item));
    } else if (name == QLatin1String("Placemark")) {
      Item item;
      if (!ParsePlacemark(xml, &item)) return false;
      if (item.feature) container->items.push_back(std::move(item));
    } else {
      if (IsOtherFeature(name)) ++summary_.skipped;
      xml.skipCurrentElement();
    }
  }
  --depth_;
  return !xml.hasError();
}

bool CKmlTreeReader::ParsePlacemark(QXmlStreamReader& xml, Item* item) {
  ++summary_.placemarks;
  std::string name;
  QString description;
  bool hasGeometry = false;
  std::vector<int> kinds;
  std::vector<CGeometryData> parts;
  while (xml.readNextStartElement()) {
    const QStringRef element = xml.name();
    if (element == QLatin1String("name")) {
      name = Utf8(xml.readElementText(QXmlStreamReader::IncludeChildElements));
    } else if (element == QLatin1String("visibility")) {
      item->visible = IsTrue(xml.readElementText());
    } else if (element == QLatin1String("description")) {
      description = xml.readElementText(QXmlStreamReader::IncludeChildElements);
    } else if (element == QLatin1String("styleUrl")) {
      item->styleUrl = Utf8(xml.readElementText().trimmed());
    } else if (element == QLatin1String("Style")) {
      item->inlineStyle = "\n" + std::to_string(++inlineStyles_);  // no document id looks so
      ParseStyle(xml, item->inlineStyle);
    } else if (element == QLatin1String("ExtendedData")) {
      ParseExtendedData(xml, &item->fields);
    } else if (IsGeometry(element)) {
      if (hasGeometry) return Fail(xml, "placemark '" + name + "' has more than one geometry");
      hasGeometry = true;
      if (!ParseGeometry(xml, &kinds, &parts)) return false;
    } else {
      xml.skipCurrentElement();
    }
  }
  if (xml.hasError()) return false;
  if (!description.isEmpty()) {
    item->fields.insert(item->fields.begin(), RawField{kDescriptionKey, description, ""});
  }
  if (parts.empty()) {
    ++summary_.withoutGeometry;
    return true;
  }
  const int kind = kinds.front();
  if (kinds.size() > 1) {
    return Fail(xml, "placemark '" + name +
                         "': a MultiGeometry that mixes points, lines and "
                         "polygons is not supported");
  }
  item->feature.reset(new CAnnotationFeature(static_cast<E_GEOMETRY_DATA_TYPE>(kind)));
  item->feature->SetName(CLocalText::FromUtf8(name));
  for (const CGeometryData& part : parts) item->feature->AddPart(part);
  return true;
}

// Reads one geometry element into parts; `kinds` gets one single kind per part, or a multi kind
// for a MultiGeometry (even one with a single member).
bool CKmlTreeReader::ParseGeometry(QXmlStreamReader& xml, std::vector<int>* kinds,
                                   std::vector<CGeometryData>* parts) {
  const QString element = xml.name().toString();
  if (element == "MultiGeometry") {
    if (++depth_ > kMaxNesting) {
      return Fail(xml, "MultiGeometry is nested deeper than " + std::to_string(kMaxNesting));
    }
    std::vector<int> members;
    while (xml.readNextStartElement()) {
      if (!IsGeometry(xml.name())) {
        xml.skipCurrentElement();
        continue;
      }
      if (!ParseGeometry(xml, &members, parts)) return false;
    }
    for (int& member : members) {
      if (member > GEOMETRY_DATA_TYPE_POLYGON) member -= 3;  // nested collections flatten
    }
    kinds->push_back(members.empty() ? GEOMETRY_DATA_TYPE_MULTIPOINT : members.front() + 3);
    for (int member : members) {
      if (member != members.front()) kinds->push_back(member + 3);
    }
    --depth_;
    return !xml.hasError();
  }
  int kind = GEOMETRY_DATA_TYPE_UNKNOWN;
  if (element == "Point") kind = GEOMETRY_DATA_TYPE_POINT;
  if (element == "LineString") kind = GEOMETRY_DATA_TYPE_LINESTRING;
  if (element == "LinearRing" || element == "Polygon") kind = GEOMETRY_DATA_TYPE_POLYGON;
  if (kind == GEOMETRY_DATA_TYPE_UNKNOWN) {
    return Fail(xml, "the geometry <" + Utf8(element) +
                         "> is not supported (points, lines, "
                         "polygons and MultiGeometry of one of them are)");
  }
  CGeometryData part;
  bool outerRead = false;
  while (xml.readNextStartElement()) {
    const QStringRef name = xml.name();
    if (name == QLatin1String("coordinates")) {
      if (!ParseCoordinates(xml, &part)) return false;
    } else if (name == QLatin1String("outerBoundaryIs") && !outerRead) {
      outerRead = true;
      while (xml.readNextStartElement()) {
        if (xml.name() != QLatin1String("LinearRing")) {
          xml.skipCurrentElement();
          continue;
        }
        while (xml.readNextStartElement()) {
          if (xml.name() != QLatin1String("coordinates")) {
            xml.skipCurrentElement();
          } else if (!ParseCoordinates(xml, &part)) {
            return false;
          }
        }
      }
    } else {
      if (name == QLatin1String("innerBoundaryIs")) ++summary_.droppedInteriorRings;
      xml.skipCurrentElement();
    }
  }
  if (xml.hasError()) return false;
  if (part.GetSize() > 0) {
    kinds->push_back(kind);
    parts->push_back(part);
  }
  return true;
}

bool CKmlTreeReader::ParseCoordinates(QXmlStreamReader& xml, CGeometryData* part) {
  const QString text = xml.readElementText();
  for (const QString& tuple : text.simplified().split(' ', Qt::SkipEmptyParts)) {
    const QStringList values = tuple.split(',');
    double xyz[3] = {0, 0, 0};
    bool ok = values.size() == 2 || values.size() == 3;
    for (int i = 0; ok && i < values.size(); ++i) xyz[i] = values[i].toDouble(&ok);
    if (!ok) return Fail(xml, "'" + Utf8(tuple) + "' is not a coordinate (lon,lat[,alt])");
    part->PushBack(CVector3D(xyz[0], xyz[1], xyz[2]));
  }
  return true;
}

void CKmlTreeReader::ParseStyle(QXmlStreamReader& xml, const std::string& id) {
  KmlStyle style;
  while (xml.readNextStartElement()) {
    const QString kind = xml.name().toString();
    if (kind != "LineStyle" && kind != "PolyStyle" && kind != "IconStyle" && kind != "LabelStyle") {
      xml.skipCurrentElement();
      continue;
    }
    (kind == "LineStyle"   ? style.line
     : kind == "PolyStyle" ? style.poly
     : kind == "IconStyle" ? style.icon
                           : style.label) = true;
    while (xml.readNextStartElement()) {
      const QString name = xml.name().toString();
      if (name == "Icon") {
        while (xml.readNextStartElement()) {
          if (xml.name() == QLatin1String("href")) {
            style.href = Utf8(xml.readElementText().trimmed());
          } else {
            xml.skipCurrentElement();
          }
        }
        continue;
      }
      const QString text = xml.readElementText(QXmlStreamReader::SkipChildElements);
      if (name == "color") {
        (kind == "LineStyle"   ? style.lineColor
         : kind == "PolyStyle" ? style.polyColor
                               : style.labelColor) = text;
      } else if (name == "width") {
        style.width = NumberOr(text, style.width);
      } else if (name == "fill") {
        style.fill = IsTrue(text);
      } else if (name == "outline") {
        style.outline = IsTrue(text);
      } else if (name == "heading") {
        style.heading = NumberOr(text, 0.0);
      } else if (name == "scale") {
        (kind == "IconStyle" ? style.iconScale : style.labelScale) = NumberOr(text, 1.0);
      }
    }
  }
  if (!id.empty()) styles_[id] = style;
}

void CKmlTreeReader::ParseStyleMap(QXmlStreamReader& xml, const std::string& id) {
  while (xml.readNextStartElement()) {
    if (xml.name() != QLatin1String("Pair")) {
      xml.skipCurrentElement();
      continue;
    }
    std::string key, url;
    while (xml.readNextStartElement()) {
      if (xml.name() == QLatin1String("key")) {
        key = Utf8(xml.readElementText().trimmed());
      } else if (xml.name() == QLatin1String("styleUrl")) {
        url = Utf8(xml.readElementText().trimmed());
      } else if (xml.name() == QLatin1String("Style")) {
        url = "#\n" + std::to_string(++inlineStyles_);
        ParseStyle(xml, url.substr(1));
      } else {
        xml.skipCurrentElement();
      }
    }
    if (key == "normal" && !id.empty()) styleMaps_[id] = url;
  }
}

void CKmlTreeReader::ParseSchema(QXmlStreamReader& xml) {
  const std::string id = Utf8(xml.attributes().value("id"));
  if (id.empty()) {  // nothing can refer to it
    xml.skipCurrentElement();
    return;
  }
  std::map<std::string, std::string>& fields = schemas_[id];
  while (xml.readNextStartElement()) {
    if (xml.name() == QLatin1String("SimpleField")) {
      fields[Utf8(xml.attributes().value("name"))] =
          Utf8(xml.attributes().value("type").toString().toLower());
    }
    xml.skipCurrentElement();
  }
}

void CKmlTreeReader::ParseExtendedData(QXmlStreamReader& xml, std::vector<RawField>* fields) {
  while (xml.readNextStartElement()) {
    if (xml.name() == QLatin1String("Data")) {
      RawField field{Utf8(xml.attributes().value("name")), QString(), ""};
      while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("value")) {
          field.text = xml.readElementText(QXmlStreamReader::IncludeChildElements);
        } else {
          xml.skipCurrentElement();
        }
      }
      if (!field.key.empty()) fields->push_back(field);
    } else if (xml.name() == QLatin1String("SchemaData")) {
      std::string schema = Utf8(xml.attributes().value("schemaUrl"));
      if (!schema.empty() && schema[0] == '#') schema.erase(0, 1);
      while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("SimpleData")) {
          RawField field{Utf8(xml.attributes().value("name")), xml.readElementText(), schema};
          if (!field.key.empty()) fields->push_back(field);
        } else {
          xml.skipCurrentElement();
        }
      }
    } else {
      xml.skipCurrentElement();
    }
  }
}

// Resolves what the whole document had to be read for: shared styles, field types, icons and
// the containers' check states.
bool CKmlTreeReader::Finish(Container* container) {
  bool allShown = true;
  for (Item& item : container->items) {
    if (item.container) {
      if (!Finish(item.container.get())) return false;
      allShown = allShown && item.container->checkState == 2;
      continue;
    }
    allShown = allShown && item.visible;
    if (!StyleFor(item, item.feature->GetStyleSet()) || !FillFields(&item)) return false;
  }
  container->checkState = !container->visible ? 0 : allShown ? 2 : 1;
  return true;
}

// A field of type int is 64-bit when any of its values needs it.
void CKmlTreeReader::FindWideFields(const Container& container) {
  for (const Item& item : container.items) {
    if (item.container) FindWideFields(*item.container);
    for (const RawField& field : item.fields) {
      bool ok = false;
      const qlonglong value = field.text.trimmed().toLongLong(&ok);
      if (ok && (value > INT_MAX || value < INT_MIN)) {
        wideFields_[field.schema + "/" + field.key] = true;
      }
    }
  }
}

bool CKmlTreeReader::FillFields(Item* item) {
  for (const RawField& field : item->fields) {
    QVariant value = field.text;
    auto schema = schemas_.find(field.schema);
    if (schema != schemas_.end()) {
      auto declared = schema->second.find(field.key);
      const std::string type = declared == schema->second.end() ? "string" : declared->second;
      const QString text = field.text.trimmed();
      bool ok = true;
      if (type == "bool") {
        value = IsTrue(text);
      } else if (type == "int" || type == "short" || type == "ushort") {
        if (wideFields_.count(field.schema + "/" + field.key) > 0) {
          value = text.toLongLong(&ok);
        } else {
          value = text.toInt(&ok);
        }
      } else if (type == "uint") {
        value = text.toLongLong(&ok);
      } else if (type == "float") {
        value = text.toFloat(&ok);
      } else if (type == "double") {
        value = text.toDouble(&ok);
      }
      if (!ok) value = field.text;  // a value that does not fit its type is kept as text
    }
    item->feature->SetFieldValue(CLocalText::FromUtf8(field.key), value);
  }
  return true;
}

bool CKmlTreeReader::StyleFor(const Item& item, CFeatureStyleSet* styles) {
  std::string id = item.inlineStyle;
  std::string url = item.styleUrl;
  for (int depth = 0; id.empty() && !url.empty(); ++depth) {
    const std::string target = url[0] == '#' ? url.substr(1) : std::string();
    if (depth > kMaxStyleDepth || target.empty() ||
        (styles_.count(target) == 0 && styleMaps_.count(target) == 0)) {
      error_ = "placemark '" + CLocalText::ToUtf8(item.feature->GetName()) + "': styleUrl '" +
               item.styleUrl + "' names no Style or StyleMap of this document";
      return false;
    }
    if (styles_.count(target) > 0) {
      id = target;
    } else {
      url = styleMaps_[target];
    }
  }
  if (id.empty()) return true;
  const KmlStyle& style = styles_[id];
  if (style.line && (!style.poly || style.outline)) {
    auto pen = std::make_unique<CFeaturePenStyle>();
    pen->SetColor(ColorOf(style.lineColor.isEmpty() ? "ffffffff" : style.lineColor));
    pen->SetWidth(style.width);
    pen->SetUnit(GCS_UNIT_PIXEL);
    styles->PushBack(std::move(pen));
  }
  if (style.poly) {
    auto brush = std::make_unique<CFeatureBrushStyle>();
    brush->SetForegroundColor(ColorOf(style.polyColor.isEmpty() ? "ffffffff" : style.polyColor));
    if (!style.fill) brush->SetIdentify(OGR_BRUSH_NULL);
    styles->PushBack(std::move(brush));
  }
  if (style.icon) {
    auto icon = std::make_unique<CFeatureIconStyle>();
    auto known = resolvedIcons_.find(style.href);
    if (known == resolvedIcons_.end()) {
      std::string url = style.href;
      if (!style.href.empty() && resolver_ && !resolver_(style.href, &url, &error_)) return false;
      known = resolvedIcons_.emplace(style.href, url).first;
    }
    icon->SetIconUrl(CLocalText::FromUtf8(known->second));
    icon->SetIconScale(static_cast<float>(style.iconScale));
    icon->SetAngle(style.heading);
    styles->PushBack(std::move(icon));
  }
  if (style.label) {
    auto label = std::make_unique<CFeatureLabelStyle>();
    label->SetForegroundColor(ColorOf(style.labelColor.isEmpty() ? "ffffffff" : style.labelColor));
    label->SetSize(style.labelScale * CKmlTreeWriter::kLabelPoints);
    label->SetUnit(GCS_UNIT_POINT);
    styles->PushBack(std::move(label));
  }
  return true;
}
