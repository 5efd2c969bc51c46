// The interface through which the host and the module's own tools reach an annotation database: a
// tree of folders, layers and features with their sibling order, status, styles, geometry,
// attribute fields, user data and enclosures.
//
// Lifecycle: Initialize(name) -> Install(path) <-> Uninstall() -> Uninitialize() -> delete.
// Every data operation returns its failure value (false, -1, "", an empty or default record) at
// once while no database is installed, and logs one line for each failure it meets.
//
// Ownership: records and field sets passed by reference stay the caller's; pointers handed out
// (calculator, notifier) stay the model's.
//
// Threading contract: the model has no lock of its own. Calls on one model are made from one thread
// at a time.
#ifndef ANNOTATIONLAYER_IANNOTATION_DB_DATA_MODEL_H
#define ANNOTATIONLAYER_IANNOTATION_DB_DATA_MODEL_H

#include <list>
#include <string>
#include <vector>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "IAnnotationDBObjectVisitor.h"
#include "IObject.h"
#include "NodeAttribute.h"

class CNodeCacheCalculator;
class IAnnotationDBObjectObserver;
class IAnnotationDBObjectNotifier;
class CFolderOption;
class CLayerOption;
class CFeatureOption;
class CEnclosureOption;
class CZuFieldSetObject;
class CFeatureStyleSet;
class CGeometryData;
class IAnnotationFeature;

class ANNOTATIONLAYER_EXPORT IAnnotationDBDataModel : public IObject {
 public:
  using E_HANDLE_TYPE = IAnnotationDBObjectVisitor::E_HANDLE_TYPE;

  ~IAnnotationDBDataModel() override = default;

  // Identity and lifecycle.
  virtual int GetObjectID() = 0;
  virtual bool Initialize(const std::string& name) = 0;
  virtual bool Uninitialize() = 0;
  virtual std::string GetObjectName() = 0;
  // Opens the database file (local code page path) read-write. A model is installed once:
  // Uninstall before installing again.
  virtual bool Install(const std::string& path) = 0;
  virtual bool IsInstalled() = 0;
  virtual bool Uninstall() = 0;
  virtual std::string GetFilePath() = 0;
  virtual CNodeCacheCalculator* GetNodeCacheCalculator() = 0;
  virtual bool AddObserver(IAnnotationDBObjectObserver* observer) = 0;
  virtual bool RemoveObserver(IAnnotationDBObjectObserver* observer) = 0;
  virtual IAnnotationDBObjectNotifier* GetNotifier() = 0;
  // True when the database holds at most one folder (its top root).
  virtual bool IsEmpty() = 0;
  virtual std::string GetTopRootUUID() = 0;

  // Walks in sibling order through a visitor.
  virtual E_HANDLE_TYPE Travel(IAnnotationDBObjectVisitor* visitor) = 0;
  virtual E_HANDLE_TYPE TravelFolder(IAnnotationDBObjectVisitor* visitor,
                                     const std::string& folderUuid) = 0;
  // The features of a layer paged by row id; the last feature of a page is visited again as the
  // first of the next when callers step the offset by the count.
  virtual bool TravelLayer(IAnnotationDBObjectVisitor* visitor, const std::string& layerUuid,
                           int offset, int count) = 0;
  virtual E_HANDLE_TYPE TravelLayerChildren(IAnnotationDBObjectVisitor* visitor,
                                            const std::string& layerUuid) = 0;
  // Features whose geometry meets a rectangle; `limit` < 0 means no limit.
  virtual bool TravelViaExtent(IAnnotationDBObjectVisitor* visitor, const EXTENT& extent,
                               int limit) = 0;
  // Features whose geometry meets a polygon given by its ring; `limit` < 0 means no limit.
  virtual bool TravelViaExtent(IAnnotationDBObjectVisitor* visitor, const CGeometryData& ring,
                               int limit) = 0;
  // The nodes of one table that satisfy an SQL condition, in row order.
  virtual bool TravelViaSQL(IAnnotationDBObjectVisitor* visitor, E_NODE_KIND kind,
                            const std::string& condition) = 0;

  // Nested transactions: only the outermost Begin/Commit reach SQLite.
  virtual bool BeginTransaction() = 0;
  virtual bool CommitTransaction() = 0;
  virtual bool RollBackTransaction() = 0;
  virtual bool IsInTransaction() = 0;

