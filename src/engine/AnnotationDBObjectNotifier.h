// The data model's observer registry. Host components register observers with the data model;
// batch operations notify through it. Six notifications are forwarded to every observer (the
// inserts and deletes of folders, layers and features); the others reach nobody.
//
// Forwarding walks the observers in pointer order and stops at the first observer that returns
// true. Observers are not owned.
//
// Threading contract: every operation takes the notifier's lock, and a forwarding walk holds it
// while the observers run, so registering from another thread waits for the walk to end. The lock
// is re-entrant: an observer that (un)registers from inside its handler would change the set under
// the walk, so observers must not do that.
#ifndef ANNOTATIONLAYER_ANNOTATION_DB_OBJECT_NOTIFIER_H
#define ANNOTATIONLAYER_ANNOTATION_DB_OBJECT_NOTIFIER_H

#include <memory>
#include <set>
#include <string>

#include "AnnotationLayerExport.h"
#include "CriticalLock.h"
#include "IAnnotationDBObjectNotifier.h"
#include "IAnnotationDBObjectObserver.h"

class ANNOTATIONLAYER_EXPORT CAnnotationDBObjectNotifier : public IAnnotationDBObjectNotifier {
 public:
  CAnnotationDBObjectNotifier();
  ~CAnnotationDBObjectNotifier() override;
  CAnnotationDBObjectNotifier(const CAnnotationDBObjectNotifier&) = delete;
  CAnnotationDBObjectNotifier& operator=(const CAnnotationDBObjectNotifier&) = delete;

  // False for null; an observer already present stays once.
  bool AddObserver(IAnnotationDBObjectObserver* observer);
  // False for null; true otherwise, whether or not it was present.
  bool RemoveObserver(IAnnotationDBObjectObserver* observer);
  int GetObserverCount() const;

  bool OnFolderInserted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) override;
  bool OnLayerInserted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) override;
  bool OnFeatureInserted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) override;
  bool OnFolderModified(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnLayerModified(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnFeatureModified(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnFolderMoved(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnLayerMoved(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnFeatureMoved(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnStyleModified(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnGeometryModified(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnFieldModified(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnUserDataModified(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnEnclosureInserted(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnEnclosureModified(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnFolderDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) override;
  bool OnLayerDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) override;
  bool OnFeatureDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
      const std::string& extra) override;
  bool OnEnclosureDeleted(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnTransactionCommitted(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }
  bool OnDatabaseReset(IAnnotationDBDataModel*, const std::string&,
      const std::string&) override { return false; }

 private:
  using Notification = bool (IAnnotationDBObjectObserver::*)(IAnnotationDBDataModel*,
                                                             const std::string&,
                                                             const std::string&);
  bool Forward(Notification notification, IAnnotationDBDataModel* model, const std::string& uuid,
               const std::string& extra);

  std::unique_ptr<CCriticalLock> lock_;
  std::set<IAnnotationDBObjectObserver*> observers_;
};

#endif  // ANNOTATIONLAYER_ANNOTATION_DB_OBJECT_NOTIFIER_H
