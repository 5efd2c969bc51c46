// Operations of CSpatialiteDBDataModel that are not built yet: styles, enclosures, geometry,
// attribute fields and user data. Each returns its failure value so that hosts can link against
// the whole interface.
#include "SpatialiteDBDataModel.h"

#include "EnclosureOption.h"
#include "FeatureOption.h"
#include "ZuLog.h"

bool CSpatialiteDBDataModel::QueryLayerHeaderList(const std::string&, CZuFieldSetObject&) {
  return false;
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
bool CSpatialiteDBDataModel::DeleteEnclosure(int) { return false; }
bool CSpatialiteDBDataModel::RemoveField(const std::string&, const std::string&) { return false; }
bool CSpatialiteDBDataModel::RemoveUserData(const std::string&, const std::string&) {
  return false;
}

bool CSpatialiteDBDataModel::InsertFeatureWithData(CFeatureOption& option,
                                                   std::vector<int64_t>&, IAnnotationFeature*) {
  ZuLogError(-1) << "[InsertFeature] WithData:" << "features with data are not supported yet";
  option.SetResult(-1);
  return false;
}
