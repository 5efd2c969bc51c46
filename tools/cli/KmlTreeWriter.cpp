#include "KmlTreeWriter.h"

#include <QColor>
#include <QFileInfo>
#include <QIODevice>
#include <QStringList>
#include <QXmlStreamWriter>
#include <algorithm>
#include <vector>

#include "AnnotationFeature.h"
#include "ChildLister.h"
#include "FeatureBrushStyle.h"
#include "FeatureIconStyle.h"
#include "FeatureLabelStyle.h"
#include "FeaturePenStyle.h"
#include "FieldValueList.h"
#include "IAnnotationDBDataModel.h"
#include "InterruptFlag.h"
#include "LocalText.h"
#include "NodeFormatter.h"
#include "StyleJson.h"
#include "ZuFieldSetObject.h"

namespace {

const char kDescriptionKey[] = "description";

QString Text(const std::string& utf8) {
  return QString::fromStdString(utf8);
}
QString Local(const std::string& local) {
  return Text(CLocalText::ToUtf8(local));
}
QString Number(double value) {
  return Text(CNodeFormatter::Number(value));
}

// KML colours are aabbggrr; the module keeps no alpha, so every colour is opaque.
QString KmlColor(const QColor& color) {
  return QString::asprintf("ff%02x%02x%02x", color.blue(), color.green(), color.red());
}

// A length in screen pixels (96 per inch), the unit of KML's widths; ground metres stay as they
// are.
double Pixels(double value, E_GCS_UNIT unit) {
  switch (unit) {
    case GCS_UNIT_POINT:
      return value * 96.0 / 72.0;
    case GCS_UNIT_MILLIMETER:
      return value * 96.0 / 25.4;
    case GCS_UNIT_CENTIMETER:
      return value * 96.0 / 2.54;
    case GCS_UNIT_INCH:
      return value * 96.0;
    default:
      return value;
  }
}

const char* KmlFieldType(E_FIELD_OFST_TYPE type) {
  switch (type) {
    case FIELD_OFST_TYPE_BOOL:
      return "bool";
    case FIELD_OFST_TYPE_CHAR:
      return "short";
    // KML has no 64-bit type: large values read back as 64-bit integers.
    case FIELD_OFST_TYPE_INT:
    case FIELD_OFST_TYPE_INT64:
      return "int";
    case FIELD_OFST_TYPE_FLOAT:
      return "float";
    case FIELD_OFST_TYPE_DOUBLE:
      return "double";
    default:
      return "string";
  }
}

QString ValueText(const QVariant& value) {
  switch (static_cast<int>(value.type())) {
    case QVariant::Bool:
      return value.toBool() ? "1" : "0";
    case QMetaType::Float:
    case QVariant::Double:
      return Number(value.toDouble());
    case QVariant::ByteArray:
      return Local(value.toByteArray().toStdString());
    default:
      return value.toString();
  }
}

bool IsText(const QVariant& value) {
  return value.type() == QVariant::String || value.type() == QVariant::ByteArray;
}

bool IsDescription(const CZuFieldSetObject::__tagField& field) {
  return field.key == kDescriptionKey &&
         (field.type == FIELD_OFST_TYPE_TEXT || field.type == FIELD_OFST_TYPE_NONE);
}

void WriteCoordinates(QXmlStreamWriter& xml, const std::vector<CVector3D>& vertices, bool close) {
  QStringList points;
  for (const CVector3D& v : vertices) {
    points << Number(v.X()) + "," + Number(v.Y()) + "," + Number(v.Z());
  }
  if (close && !vertices.empty() && !(vertices.front() == vertices.back()))
    points << points.front();
  xml.writeTextElement("coordinates", points.join(' '));
}

void WritePrimitive(QXmlStreamWriter& xml, E_GEOMETRY_DATA_TYPE single,
                    const std::vector<CVector3D>& vertices, bool absolute) {
  static const char* const kNames[] = {"", "Point", "LineString", "Polygon"};
  xml.writeStartElement(kNames[single]);
  if (absolute) xml.writeTextElement("altitudeMode", "absolute");
  if (single == GEOMETRY_DATA_TYPE_POLYGON) {
    xml.writeStartElement("outerBoundaryIs");
    xml.writeStartElement("LinearRing");
    WriteCoordinates(xml, vertices, true);
    xml.writeEndElement();
    xml.writeEndElement();
  } else {
    WriteCoordinates(xml, vertices, false);
  }
  xml.writeEndElement();
}

void WriteGeometry(QXmlStreamWriter& xml, const IAnnotationFeature& feature) {
  const E_GEOMETRY_DATA_TYPE kind = feature.GetGeometryType();
  if (kind < GEOMETRY_DATA_TYPE_POINT || kind > GEOMETRY_DATA_TYPE_MULTIPOLYGON) return;
  bool absolute = false;
  std::vector<std::vector<CVector3D>> parts;
  for (int i = 0; i < feature.GetPartCount(); ++i) {
    if (feature.GetPart(i).GetSize() == 0) continue;
    parts.push_back(feature.GetPart(i).Vertices());
    for (const CVector3D& v : parts.back()) absolute = absolute || v.Z() != 0.0;
  }
  if (parts.empty()) return;
  const bool multi = kind >= GEOMETRY_DATA_TYPE_MULTIPOINT;
  const auto single = static_cast<E_GEOMETRY_DATA_TYPE>(multi ? kind - 3 : kind);
  if (multi) xml.writeStartElement("MultiGeometry");
  for (size_t i = 0; i < (multi ? parts.size() : 1); ++i) {
    WritePrimitive(xml, single, parts[i], absolute);
  }
  if (multi) xml.writeEndElement();
}

}  // namespace

