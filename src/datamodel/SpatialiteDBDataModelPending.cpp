// Operations of CSpatialiteDBDataModel that are not built yet. Each returns its failure value so
// that hosts can link against the whole interface; the files of the tree, insertion, traversal,
// options, styles, geometry and fields take them over one by one.
#include "SpatialiteDBDataModel.h"

#include "EnclosureOption.h"
#include "FeatureOption.h"
#include "FolderOption.h"
#include "LayerOption.h"

using E_HANDLE_TYPE = IAnnotationDBObjectVisitor::E_HANDLE_TYPE;

std::string CSpatialiteDBDataModel::GetTopRootUUID() { return std::string(); }

E_HANDLE_TYPE CSpatialiteDBDataModel::Travel(IAnnotationDBObjectVisitor*) {
  return IAnnotationDBObjectVisitor::HANDLE_TYPE_STOP;
}
E_HANDLE_TYPE CSpatialiteDBDataModel::TravelFolder(IAnnotationDBObjectVisitor*,
                                                   const std::string&) {
  return IAnnotationDBObjectVisitor::HANDLE_TYPE_STOP;
}
bool CSpatialiteDBDataModel::TravelLayer(IAnnotationDBObjectVisitor*, const std::string&, int,
                                         int) {
  return false;
}
E_HANDLE_TYPE CSpatialiteDBDataModel::TravelLayerChildren(IAnnotationDBObjectVisitor*,
                                                          const std::string&) {
  return IAnnotationDBObjectVisitor::HANDLE_TYPE_STOP;
}
bool CSpatialiteDBDataModel::TravelViaExtent(IAnnotationDBObjectVisitor*, const EXTENT&, int) {
  return false;
}
bool CSpatialiteDBDataModel::TravelViaExtent(IAnnotationDBObjectVisitor*, const CGeometryData&,
                                             int) {
  return false;
}
bool CSpatialiteDBDataModel::TravelViaSQL(IAnnotationDBObjectVisitor*, E_NODE_KIND,
                                          const std::string&) {
  return false;
}

bool CSpatialiteDBDataModel::IsFolderUUID(const std::string&) { return false; }
bool CSpatialiteDBDataModel::IsLayerUUID(const std::string&) { return false; }
bool CSpatialiteDBDataModel::IsFeatureUUID(const std::string&) { return false; }
E_FOLDER_TYPE CSpatialiteDBDataModel::GetFolderType(const std::string&) {
  return FOLDER_TYPE_UNKNOWN;
}
E_LAYER_TYPE CSpatialiteDBDataModel::GetLayerType(const std::string&) { return LAYER_TYPE_UNKNOWN; }
E_ANNOTATION_TYPE CSpatialiteDBDataModel::GetFeatureType(const std::string&) {
  return ANNOTATION_TYPE_UNKNOWN;
}
bool CSpatialiteDBDataModel::IsLayerExistFeature(const std::string&) { return false; }
bool CSpatialiteDBDataModel::IsLayerExistLayer(const std::string&) { return false; }
int CSpatialiteDBDataModel::GetNodeDepth(const std::string&) { return -1; }
int CSpatialiteDBDataModel::CountChildren(const std::string&, E_NODE_KIND) { return -1; }
int CSpatialiteDBDataModel::CountExtentFeature(const EXTENT&) { return -1; }
std::string CSpatialiteDBDataModel::GetLastFolderChildUUID(const std::string&) {
  return std::string();
}
std::string CSpatialiteDBDataModel::GetLastLayerChildUUID(const std::string&) {
  return std::string();
}
std::string CSpatialiteDBDataModel::GetLastChildUUID(const std::string&, bool& isLayer) {
  isLayer = false;
  return std::string();
}
bool CSpatialiteDBDataModel::IsExistNode(const std::string&) { return false; }
bool CSpatialiteDBDataModel::IsExistNode(const std::string&, E_NODE_KIND) { return false; }
bool CSpatialiteDBDataModel::QueryAncestorUUIDs(const std::string&, std::list<std::string>&) {
  return false;
}
CNodeAttribute CSpatialiteDBDataModel::QueryNodeAttribute(const std::string&) {
  return CNodeAttribute();
}
int CSpatialiteDBDataModel::QueryOrderNum(E_NODE_KIND, const std::string&) { return -1; }
bool CSpatialiteDBDataModel::IsNodeVisible(const std::string&) { return false; }
std::string CSpatialiteDBDataModel::QueryChildByOrder(const std::string&, int, bool& isLayer) {
  isLayer = false;
  return std::string();
}
E_NODE_KIND CSpatialiteDBDataModel::QueryNodeKind(const std::string&) { return NODE_KIND_NONE; }

