// CNodeFormatter turns the module's records into what the tool prints: names of kinds, types and
// check states, and JSON objects of option records, field sets, styles and extents. Text read from
// the module (names, keys, headers) is converted from the local code page to UTF-8 here, so that
// commands print UTF-8 throughout.
//
// Threading contract: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_CLI_NODE_FORMATTER_H
#define ANNOTATIONLAYER_CLI_NODE_FORMATTER_H

#include <json/value.h>

#include <QVariant>

#include <string>

#include "AnnotationLayerTypes.h"

class CFeatureOption;
class CFeatureStyleSet;
class CFolderOption;
class CLayerOption;
class CZuFieldSetObject;

class CNodeFormatter {
 public:
  CNodeFormatter() = delete;

  static const char* KindName(E_NODE_KIND kind);
  // Qt's check states: "unchecked", "partial", "checked".
  static const char* CheckStateName(int state);
  static const char* FolderTypeName(E_FOLDER_TYPE type);
  static const char* LayerTypeName(E_LAYER_TYPE type);
  static const char* AnnotationTypeName(E_ANNOTATION_TYPE type);
  static const char* GeometryKindName(E_GEOMETRY_DATA_TYPE kind);
  static const char* FieldTypeName(E_FIELD_OFST_TYPE type);

  static std::string Utf8(const std::string& local);
  // A double in the shortest text that reads back the same.
  static std::string Number(double value);
  // Seconds with two decimals.
  static std::string Seconds(double seconds);

  static Json::Value FolderJson(const CFolderOption& option);
  static Json::Value LayerJson(const CLayerOption& option);
  static Json::Value FeatureJson(const CFeatureOption& option);
  static Json::Value ExtentJson(const EXTENT& extent);
  // Fields in order: key, type, class and (with values) the value as JSON.
  static Json::Value FieldsJson(const CZuFieldSetObject& fields, bool withValues);
  // The style set as the module's style JSON object; null for an empty set.
  static Json::Value StyleJson(const CFeatureStyleSet& styles);
  // A field value as JSON: booleans, numbers and strings as themselves.
  static Json::Value ValueJson(const QVariant& value);
};

#endif  // ANNOTATIONLAYER_CLI_NODE_FORMATTER_H