CKmlTreeWriter::CKmlTreeWriter(IAnnotationDBDataModel* model, const CInterruptFlag* interrupt)
    : model_(model), interrupt_(interrupt) {}

bool CKmlTreeWriter::Interrupted() const {
  return interrupt_ != nullptr && interrupt_->IsSet();
}

// The first pass finds the shared styles and the layers' schemas, which the document declares
// before its folders.
bool CKmlTreeWriter::Collect(const std::string& uuid, E_NODE_KIND kind) {
  Schema schema;
  auto declare = [&schema](const CZuFieldSetObject& set) {
    for (const CZuFieldSetObject::__tagField& field : CFieldValueList(set).fields) {
      const std::string key = CLocalText::ToUtf8(field.key);
      const bool known =
          std::any_of(schema.fields.begin(), schema.fields.end(),
                      [&key](const auto& declared) { return declared.first == key; });
      if (!known && !IsDescription(field)) schema.fields.emplace_back(key, field.type);
    }
  };
  if (kind == NODE_KIND_LAYER) {
    CZuFieldSetObject headers;
    model_->QueryLayerHeaderList(uuid, headers);
    declare(headers);
  }
  CChildLister lister(kind == NODE_KIND_LAYER, false);
  std::vector<CChildLister::Child> children;
  lister.List(model_, uuid, kind, &children);
  for (const CChildLister::Child& child : children) {
    if (Interrupted()) return false;
    if (child.kind != NODE_KIND_FEATURE) {
      if (!Collect(child.uuid, child.kind)) return false;
      continue;
    }
    // Features may hold fields their layer's header does not list (it is written by imports).
    CZuFieldSetObject fields;
    model_->QueryField(child.uuid, fields);
    declare(fields);
    CFeatureStyleSet styles;
    if (!model_->QueryStyle(&styles, child.uuid, false) || styles.IsEmpty()) continue;
    const std::string key = AnnotationLayerNS::ToJsonStyle(&styles);
    auto found = styleIdOfKey_.find(key);
    if (found == styleIdOfKey_.end()) {
      const std::string id = "style-" + std::to_string(styles_.size() + 1);
      styles_.emplace_back(id, styles);
      found = styleIdOfKey_.emplace(key, id).first;
    }
    styleIds_[child.uuid] = found->second;
  }
  if (!schema.fields.empty()) {
    schema.id = "fields-" + std::to_string(schemaOrder_.size() + 1);
    schemas_[uuid] = schema;
    schemaOrder_.push_back(uuid);
  }
  return true;
}