  // Kinds and counts.
  virtual bool IsFolderUUID(const std::string& uuid) = 0;
  virtual bool IsLayerUUID(const std::string& uuid) = 0;
  virtual bool IsFeatureUUID(const std::string& uuid) = 0;
  virtual E_FOLDER_TYPE GetFolderType(const std::string& uuid) = 0;
  virtual E_LAYER_TYPE GetLayerType(const std::string& uuid) = 0;
  virtual E_ANNOTATION_TYPE GetFeatureType(const std::string& uuid) = 0;
  virtual bool IsLayerExistFeature(const std::string& layerUuid) = 0;
  virtual bool IsLayerExistLayer(const std::string& layerUuid) = 0;
  // The number of ancestors of the node (the length of QueryAncestorUUIDs); -1 when unknown.
  virtual int GetNodeDepth(const std::string& uuid) = 0;
  // The number of direct children of a folder (folders and layers) or of a layer (layers and
  // features); -1 on failure.
  virtual int CountChildren(const std::string& parentUuid, E_NODE_KIND parentKind) = 0;
  virtual int CountExtentFeature(const EXTENT& extent) = 0;
  virtual std::string GetLastFolderChildUUID(const std::string& parentFolderUuid) = 0;
  virtual std::string GetLastLayerChildUUID(const std::string& parentFolderUuid) = 0;
  virtual std::string GetLastChildUUID(const std::string& parentLayerUuid, bool& isLayer) = 0;
  // Whether a folder, layer or feature with this uuid exists.
  virtual bool IsExistNode(const std::string& uuid) = 0;
  // Whether a node of the given kind exists (the feature test of the spatial engine).
  virtual bool IsExistNode(const std::string& uuid, E_NODE_KIND kind) = 0;
  // The uuids of a node's ancestors, the top folder first and the direct parent last.
  virtual bool QueryAncestorUUIDs(const std::string& uuid, std::list<std::string>& ancestors) = 0;
  virtual CNodeAttribute QueryNodeAttribute(const std::string& uuid) = 0;
  virtual int QueryOrderNum(E_NODE_KIND kind, const std::string& uuid) = 0;
  virtual bool IsNodeVisible(const std::string& uuid) = 0;
  // The child at zero-based position `index` in the sibling order of a folder or layer; "" when
  // there is none. `isLayer` tells whether it is a layer (or, under a folder, a folder: false).
  virtual std::string QueryChildByOrder(const std::string& parentUuid, int index,
                                        bool& isLayer) = 0;
  virtual E_NODE_KIND QueryNodeKind(const std::string& uuid) = 0;

  // Reading nodes.
  virtual CFolderOption QueryFolderOption(const std::string& uuid) = 0;
  virtual CLayerOption QueryLayerOption(const std::string& uuid) = 0;
  // The layer's property header parsed into a field set (keys, classes and types, no values).
  virtual bool QueryLayerHeaderList(const std::string& layerUuid, CZuFieldSetObject& headers) = 0;
  virtual CFeatureOption QueryFeatureOption(const std::string& uuid) = 0;
  virtual bool QueryGeometryData(const std::string& uuid, IAnnotationFeature* feature) = 0;
  virtual EXTENT QueryBoundingBox(const std::string& uuid) = 0;
  virtual bool QueryStyle(CFeatureStyleSet* styles, const std::string& uuid, bool isLayer) = 0;
  virtual bool QueryField(const std::string& featureUuid, CZuFieldSetObject& fields) = 0;
  virtual bool QueryUserData(const std::string& uuid, CZuFieldSetObject& data) = 0;
  virtual bool QueryEnclosure(const std::string& featureUuid,
                              std::list<CEnclosureOption>& enclosures) = 0;
  virtual std::vector<unsigned char> QueryEnclosureData(int id) = 0;
  // Type and name of a feature only.
  virtual CFeatureOption QueryFeatureBase(const std::string& uuid) = 0;

  // Writing nodes: only the groups marked in the record's change mask are written.
  virtual bool ModifyFolderOption(CFolderOption& option) = 0;
  virtual bool ModifyLayerOption(CLayerOption& option) = 0;
  virtual bool ModifyFeatureOption(CFeatureOption& option) = 0;
  virtual bool ModifyLayerHeaderList(const std::string& layerUuid, CZuFieldSetObject& headers) = 0;
  virtual bool ModifyGeometryData(const std::string& uuid, IAnnotationFeature* feature) = 0;
  virtual bool ModifyOrInsertStyle(const std::string& uuid, const CFeatureStyleSet* styles,
                                   int format) = 0;
  virtual bool ModifyOrInsertField(const std::string& featureUuid, CZuFieldSetObject& fields) = 0;
  virtual bool ModifyOrInsertUserData(const std::string& uuid, CZuFieldSetObject& data) = 0;
  virtual bool ModifyOrInsertEnclosure(CEnclosureOption& option) = 0;
  // `bytes` must stay valid until the call returns.
  virtual bool ModifyEnclosureData(int id, const unsigned char* bytes, int count) = 0;
  virtual bool DirtyLayerBoundingBox(const std::string& layerUuid) = 0;

