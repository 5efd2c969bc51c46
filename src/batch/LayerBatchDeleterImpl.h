// The implementation behind CLayerBatchDeleter: the recursive deletions and the set-based
// statements. Internal to the module.
//
// Threading contract: as CLayerBatchDeleter.
#ifndef ANNOTATIONLAYER_LAYER_BATCH_DELETER_IMPL_H
#define ANNOTATIONLAYER_LAYER_BATCH_DELETER_IMPL_H

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

#include "CacheSizeScope.h"
#include "LayerBatchDeleter.h"
#include "Stopwatch.h"

struct sqlite3;
class CSpatialiteDBDataModel;
class CSpatialiteHandler;

class CLayerBatchDeleterImpl {
 public:
  explicit CLayerBatchDeleterImpl(IAnnotationDBDataModel* model);
  CLayerBatchDeleterImpl(const CLayerBatchDeleterImpl&) = delete;
  CLayerBatchDeleterImpl& operator=(const CLayerBatchDeleterImpl&) = delete;

  void BeginDelete(bool quietTopLevel, CLayerBatchDeleter::IDeleteProgress* progress);
  bool IsDeleting() const { return deleting_; }
  bool BatchDeleteLayer(const std::string& uuid);
  bool BatchDeleteFolder(const std::string& uuid);
  void EndDelete();

 private:
  // The rows of up to 6000 features and their dependents.
  struct FeatureBatch {
    std::string uuids;  // "'a','b'", quoted and comma-joined
    std::vector<int64_t> status, property, userdata, enclosure;
    int count = 0;
  };

  bool DeleteLayer(const std::string& uuid, bool topLevel);
  bool DeleteFolder(const std::string& uuid, bool topLevel);
  bool DeleteFeatureBatch(const FeatureBatch& batch);
  bool DeleteLayerRows(const std::string& uuid);
  bool DeleteFolderRows(const std::string& uuid);
  // "DELETE FROM 'main'.'<table>' WHERE <column> in (<list>)"; an empty list deletes nothing and
  // counts as success.
  bool DeleteWhereIn(const char* table, const char* column, const std::string& list,
                     const char* tag);
  // The uuids of the first column of `sql`.
  std::vector<std::string> QueryUuids(const std::string& sql, const char* tag, bool* ok);
  std::string QueryText(const std::string& sql, const char* tag, bool toLocal);
  void NotifyLayerDeleted(const std::string& uuid, const std::string& parent);
  void NotifyFolderDeleted(const std::string& uuid, const std::string& parent);

  CStopwatch stopwatch_;
  // A larger page cache from BeginDelete to EndDelete.
  std::unique_ptr<CCacheSizeScope> cache_;
  CSpatialiteDBDataModel* model_;
  sqlite3* db_ = nullptr;
  CSpatialiteHandler* handler_ = nullptr;
  bool quietTopLevel_ = false;
  bool deleting_ = false;
  CLayerBatchDeleter::IDeleteProgress* progress_ = nullptr;
  // The nodes on the current recursion path: a corrupted tree that names a node as its own
  // descendant must not recurse for ever.
  std::unordered_set<std::string> active_;
};

#endif  // ANNOTATIONLAYER_LAYER_BATCH_DELETER_IMPL_H
