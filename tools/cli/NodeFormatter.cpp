#include "NodeFormatter.h"

#include <json/reader.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerOption.h"
#include "LocalText.h"
#include "StyleJson.h"
#include "ZuFieldSetObject.h"

namespace {

class CFieldLister : public CZuFieldSetObject::IFieldDataVisitor {
 public:
  explicit CFieldLister(bool withValues) : withValues_(withValues), list_(Json::arrayValue) {}
  void VisitField(const CZuFieldSetObject::__tagField& field) override {
    if (field.state == CZuFieldSetObject::FIELD_STATE_REMOVED) return;
    Json::Value item(Json::objectValue);
    item["key"] = CNodeFormatter::Utf8(field.key);
    item["type"] = CNodeFormatter::FieldTypeName(field.type);
    if (!field.fieldClass.empty()) item["class"] = CNodeFormatter::Utf8(field.fieldClass);
    if (withValues_) item["value"] = CNodeFormatter::ValueJson(field.value);
    list_.append(item);
  }
  const Json::Value& List() const { return list_; }

 private:
  bool withValues_;
  Json::Value list_;
};

}  // namespace

const char* CNodeFormatter::KindName(E_NODE_KIND kind) {
  switch (kind) {
    case NODE_KIND_FOLDER: return "folder";
    case NODE_KIND_LAYER: return "layer";
    case NODE_KIND_FEATURE: return "feature";
    default: return "none";
  }
}

const char* CNodeFormatter::CheckStateName(int state) {
  switch (state) {
    case 0: return "unchecked";
    case 1: return "partial";
    default: return "checked";
  }
}

const char* CNodeFormatter::FolderTypeName(E_FOLDER_TYPE type) {
  switch (type) {
    case FOLDER_TYPE_NORMAL: return "normal";
    case FOLDER_TYPE_ROOT: return "root";
    case FOLDER_TYPE_RECYCLE: return "recycle";
    default: return "unknown";
  }
}

const char* CNodeFormatter::LayerTypeName(E_LAYER_TYPE type) {
  switch (type) {
    case LAYER_TYPE_ANNOTATION: return "annotation";
    case LAYER_TYPE_GIS_POINT: return "gis-point";
    case LAYER_TYPE_GIS_LINE: return "gis-line";
    case LAYER_TYPE_GIS_POLYGON: return "gis-polygon";
    default: return "unknown";
  }
}

const char* CNodeFormatter::AnnotationTypeName(E_ANNOTATION_TYPE type) {
  switch (type) {
    case ANNOTATION_TYPE_POINT: return "point";
    case ANNOTATION_TYPE_LINE: return "line";
    case ANNOTATION_TYPE_POLYGON: return "polygon";
    case ANNOTATION_TYPE_RECTANGLE: return "rectangle";
    case ANNOTATION_TYPE_CIRCLE: return "circle";
    case ANNOTATION_TYPE_ELLIPSE: return "ellipse";
    case ANNOTATION_TYPE_GIS_POINT: return "gis-point";
    case ANNOTATION_TYPE_GIS_LINE: return "gis-line";
    case ANNOTATION_TYPE_GIS_POLYGON: return "gis-polygon";
    case ANNOTATION_TYPE_ROUTE: return "route";
    case ANNOTATION_TYPE_LABEL: return "label";
    default: return "unknown";
  }
}

const char* CNodeFormatter::GeometryKindName(E_GEOMETRY_DATA_TYPE kind) {
  switch (kind) {
    case GEOMETRY_DATA_TYPE_POINT: return "point";
    case GEOMETRY_DATA_TYPE_LINESTRING: return "linestring";
    case GEOMETRY_DATA_TYPE_POLYGON: return "polygon";
    case GEOMETRY_DATA_TYPE_MULTIPOINT: return "multipoint";
    case GEOMETRY_DATA_TYPE_MULTILINESTRING: return "multilinestring";
    case GEOMETRY_DATA_TYPE_MULTIPOLYGON: return "multipolygon";
    default: return "none";
  }
}

const char* CNodeFormatter::FieldTypeName(E_FIELD_OFST_TYPE type) {
  switch (type) {
    case FIELD_OFST_TYPE_BOOL: return "bool";
    case FIELD_OFST_TYPE_CHAR: return "char";
    case FIELD_OFST_TYPE_INT: return "int";
    case FIELD_OFST_TYPE_INT64: return "int64";
    case FIELD_OFST_TYPE_FLOAT: return "float";
    case FIELD_OFST_TYPE_DOUBLE: return "double";
    case FIELD_OFST_TYPE_TEXT: return "text";
    default: return "none";
  }
}

std::string CNodeFormatter::Utf8(const std::string& local) { return CLocalText::ToUtf8(local); }

std::string CNodeFormatter::Number(double value) {
  char text[40];
  for (int precision = 6; precision <= 17; ++precision) {
    std::snprintf(text, sizeof text, "%.*g", precision, value);
    if (std::strtod(text, nullptr) == value) break;
  }
  return text;
}

