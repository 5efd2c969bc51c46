// CSpatialiteDBDataModel: the SpatiaLite implementation of IAnnotationDBDataModel over one
// CSpatialiteHandler. Made by the host's object creator under the class name
// "CSpatialiteDBDataModel" (see CAnnotationLayerModule).
//
// The implementation is split by concern: lifecycle, identity, observers and transactions here;
// the tree, insertion, traversal, options, styles, geometry and fields in their own files.
//
// Threading contract: no lock of its own; calls on one model come from one thread at a time.
#ifndef ANNOTATIONLAYER_SPATIALITE_DB_DATA_MODEL_H
#define ANNOTATIONLAYER_SPATIALITE_DB_DATA_MODEL_H

#include <memory>
#include <string>

#include "IAnnotationDBDataModel.h"

struct sqlite3;
class CSpatialiteHandler;
class CAnnotationDBObjectNotifier;

class CSpatialiteDBDataModel : public IAnnotationDBDataModel {
 public:
  CSpatialiteDBDataModel();
  ~CSpatialiteDBDataModel() override;
  CSpatialiteDBDataModel(const CSpatialiteDBDataModel&) = delete;
  CSpatialiteDBDataModel& operator=(const CSpatialiteDBDataModel&) = delete;

  int GetObjectID() override;
  bool Initialize(const std::string& name) override;
  bool Uninitialize() override;
  std::string GetObjectName() override;
  bool Install(const std::string& path) override;
  bool IsInstalled() override;
  bool Uninstall() override;
  std::string GetFilePath() override;
  CNodeCacheCalculator* GetNodeCacheCalculator() override;
  bool AddObserver(IAnnotationDBObjectObserver* observer) override;
  bool RemoveObserver(IAnnotationDBObjectObserver* observer) override;
  IAnnotationDBObjectNotifier* GetNotifier() override;
  bool IsEmpty() override;
  std::string GetTopRootUUID() override;

  E_HANDLE_TYPE Travel(IAnnotationDBObjectVisitor* visitor) override;
  E_HANDLE_TYPE TravelFolder(IAnnotationDBObjectVisitor* visitor,
                             const std::string& folderUuid) override;
  bool TravelLayer(IAnnotationDBObjectVisitor* visitor, const std::string& layerUuid, int offset,
                   int count) override;
  E_HANDLE_TYPE TravelLayerChildren(IAnnotationDBObjectVisitor* visitor,
                                    const std::string& layerUuid) override;
  bool TravelViaExtent(IAnnotationDBObjectVisitor* visitor, const EXTENT& extent,
                       int limit) override;
  bool TravelViaExtent(IAnnotationDBObjectVisitor* visitor, const CGeometryData& ring,
                       int limit) override;
  bool TravelViaSQL(IAnnotationDBObjectVisitor* visitor, E_NODE_KIND kind,
                    const std::string& condition) override;

  bool BeginTransaction() override;
  bool CommitTransaction() override;
  bool RollBackTransaction() override;
  bool IsInTransaction() override;

  bool IsFolderUUID(const std::string& uuid) override;
  bool IsLayerUUID(const std::string& uuid) override;
  bool IsFeatureUUID(const std::string& uuid) override;
  E_FOLDER_TYPE GetFolderType(const std::string& uuid) override;
  E_LAYER_TYPE GetLayerType(const std::string& uuid) override;
  E_ANNOTATION_TYPE GetFeatureType(const std::string& uuid) override;
  bool IsLayerExistFeature(const std::string& layerUuid) override;
  bool IsLayerExistLayer(const std::string& layerUuid) override;
  int GetNodeDepth(const std::string& uuid) override;
  int CountChildren(const std::string& parentUuid, E_NODE_KIND parentKind) override;
  int CountExtentFeature(const EXTENT& extent) override;
  std::string GetLastFolderChildUUID(const std::string& parentFolderUuid) override;
  std::string GetLastLayerChildUUID(const std::string& parentFolderUuid) override;
  std::string GetLastChildUUID(const std::string& parentLayerUuid, bool& isLayer) override;
  bool IsExistNode(const std::string& uuid) override;
  bool IsExistNode(const std::string& uuid, E_NODE_KIND kind) override;
  bool QueryAncestorUUIDs(const std::string& uuid, std::list<std::string>& ancestors) override;
  CNodeAttribute QueryNodeAttribute(const std::string& uuid) override;
  int QueryOrderNum(E_NODE_KIND kind, const std::string& uuid) override;
  bool IsNodeVisible(const std::string& uuid) override;
  std::string QueryChildByOrder(const std::string& parentUuid, int index, bool& isLayer) override;
  E_NODE_KIND QueryNodeKind(const std::string& uuid) override;