CFolderOption CSpatialiteDBDataModel::QueryFolderOption(const std::string&) {
  return CFolderOption();
}
CLayerOption CSpatialiteDBDataModel::QueryLayerOption(const std::string&) { return CLayerOption(); }
bool CSpatialiteDBDataModel::QueryLayerHeaderList(const std::string&, CZuFieldSetObject&) {
  return false;
}
CFeatureOption CSpatialiteDBDataModel::QueryFeatureOption(const std::string&) {
  return CFeatureOption();
}
bool CSpatialiteDBDataModel::QueryGeometryData(const std::string&, IAnnotationFeature*) {
  return false;
}
EXTENT CSpatialiteDBDataModel::QueryBoundingBox(const std::string&) { return EXTENT(); }
bool CSpatialiteDBDataModel::QueryStyle(CFeatureStyleSet*, const std::string&, bool) {
  return false;
}
bool CSpatialiteDBDataModel::QueryField(const std::string&, CZuFieldSetObject&) { return false; }
bool CSpatialiteDBDataModel::QueryUserData(const std::string&, CZuFieldSetObject&) { return false; }
bool CSpatialiteDBDataModel::QueryEnclosure(const std::string&, std::list<CEnclosureOption>&) {
  return false;
}
std::vector<unsigned char> CSpatialiteDBDataModel::QueryEnclosureData(int) {
  return std::vector<unsigned char>();
}
CFeatureOption CSpatialiteDBDataModel::QueryFeatureBase(const std::string&) {
  return CFeatureOption();
}

bool CSpatialiteDBDataModel::ModifyFolderOption(CFolderOption&) { return false; }
bool CSpatialiteDBDataModel::ModifyLayerOption(CLayerOption&) { return false; }
bool CSpatialiteDBDataModel::ModifyFeatureOption(CFeatureOption&) { return false; }
bool CSpatialiteDBDataModel::ModifyLayerHeaderList(const std::string&, CZuFieldSetObject&) {
  return false;
}
bool CSpatialiteDBDataModel::ModifyGeometryData(const std::string&, IAnnotationFeature*) {
  return false;
}
bool CSpatialiteDBDataModel::ModifyOrInsertStyle(const std::string&, const CFeatureStyleSet*, int) {
  return false;
}
bool CSpatialiteDBDataModel::ModifyOrInsertField(const std::string&, CZuFieldSetObject&) {
  return false;
}
bool CSpatialiteDBDataModel::ModifyOrInsertUserData(const std::string&, CZuFieldSetObject&) {
  return false;
}
bool CSpatialiteDBDataModel::ModifyOrInsertEnclosure(CEnclosureOption&) { return false; }
bool CSpatialiteDBDataModel::ModifyEnclosureData(int, const unsigned char*, int) { return false; }
bool CSpatialiteDBDataModel::DirtyLayerBoundingBox(const std::string&) { return false; }

bool CSpatialiteDBDataModel::InsertFolder(CFolderOption&) { return false; }
bool CSpatialiteDBDataModel::InsertLayer(CLayerOption&) { return false; }
bool CSpatialiteDBDataModel::InsertFeature(CFeatureOption&, IAnnotationFeature*) { return false; }
bool CSpatialiteDBDataModel::DeleteFolder(const std::string&) { return false; }
bool CSpatialiteDBDataModel::DeleteLayer(const std::string&) { return false; }
bool CSpatialiteDBDataModel::DeleteFeature(const std::string&) { return false; }
bool CSpatialiteDBDataModel::DeleteEnclosure(int) { return false; }
bool CSpatialiteDBDataModel::RemoveField(const std::string&, const std::string&) { return false; }
bool CSpatialiteDBDataModel::RemoveUserData(const std::string&, const std::string&) {
  return false;
}
