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

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "IAnnotationDBDataModel.h"

struct sqlite3;
class CSpatialiteHandler;
class CAnnotationDBObjectNotifier;
class CStatementCache;

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
  bool QueryFeatureLink(const std::string& uuid, FeatureLink& link, bool withOrder) override;
  bool TravelFeatureLinksViaExtent(IFeatureLinkVisitor* visitor, const CGeometryData& ring,
                                   int limit) override;

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
  // --- Sibling order (tree and order) ---
  bool QueryFolderOrder(const std::string& uuid, std::string& left, std::string& right,
                        int& orderNum);
  bool QueryCompositeOrder(const std::string& uuid, bool isLayer, std::string& leftShape,
                           std::string& leftLayer, std::string& rightShape,
                           std::string& rightLayer, int& orderNum);
  // Walks a list to its end through `sql` (one '?' for the current uuid); shared by the walks.
  std::string WalkFolderList(const std::string& start, const std::string& sql,
                             const std::string& tag);
  std::string WalkCompositeList(const std::string& start, bool& isLayer, const char* columns,
                                const std::string& tag);
  bool InsertFolderOrder(const std::string& uuid, const CFolderOption& option);
  bool InsertLayerOrder(const std::string& uuid, const CLayerOption& option);
  bool InsertFeatureOrder(const std::string& uuid, const CFeatureOption& option);
  bool InsertCompositeOrder(const char* table, const std::string& uuid, const std::string& left,
                            bool leftIsLayer, const std::string& right, bool rightIsLayer,
                            int orderNum, const std::string& tag);
  bool ModifyFolderOrder(const std::string& uuid, const CFolderOption& option);
  bool ModifyLayerOrder(const std::string& uuid, const CLayerOption& option);
  bool ModifyFeatureOrder(const std::string& uuid, const CFeatureOption& option);
  bool ModifyCompositeOrder(const char* table, const std::string& uuid, const std::string& left,
                            bool leftIsLayer, const std::string& right, bool rightIsLayer,
                            int orderNum, const std::string& tag);
  // Links the neighbours of a node to each other; the node's own order row is left alone.
  void UnlinkFolder(const std::string& uuid);
  void UnlinkComposite(const std::string& uuid, bool isLayer);

  // --- Insertion and deletion ---
  bool InsertFolderStatus(const CFolderOption& option, std::vector<int64_t>& ids);
  bool InsertLayerStatus(const CLayerOption& option, std::vector<int64_t>& ids);
  bool InsertFeatureStatus(const CFeatureOption& option, std::vector<int64_t>& ids);
  // The index_id text of a node; false when the statement fails or the node does not exist.
  bool QueryTableIndexes(const char* table, const std::string& uuid, std::string& indexText);
  // The node row of a feature given with its object: style, attribute fields and geometry.
  bool InsertFeatureWithData(CFeatureOption& option, std::vector<int64_t>& statusIds,
                             IAnnotationFeature* feature);

  // --- Styles and enclosures ---
  // Whether `uuid` may be spliced between single quotes into a statement; when it may not, logs
  // one warning under `tag` and refuses. Used by every operation that splices a uuid.
  static bool IsSafeUUID(const std::string& uuid, const std::string& tag);
  // Fills `styles` from the style row of a layer or feature; true when there is a row.
  bool QueryStyleInner(CFeatureStyleSet* styles, const std::string& uuid, bool isLayer);
  // The parent layer of a feature; "" when there is none.
  std::string QueryFeatureParent(const std::string& featureUuid);
  // The parent layer of a feature when that layer is a GIS layer (whose features share its
  // style); "" otherwise.
  std::string GetLayerUUIDForGisFeature(const std::string& featureUuid);
  bool IsExistStyle(const std::string& uuid, bool isLayer);
  bool ModifyStyleInner(const std::string& uuid, bool isLayer, const std::string& json,
                        int format);
  bool InsertStyleInner(const std::string& uuid, bool isLayer, const std::string& json,
                        int format);
  // The style row of a feature being inserted with its object. A set without styles has nothing
  // to write and succeeds; a failure logs the warning "[InsertStyle] Failed " and the uuid.
  bool InsertStyle(const std::string& featureUuid, const CFeatureStyleSet* styles, int format);

  // --- Geometry ---

  // --- Fields and user data ---
 public:
  struct FieldTable;

 private:
  const FieldTable* UserDataTable(const std::string& uuid);
  // Fills `fields` with the node's rows of `table`, all unchanged.
  bool ReadFieldRows(const FieldTable& table, const std::string& uuid, CZuFieldSetObject& fields);
  // Writes the changed and removed fields and keeps the node's index array in step.
  bool WriteFieldRows(const FieldTable& table, const std::string& uuid, CZuFieldSetObject& fields);
  bool WriteFieldRowsAtomically(const FieldTable& table, const std::string& uuid,
                                CZuFieldSetObject& fields);
  // " 'index_id'=? WHERE uuid = '...'" on a node table.
  bool UpdateIndexText(const char* nodeTable, const std::string& uuid,
                       const std::string& indexText, const std::string& tag);

  // --- Keeping the node cache calculator current ---
  void NotifyFolderChanged(const CFolderOption& option);
  void NotifyLayerChanged(const CLayerOption& option);

  // --- Traversal ---
  E_HANDLE_TYPE TravelFolderForFolderChildren(IAnnotationDBObjectVisitor* visitor,
                                              const std::string& uuid,
                                              std::list<std::string>& path);
  E_HANDLE_TYPE TravelFolderForLayerChildren(IAnnotationDBObjectVisitor* visitor,
                                             const std::string& uuid,
                                             std::list<std::string>& path);
  E_HANDLE_TYPE TravelLayerForChildren(IAnnotationDBObjectVisitor* visitor,
                                       const std::string& uuid, std::list<std::string>& path);
  // Visits a sibling list from `first` to its end.
  E_HANDLE_TYPE TravelFolderList(IAnnotationDBObjectVisitor* visitor, const std::string& first,
                                 std::list<std::string>& path, const std::string& tag);
  E_HANDLE_TYPE TravelCompositeList(IAnnotationDBObjectVisitor* visitor, const std::string& first,
                                    bool isLayer, std::list<std::string>& path,
                                    const std::string& tag);
  // Visits one folder and, on 0, its subtree; `path` holds the folder's ancestors.
  E_HANDLE_TYPE VisitFolder(IAnnotationDBObjectVisitor* visitor, const std::string& uuid,
                            std::list<std::string>& path);
  E_HANDLE_TYPE VisitLayer(IAnnotationDBObjectVisitor* visitor, const std::string& uuid,
                           std::list<std::string>& path);
  E_HANDLE_TYPE VisitFeature(IAnnotationDBObjectVisitor* visitor, const std::string& uuid,
                             const std::list<std::string>& path);
  // Runs a statement whose first column is a feature uuid and visits each row's feature.
  bool VisitFeatureRows(IAnnotationDBObjectVisitor* visitor, const std::string& sql,
                        const std::string& tag);
  // A feature's checked state from its index array text into `checked`; false when a statement
  // failed. `joined`, when given, is a status id and the value of its type-1 row (0 without one)
  // that a statement has read already; it is used when it is the array's only status id.
  bool ReadFeatureChecked(const std::string& indexText, const std::pair<int64_t, int64_t>* joined,
                          bool& checked);
  // The first column of the first row of `sql` as text; "" when there is none.
  std::string QueryFirstText(const std::string& sql, const std::string& tag);
  // The first column of the first row of `sql` as an integer; `fallback` when there is none.
  int64_t QueryFirstInt(const std::string& sql, const std::string& tag, int64_t fallback);

 public:
  // The uuids of a node's ancestors, the top folder first and the direct parent last. Used by
  // the node cache calculator.
  bool QueryParentUUIDList(std::list<std::string>& ancestors, const std::string& uuid);
  // The ends of a sibling list, found by walking from any member; for the batch tools. A mixed
  // list of a layer's children also says whether its end is a layer.
  std::string QueryLeftFirstFolder(const std::string& start);
  std::string QueryRightLastFolder(const std::string& start);
  std::string QueryLeftFirstComposite(const std::string& start, bool& isLayer);
  std::string QueryRightLastComposite(const std::string& start, bool& isLayer);

 private:
  // --- Options ---
  void FillFolderStatus(CFolderOption& option);
  void FillLayerStatus(CLayerOption& option);
  void FillFeatureStatus(CFeatureOption& option);
  // The status word of a folder from its type-1 status row; -1 when there is none.
  int QueryFolderAttribute(const std::vector<int64_t>& statusIds);
  bool QueryLayerAttribute_Exist(const std::string& uuid, CNodeAttribute& attribute,
                                 std::string& indexText);
  int QueryLayerAttribute_Status(const std::vector<int64_t>& statusIds);
  bool ModifyFolderBase(const CFolderOption& option);
  bool ModifyFolderStatus(const CFolderOption& option);
  bool ModifyLayerBase(const CLayerOption& option);
  bool ModifyLayerWkt(const CLayerOption& option);
  bool ModifyLayerStatus(const CLayerOption& option);
  bool ModifyFeatureBase(const CFeatureOption& option);
  bool ModifyFeatureStatus(const CFeatureOption& option);

  int objectId_;
  std::string name_;
  std::string filePath_;
  // Made at the first successful Install, deleted by Uninstall.
  std::unique_ptr<CNodeCacheCalculator> calculator_;
  std::unique_ptr<CAnnotationDBObjectNotifier> notifier_;
  std::unique_ptr<CSpatialiteHandler> handler_;  // exists only while open
  // Statements of the per-feature read paths, prepared once per thread on the open connection.
  std::unique_ptr<CStatementCache> statements_;
  sqlite3* db_;                                  // the handler's connection, cached
  int depth_;
};

#endif  // ANNOTATIONLAYER_SPATIALITE_DB_DATA_MODEL_H
