// The implementation behind CNodeOrderRebuilder: the folder, folder-layer and layer walks and the
// three order-row updates. Internal to the module.
//
// Threading contract: as CNodeOrderRebuilder.
#ifndef ANNOTATIONLAYER_NODE_ORDER_REBUILDER_IMPL_H
#define ANNOTATIONLAYER_NODE_ORDER_REBUILDER_IMPL_H

#include <string>
#include <unordered_set>

#include "NodeOrderRebuilder.h"
#include "SqlStatement.h"
#include "Stopwatch.h"

struct sqlite3;
class CSpatialiteDBDataModel;

class CNodeOrderRebuilderImpl {
 public:
  explicit CNodeOrderRebuilderImpl(IAnnotationDBDataModel* model);
  CNodeOrderRebuilderImpl(const CNodeOrderRebuilderImpl&) = delete;
  CNodeOrderRebuilderImpl& operator=(const CNodeOrderRebuilderImpl&) = delete;

  bool RebuildNodeOrderNum(const std::string& uuid, bool recursive,
                           CNodeOrderRebuilder::IRebuildProgress* progress);
  bool IsRebuilding() const { return rebuilding_; }

 private:
  // Whether a child list of the node holds a row numbered -1.
  bool FolderHasUnassignedChild(const std::string& uuid);
  bool LayerHasUnassignedChild(const std::string& uuid);
  // Runs the walks below a folder or a layer, renumbering where a child list needs it.
  void RebuildFolder(const std::string& uuid, bool renumber, bool recursive);
  void RebuildLayer(const std::string& uuid, bool renumber, bool recursive);
  void WalkFolderChildren(const std::string& uuid, bool renumber, bool recursive);
  void WalkFolderLayers(const std::string& uuid, bool renumber, bool recursive);
  void WalkLayerChildren(const std::string& uuid, bool renumber, bool recursive);
  void WriteFolderRow(const std::string& uuid, const std::string& left, const std::string& right,
                      int order);
  void WriteCompositeRow(bool isLayer, const std::string& uuid, const std::string& left,
                         bool leftIsLayer, const std::string& right, bool rightIsLayer, int order);
  void VisitNode(const std::string& uuid);
  std::string FirstChild(const std::string& sql, const char* tag);

  CStopwatch stopwatch_;
  CSpatialiteDBDataModel* model_;
  sqlite3* db_ = nullptr;
  // The parent columns of the -1 checks: the generated aliases where the file has them, else the
  // stored columns they copy.
  std::string folderParentColumn_ = "folder_uuid";
  std::string layerParentColumn_ = "layer_uuid";
  bool rebuilding_ = false;
  CNodeOrderRebuilder::IRebuildProgress* progress_ = nullptr;
  int visited_ = 0;
  // The nodes whose children are being walked: a corrupted tree that names a node as its own
  // descendant must not recurse for ever.
  std::unordered_set<std::string> active_;
  // Prepared on first use within a rebuild, finalized at its end.
  CSqlStatement folderUpdate_;
  CSqlStatement layerUpdate_;
  CSqlStatement featureUpdate_;
};

#endif  // ANNOTATIONLAYER_NODE_ORDER_REBUILDER_IMPL_H