std::string CNodeFormatter::Seconds(double seconds) {
  char text[32];
  std::snprintf(text, sizeof text, "%.2f", seconds);
  return text;
}

Json::Value CNodeFormatter::FolderJson(const CFolderOption& option) {
  Json::Value json(Json::objectValue);
  json["kind"] = "folder";
  json["uuid"] = option.GetUUID();
  json["name"] = Utf8(option.GetName());
  json["parent"] = option.GetParentUUID();
  json["left"] = option.GetLeftUUID();
  json["right"] = option.GetRightUUID();
  json["order"] = option.GetOrderNum();
  json["type"] = FolderTypeName(option.GetType());
  json["status"] = option.GetStatusMask();
  json["check"] = CheckStateName(option.GetNodeCheckState());
  json["expanded"] = option.IsNodeExpand();
  json["recycled"] = option.IsRecycle();
  json["index"] = option.GetIndexArrayString();
  return json;
}

Json::Value CNodeFormatter::LayerJson(const CLayerOption& option) {
  Json::Value json(Json::objectValue);
  json["kind"] = "layer";
  json["uuid"] = option.GetUUID();
  json["name"] = Utf8(option.GetName());
  json["parent"] = option.GetParentUUID();
  json["parent_is_layer"] = option.IsLayerParent();
  json["left"] = option.GetLeftUUID();
  json["right"] = option.GetRightUUID();
  json["order"] = option.GetOrderNum();
  json["type"] = LayerTypeName(option.GetType());
  json["status"] = option.GetStatusMask();
  json["check"] = CheckStateName(option.GetNodeCheckState());
  json["expanded"] = option.IsNodeExpand();
  json["recycled"] = option.IsRecycle();
  json["min_level"] = option.GetMinLevel();
  json["max_level"] = option.GetMaxLevel();
  json["min_name_level"] = option.GetMinNameLevel();
  json["max_name_level"] = option.GetMaxNameLevel();
  json["child_max_count"] = option.GetChildNodeMaxCount();
  json["wkt"] = option.GetWkt();
  json["property_header"] = Utf8(option.GetPropertyHeader());
  json["index"] = option.GetIndexArrayString();
  return json;
}

Json::Value CNodeFormatter::FeatureJson(const CFeatureOption& option) {
  Json::Value json(Json::objectValue);
  json["kind"] = "feature";
  json["uuid"] = option.GetUUID();
  json["name"] = Utf8(option.GetName());
  json["parent"] = option.GetParentUUID();
  json["left"] = option.GetLeftUUID();
  json["right"] = option.GetRightUUID();
  json["order"] = option.GetOrderNum();
  json["type"] = AnnotationTypeName(option.GetType());
  json["status"] = option.GetStatusMask();
  json["check"] = option.IsNodeChecked() ? "checked" : "unchecked";
  json["recycled"] = option.IsRecycle();
  json["created"] = option.GetCreateDateTime();
  json["modified"] = option.GetModifyDateTime();
  json["index"] = option.GetIndexArrayString();
  return json;
}

Json::Value CNodeFormatter::ExtentJson(const EXTENT& extent) {
  Json::Value json(Json::arrayValue);
  json.append(extent.min_x);
  json.append(extent.min_y);
  json.append(extent.max_x);
  json.append(extent.max_y);
  return json;
}

Json::Value CNodeFormatter::FieldsJson(const CZuFieldSetObject& fields, bool withValues) {
  CFieldLister lister(withValues);
  fields.TravelField(lister);
  return lister.List();
}

Json::Value CNodeFormatter::StyleJson(const CFeatureStyleSet& styles) {
  const std::string text = AnnotationLayerNS::ToJsonStyle(&styles);
  if (text.empty()) return Json::Value();
  // The module writes GB18030 bytes for colours and fonts; JSON wants UTF-8.
  const std::string utf8 = Utf8(text);
  Json::CharReaderBuilder builder;
  std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value json;
  std::string errors;
  if (!reader->parse(utf8.data(), utf8.data() + utf8.size(), &json, &errors)) {
    return Json::Value(utf8);
  }
  return json;
}

Json::Value CNodeFormatter::ValueJson(const QVariant& value) {
  if (!value.isValid() || value.isNull()) return Json::Value();
  switch (static_cast<int>(value.type())) {
    case QVariant::Bool: return Json::Value(value.toBool());
    case QVariant::Int:
    case QVariant::Char: return Json::Value(value.toInt());
    case QVariant::LongLong: return Json::Value(static_cast<Json::Int64>(value.toLongLong()));
    case QVariant::UInt:
    case QVariant::ULongLong: return Json::Value(static_cast<Json::UInt64>(value.toULongLong()));
    case QVariant::Double: return Json::Value(value.toDouble());
    default: return Json::Value(value.toString().toUtf8().toStdString());
  }
}