  CFolderOption QueryFolderOption(const std::string& uuid) override;
  CLayerOption QueryLayerOption(const std::string& uuid) override;
  bool QueryLayerHeaderList(const std::string& layerUuid, CZuFieldSetObject& headers) override;
  CFeatureOption QueryFeatureOption(const std::string& uuid) override;
  bool QueryGeometryData(const std::string& uuid, IAnnotationFeature* feature) override;
  EXTENT QueryBoundingBox(const std::string& uuid) override;
  bool QueryStyle(CFeatureStyleSet* styles, const std::string& uuid, bool isLayer) override;
  bool QueryField(const std::string& featureUuid, CZuFieldSetObject& fields) override;
  bool QueryUserData(const std::string& uuid, CZuFieldSetObject& data) override;
  bool QueryEnclosure(const std::string& featureUuid,
                      std::list<CEnclosureOption>& enclosures) override;
  std::vector<unsigned char> QueryEnclosureData(int id) override;
  CFeatureOption QueryFeatureBase(const std::string& uuid) override;

  bool ModifyFolderOption(CFolderOption& option) override;
  bool ModifyLayerOption(CLayerOption& option) override;
  bool ModifyFeatureOption(CFeatureOption& option) override;
  bool ModifyLayerHeaderList(const std::string& layerUuid, CZuFieldSetObject& headers) override;
  bool ModifyGeometryData(const std::string& uuid, IAnnotationFeature* feature) override;
  bool ModifyOrInsertStyle(const std::string& uuid, const CFeatureStyleSet* styles,
                           int format) override;
  bool ModifyOrInsertField(const std::string& featureUuid, CZuFieldSetObject& fields) override;
  bool ModifyOrInsertUserData(const std::string& uuid, CZuFieldSetObject& data) override;
  bool ModifyOrInsertEnclosure(CEnclosureOption& option) override;
  bool ModifyEnclosureData(int id, const unsigned char* bytes, int count) override;
  bool DirtyLayerBoundingBox(const std::string& layerUuid) override;

  bool InsertFolder(CFolderOption& option) override;
  bool InsertLayer(CLayerOption& option) override;
  bool InsertFeature(CFeatureOption& option, IAnnotationFeature* feature) override;
  bool DeleteFolder(const std::string& uuid) override;
  bool DeleteLayer(const std::string& uuid) override;
  bool DeleteFeature(const std::string& uuid) override;
  bool DeleteEnclosure(int id) override;
  bool RemoveField(const std::string& featureUuid, const std::string& key) override;
  bool RemoveUserData(const std::string& uuid, const std::string& key) override;

  // The transaction nesting depth: 0 outside a transaction, -1 after an unmatched commit.
  int GetTransactionDepth() const { return depth_; }
  // The open connection and its handler, for the module's batch tools; null while not installed.
  // Owned by the model and valid until Uninstall.
  sqlite3* GetConnection() const { return db_; }
  CSpatialiteHandler* GetHandler() const { return handler_.get(); }

 private:
  int objectId_;
  std::string name_;
  std::string filePath_;
  // Made at the first successful Install once the node cache calculator exists; not yet built.
  CNodeCacheCalculator* calculator_;
  std::unique_ptr<CAnnotationDBObjectNotifier> notifier_;
  std::unique_ptr<CSpatialiteHandler> handler_;  // exists only while open
  sqlite3* db_;                                  // the handler's connection, cached
  int depth_;
};

#endif  // ANNOTATIONLAYER_SPATIALITE_DB_DATA_MODEL_H
