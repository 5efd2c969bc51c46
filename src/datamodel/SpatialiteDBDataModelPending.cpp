// Operations of CSpatialiteDBDataModel that are not built yet: attribute fields, user data and the
// insertion of features given with their data. Each returns its failure value so that hosts can
// link against the whole interface.
#include "SpatialiteDBDataModel.h"

#include "EnclosureOption.h"
#include "FeatureOption.h"
#include "ZuLog.h"

bool CSpatialiteDBDataModel::InsertFeatureWithData(CFeatureOption& option,
                                                   std::vector<int64_t>&, IAnnotationFeature*) {
  ZuLogError(-1) << "[InsertFeature] WithData:" << "features with data are not supported yet";
  option.SetResult(-1);
  return false;
}
