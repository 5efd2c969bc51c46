// What a host component implements to hear of changes to a data model's tree. Registered with
// IAnnotationDBDataModel::AddObserver; notification k of the notifier calls operation k here.
//
// Every notification takes the data model, the node's uuid and one further text whose meaning
// depends on the emitter (the batch importer passes the parent's uuid). Returning true stops the
// notification from reaching observers registered after this one. Only the insert and delete
// notifications of folders, layers and features are forwarded by the module's notifier; the
// others exist for hosts that extend it.
//
// Threading contract: called on the thread that made the change, while the notifier's lock is
// held; an observer must not (un)register observers from inside a notification.
#ifndef ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_OBSERVER_H
#define ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_OBSERVER_H

#include <string>

#include "AnnotationLayerExport.h"

class IAnnotationDBDataModel;

class ANNOTATIONLAYER_EXPORT IAnnotationDBObjectObserver {
 public:
  virtual ~IAnnotationDBObjectObserver() = default;

  virtual bool OnFolderInserted(IAnnotationDBDataModel* model, const std::string& uuid,
                                const std::string& extra) { return false; }
  virtual bool OnLayerInserted(IAnnotationDBDataModel* model, const std::string& uuid,
                               const std::string& extra) { return false; }
  virtual bool OnFeatureInserted(IAnnotationDBDataModel* model, const std::string& uuid,
                                 const std::string& extra) { return false; }
  virtual bool OnFolderModified(IAnnotationDBDataModel* model, const std::string& uuid,
                                const std::string& extra) { return false; }
  virtual bool OnLayerModified(IAnnotationDBDataModel* model, const std::string& uuid,
                               const std::string& extra) { return false; }
  virtual bool OnFeatureModified(IAnnotationDBDataModel* model, const std::string& uuid,
                                 const std::string& extra) { return false; }
  virtual bool OnFolderMoved(IAnnotationDBDataModel* model, const std::string& uuid,
                             const std::string& extra) { return false; }
  virtual bool OnLayerMoved(IAnnotationDBDataModel* model, const std::string& uuid,
                            const std::string& extra) { return false; }
  virtual bool OnFeatureMoved(IAnnotationDBDataModel* model, const std::string& uuid,
                              const std::string& extra) { return false; }
  virtual bool OnStyleModified(IAnnotationDBDataModel* model, const std::string& uuid,
                               const std::string& extra) { return false; }
  virtual bool OnGeometryModified(IAnnotationDBDataModel* model, const std::string& uuid,
                                  const std::string& extra) { return false; }
  virtual bool OnFieldModified(IAnnotationDBDataModel* model, const std::string& uuid,
                               const std::string& extra) { return false; }
  virtual bool OnUserDataModified(IAnnotationDBDataModel* model, const std::string& uuid,
                                  const std::string& extra) { return false; }
  virtual bool OnEnclosureInserted(IAnnotationDBDataModel* model, const std::string& uuid,
                                   const std::string& extra) { return false; }
  virtual bool OnEnclosureModified(IAnnotationDBDataModel* model, const std::string& uuid,
                                   const std::string& extra) { return false; }
  virtual bool OnFolderDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
                               const std::string& extra) { return false; }
  virtual bool OnLayerDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
                              const std::string& extra) { return false; }
  virtual bool OnFeatureDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
                                const std::string& extra) { return false; }
  virtual bool OnEnclosureDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
                                  const std::string& extra) { return false; }
  virtual bool OnTransactionCommitted(IAnnotationDBDataModel* model, const std::string& uuid,
                                      const std::string& extra) { return false; }
  virtual bool OnDatabaseReset(IAnnotationDBDataModel* model, const std::string& uuid,
                               const std::string& extra) { return false; }
};

#endif  // ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_OBSERVER_H