CKmlTreeWriter::E_OUTCOME CKmlTreeWriter::Write(const std::string& uuid, E_NODE_KIND kind,
                                                bool packIcons, QIODevice* out, Summary* summary,
                                                std::string* error) {
  *summary = Summary();
  summary_ = summary;
  packIcons_ = packIcons;
  if (!Collect(uuid, kind)) return OUTCOME_INTERRUPTED;
  summary->styles = static_cast<int>(styles_.size());

  std::string name;
  int checkState = 2;
  bool expanded = false;
  if (kind == NODE_KIND_FOLDER) {
    const CFolderOption option = model_->QueryFolderOption(uuid);
    name = option.GetName();
    checkState = option.GetNodeCheckState();
    expanded = option.IsNodeExpand();
  } else {
    const CLayerOption option = model_->QueryLayerOption(uuid);
    name = option.GetName();
    checkState = option.GetNodeCheckState();
    expanded = option.IsNodeExpand();
  }

  QXmlStreamWriter xml(out);
  xml.setAutoFormatting(true);
  xml.setAutoFormattingIndent(1);
  xml.writeStartDocument();
  xml.writeDefaultNamespace("http://www.opengis.net/kml/2.2");
  xml.writeStartElement("kml");
  xml.writeStartElement("Document");
  xml.writeTextElement("name", Local(name));
  xml.writeTextElement("open", "1");
  for (const auto& style : styles_) WriteStyle(xml, style.first, style.second);
  for (const std::string& layer : schemaOrder_) {
    const Schema& schema = schemas_[layer];
    xml.writeStartElement("Schema");
    xml.writeAttribute("name", Local(model_->QueryLayerOption(layer).GetName()));
    xml.writeAttribute("id", Text(schema.id));
    for (const auto& field : schema.fields) {
      xml.writeStartElement("SimpleField");
      xml.writeAttribute("type", KmlFieldType(field.second));
      xml.writeAttribute("name", Text(field.first));
      xml.writeEndElement();
    }
    xml.writeEndElement();
  }
  if (!WriteNode(xml, uuid, kind, name, checkState, expanded)) return OUTCOME_INTERRUPTED;
  xml.writeEndElement();
  xml.writeEndElement();
  xml.writeEndDocument();
  if (xml.hasError()) {
    *error = "the KML document could not be written";
    return OUTCOME_FAILED;
  }
  return OUTCOME_DONE;
}

bool CKmlTreeWriter::WriteNode(QXmlStreamWriter& xml, const std::string& uuid, E_NODE_KIND kind,
                               const std::string& name, int checkState, bool expanded) {
  const bool layer = kind == NODE_KIND_LAYER;
  ++(layer ? summary_->layers : summary_->folders);
  xml.writeStartElement("Folder");
  xml.writeTextElement("name", Local(name));
  if (checkState == 0) xml.writeTextElement("visibility", "0");
  if (expanded) xml.writeTextElement("open", "1");
  if (layer) {
    xml.writeStartElement("ExtendedData");
    xml.writeStartElement("Data");
    xml.writeAttribute("name", kNodeKey);
    xml.writeTextElement("value", kLayerNode);
    xml.writeEndElement();
    xml.writeEndElement();
  }
  CChildLister lister(layer, true);
  std::vector<CChildLister::Child> children;
  lister.List(model_, uuid, kind, &children);
  for (const CChildLister::Child& child : children) {
    if (Interrupted()) return false;
    switch (child.kind) {
      case NODE_KIND_FOLDER:
        if (!WriteNode(xml, child.uuid, child.kind, child.folder.GetName(),
                       child.folder.GetNodeCheckState(), child.folder.IsNodeExpand())) {
          return false;
        }
        break;
      case NODE_KIND_LAYER:
        if (!WriteNode(xml, child.uuid, child.kind, child.layer.GetName(),
                       child.layer.GetNodeCheckState(), child.layer.IsNodeExpand())) {
          return false;
        }
        break;
      default:
        WritePlacemark(xml, child.uuid, uuid, child.feature.GetName(),
                       child.feature.IsNodeChecked());
        break;
    }
  }
  xml.writeEndElement();
  return true;
}

void CKmlTreeWriter::WritePlacemark(QXmlStreamWriter& xml, const std::string& uuid,
                                    const std::string& layer, const std::string& name,
                                    bool checked) {
  ++summary_->features;
  xml.writeStartElement("Placemark");
  xml.writeTextElement("name", Local(name));
  if (!checked) xml.writeTextElement("visibility", "0");

  CZuFieldSetObject set;
  model_->QueryField(uuid, set);
  const std::vector<CZuFieldSetObject::__tagField> fields = CFieldValueList(set).fields;
  std::vector<const CZuFieldSetObject::__tagField*> loose, typed;
  auto schema = schemas_.find(layer);
  for (const CZuFieldSetObject::__tagField& field : fields) {
    if (IsDescription(field) && IsText(field.value)) {
      xml.writeTextElement("description", ValueText(field.value));
      continue;
    }
    if (!field.value.isValid() || field.value.isNull()) continue;
    bool inSchema = false;
    if (schema != schemas_.end()) {
      for (const auto& declared : schema->second.fields) {
        inSchema = inSchema || declared.first == CLocalText::ToUtf8(field.key);
      }
    }
    (inSchema ? typed : loose).push_back(&field);
  }
  auto style = styleIds_.find(uuid);
  if (style != styleIds_.end()) xml.writeTextElement("styleUrl", Text("#" + style->second));
  if (!loose.empty() || !typed.empty()) {
    xml.writeStartElement("ExtendedData");
    for (const CZuFieldSetObject::__tagField* field : loose) {
      xml.writeStartElement("Data");
      xml.writeAttribute("name", Local(field->key));
      xml.writeTextElement("value", ValueText(field->value));
      xml.writeEndElement();
    }
    if (!typed.empty()) {
      xml.writeStartElement("SchemaData");
      xml.writeAttribute("schemaUrl", Text("#" + schema->second.id));
      for (const CZuFieldSetObject::__tagField* field : typed) {
        xml.writeStartElement("SimpleData");
        xml.writeAttribute("name", Local(field->key));
        xml.writeCharacters(ValueText(field->value));
        xml.writeEndElement();
      }
      xml.writeEndElement();
    }
    xml.writeEndElement();
  }

  CAnnotationFeature feature;
  if (model_->QueryGeometryData(uuid, &feature)) WriteGeometry(xml, feature);
  xml.writeEndElement();
}

