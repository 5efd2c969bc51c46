// The emitting side of a data model's observer registry: batch operations call it after they have
// inserted or deleted nodes, and it passes the news on to the registered observers. Notification k
// here corresponds to notification k of IAnnotationDBObjectObserver.
//
// Threading contract: see the implementation, CAnnotationDBObjectNotifier.
#ifndef ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_NOTIFIER_H
#define ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_NOTIFIER_H

#include <string>

#include "AnnotationLayerExport.h"

class IAnnotationDBDataModel;

class ANNOTATIONLAYER_EXPORT IAnnotationDBObjectNotifier {
 public:
  virtual ~IAnnotationDBObjectNotifier() = default;

  virtual bool OnFolderInserted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnLayerInserted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnFeatureInserted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnFolderModified(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnLayerModified(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnFeatureModified(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnFolderMoved(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnLayerMoved(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnFeatureMoved(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnStyleModified(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnGeometryModified(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnFieldModified(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnUserDataModified(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnEnclosureInserted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnEnclosureModified(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnFolderDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnLayerDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnFeatureDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnEnclosureDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnTransactionCommitted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
  virtual bool OnDatabaseReset(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) = 0;
};

#endif  // ANNOTATIONLAYER_IANNOTATION_DB_OBJECT_NOTIFIER_H
