// Styles and enclosures of CSpatialiteDBDataModel (not built yet: failure values).
#include "SpatialiteDBDataModel.h"

#include "EnclosureOption.h"

bool CSpatialiteDBDataModel::QueryStyle(CFeatureStyleSet*, const std::string&, bool) {
  return false;
}
bool CSpatialiteDBDataModel::QueryEnclosure(const std::string&, std::list<CEnclosureOption>&) {
  return false;
}
std::vector<unsigned char> CSpatialiteDBDataModel::QueryEnclosureData(int) {
  return std::vector<unsigned char>();
}
bool CSpatialiteDBDataModel::ModifyOrInsertStyle(const std::string&, const CFeatureStyleSet*, int) {
  return false;
}
bool CSpatialiteDBDataModel::ModifyOrInsertEnclosure(CEnclosureOption&) { return false; }
bool CSpatialiteDBDataModel::ModifyEnclosureData(int, const unsigned char*, int) { return false; }
bool CSpatialiteDBDataModel::DeleteEnclosure(int) { return false; }