std::string CKmlTreeWriter::IconHref(const std::string& localUrl) {
  const std::string url = CLocalText::ToUtf8(localUrl);
  const QFileInfo file(Text(url));
  if (!packIcons_ || url.find("://") != std::string::npos || !file.isFile()) return url;
  const std::string path = file.absoluteFilePath().toStdString();
  auto known = iconNames_.find(path);
  if (known != iconNames_.end()) return known->second;
  const std::string base = file.completeBaseName().toStdString();
  const std::string suffix = file.suffix().isEmpty() ? "" : "." + file.suffix().toStdString();
  std::string name = "files/" + base + suffix;
  for (int n = 2; std::any_of(packed_.begin(), packed_.end(),
                              [&name](const auto& entry) { return entry.first == name; });
       ++n) {
    name = "files/" + base + "-" + std::to_string(n) + suffix;
  }
  iconNames_[path] = name;
  packed_.emplace_back(name, path);
  return name;
}

void CKmlTreeWriter::WriteStyle(QXmlStreamWriter& xml, const std::string& id,
                                const CFeatureStyleSet& styles) {
  const CFeaturePenStyle* pen = nullptr;
  const CFeatureBrushStyle* brush = nullptr;
  const CFeatureIconStyle* icon = nullptr;
  const CFeatureLabelStyle* label = nullptr;
  for (int i = styles.GetCount() - 1; i >= 0; --i) {  // the first of each kind wins
    const CFeatureStyle* style = styles.At(i);
    if (auto p = dynamic_cast<const CFeaturePenStyle*>(style)) pen = p;
    if (auto b = dynamic_cast<const CFeatureBrushStyle*>(style)) brush = b;
    if (auto c = dynamic_cast<const CFeatureIconStyle*>(style)) icon = c;
    if (auto l = dynamic_cast<const CFeatureLabelStyle*>(style)) label = l;
  }
  xml.writeStartElement("Style");
  xml.writeAttribute("id", Text(id));
  if (icon != nullptr) {
    xml.writeStartElement("IconStyle");
    xml.writeTextElement("scale", Number(icon->GetIconScale()));
    xml.writeTextElement("heading", Number(icon->GetAngle()));
    xml.writeStartElement("Icon");
    xml.writeTextElement("href", Text(IconHref(icon->GetIconUrl())));
    xml.writeEndElement();
    xml.writeEndElement();
  }
  if (label != nullptr) {
    xml.writeStartElement("LabelStyle");
    xml.writeTextElement("color", KmlColor(label->GetForegroundColor()));
    const double points = label->GetUnit() == GCS_UNIT_POINT
                              ? label->GetSize()
                              : Pixels(label->GetSize(), label->GetUnit()) * 72.0 / 96.0;
    xml.writeTextElement("scale", Number(points / kLabelPoints));
    xml.writeEndElement();
  }
  if (pen != nullptr) {
    xml.writeStartElement("LineStyle");
    xml.writeTextElement("color", KmlColor(pen->GetColor()));
    xml.writeTextElement("width", Number(Pixels(pen->GetWidth(), pen->GetUnit())));
    xml.writeEndElement();
  }
  if (brush != nullptr) {
    xml.writeStartElement("PolyStyle");
    xml.writeTextElement("color", KmlColor(brush->GetForegroundColor()));
    if (brush->GetIdentify() == OGR_BRUSH_NULL) xml.writeTextElement("fill", "0");
    if (pen == nullptr) xml.writeTextElement("outline", "0");
    xml.writeEndElement();
  }
  xml.writeEndElement();
}
