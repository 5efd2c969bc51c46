#include "AnnotationDBObjectNotifier.h"

CAnnotationDBObjectNotifier::CAnnotationDBObjectNotifier() : lock_(new CCriticalLock) {}

CAnnotationDBObjectNotifier::~CAnnotationDBObjectNotifier() {
  CCriticalLockGuard guard(lock_.get());
  observers_.clear();
}

bool CAnnotationDBObjectNotifier::AddObserver(IAnnotationDBObjectObserver* observer) {
  if (observer == nullptr) return false;
  CCriticalLockGuard guard(lock_.get());
  observers_.insert(observer);
  return true;
}

bool CAnnotationDBObjectNotifier::RemoveObserver(IAnnotationDBObjectObserver* observer) {
  if (observer == nullptr) return false;
  CCriticalLockGuard guard(lock_.get());
  observers_.erase(observer);
  return true;
}

int CAnnotationDBObjectNotifier::GetObserverCount() const {
  CCriticalLockGuard guard(lock_.get());
  return static_cast<int>(observers_.size());
}

bool CAnnotationDBObjectNotifier::Forward(Notification notification, IAnnotationDBDataModel* model,
                                          const std::string& uuid, const std::string& extra) {
  CCriticalLockGuard guard(lock_.get());
  for (IAnnotationDBObjectObserver* observer : observers_) {
    if (observer != nullptr && (observer->*notification)(model, uuid, extra)) return true;
  }
  return false;
}

bool CAnnotationDBObjectNotifier::OnFolderInserted(IAnnotationDBDataModel* model, const std::string& uuid,
    const std::string& extra) {
  return Forward(&IAnnotationDBObjectObserver::OnFolderInserted, model, uuid, extra);
}

bool CAnnotationDBObjectNotifier::OnLayerInserted(IAnnotationDBDataModel* model, const std::string& uuid,
    const std::string& extra) {
  return Forward(&IAnnotationDBObjectObserver::OnLayerInserted, model, uuid, extra);
}

bool CAnnotationDBObjectNotifier::OnFeatureInserted(IAnnotationDBDataModel* model, const std::string& uuid,
    const std::string& extra) {
  return Forward(&IAnnotationDBObjectObserver::OnFeatureInserted, model, uuid, extra);
}

bool CAnnotationDBObjectNotifier::OnFolderDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
    const std::string& extra) {
  return Forward(&IAnnotationDBObjectObserver::OnFolderDeleted, model, uuid, extra);
}

bool CAnnotationDBObjectNotifier::OnLayerDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
    const std::string& extra) {
  return Forward(&IAnnotationDBObjectObserver::OnLayerDeleted, model, uuid, extra);
}

bool CAnnotationDBObjectNotifier::OnFeatureDeleted(IAnnotationDBDataModel* model, const std::string& uuid,
    const std::string& extra) {
  return Forward(&IAnnotationDBObjectObserver::OnFeatureDeleted, model, uuid, extra);
}