  // Inserting and deleting nodes.
  virtual bool InsertFolder(CFolderOption& option) = 0;
  virtual bool InsertLayer(CLayerOption& option) = 0;
  virtual bool InsertFeature(CFeatureOption& option, IAnnotationFeature* feature) = 0;
  virtual bool DeleteFolder(const std::string& uuid) = 0;
  virtual bool DeleteLayer(const std::string& uuid) = 0;
  virtual bool DeleteFeature(const std::string& uuid) = 0;
  virtual bool DeleteEnclosure(int id) = 0;
  virtual bool RemoveField(const std::string& featureUuid, const std::string& key) = 0;
  virtual bool RemoveUserData(const std::string& uuid, const std::string& key) = 0;

  // Added last, so that the operations above keep their places.
  // What QueryFeatureLink reads of one feature.
  struct FeatureLink {
    std::string parentUuid;  // the puuid of its row
    std::string name;        // in the local code page, as QueryFeatureBase gives it
    int type = 0;  // ANNOTATION_TYPE_UNKNOWN when the row has none, as GetFeatureType gives it
    // A feature without a status row of its own (in a GIS layer) counts as checked, as in
    // IsNodeVisible.
    bool checked = false;
    int orderNum = -1;  // -1 when it has none, or when it was not asked for
  };
  // A feature's own row, status and (with `withOrder`) order number in one go, for callers that
  // ask for every feature of a large set: the node cache calculator for each feature of a spatial
  // engine pass, the tool's tree for each feature it lists. False when `uuid` is no feature. This
  // default knows none, and callers then ask the operations above.
  virtual bool QueryFeatureLink(const std::string& uuid, FeatureLink& link, bool withOrder) {
    (void)uuid, (void)link, (void)withOrder;
    return false;
  }

  // Receives the features of TravelFeatureLinksViaExtent.
  class IFeatureLinkVisitor {
   public:
    virtual ~IFeatureLinkVisitor() = default;
    // One feature with its link (name left empty), or a null link when the model could not read
    // it in one go; answers as IAnnotationDBObjectVisitor::ApplyFeature does, 2 ending the walk.
    virtual IAnnotationDBObjectVisitor::E_HANDLE_TYPE ApplyFeatureLink(const std::string& uuid,
                                                                       const FeatureLink* link) = 0;
    // True when the visitor wants the walk to end; asked between features.
    virtual bool IsAborted() { return false; }
  };
  // The features the polygon form of TravelViaExtent visits, in its order, each handed over with
  // its link (order number included), for callers that need the link of every feature of a view.
  // This default walks TravelViaExtent and asks QueryFeatureLink for each feature. False when the
  // walk could not run. (Defined here, as every operation of the interface is, so that a host
  // that only includes this header needs nothing of the module's library.)
  virtual bool TravelFeatureLinksViaExtent(IFeatureLinkVisitor* visitor, const CGeometryData& ring,
                                           int limit) {
    class CLinkReader : public IAnnotationDBObjectVisitor {
     public:
      CLinkReader(IAnnotationDBDataModel* model, IFeatureLinkVisitor* visitor)
          : model_(model), visitor_(visitor) {}
      E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                                 const std::string& uuid, const CFeatureOption&) override {
        FeatureLink link;
        const bool read = model_->QueryFeatureLink(uuid, link, true);
        return visitor_->ApplyFeatureLink(uuid, read ? &link : nullptr);
      }
      bool IsOnlyUUID() override { return true; }
      bool IsAborted() override { return visitor_->IsAborted(); }

     private:
      IAnnotationDBDataModel* model_;
      IFeatureLinkVisitor* visitor_;
    };
    if (visitor == nullptr) return false;
    CLinkReader reader(this, visitor);
    return TravelViaExtent(&reader, ring, limit);
  }
};

#endif  // ANNOTATIONLAYER_IANNOTATION_DB_DATA_MODEL_H
