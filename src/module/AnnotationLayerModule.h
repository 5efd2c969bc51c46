// CAnnotationLayerModule: the module object behind IAnnotationLayerModule. It registers the data
// model class with the host's object creator, owns the event module that links it to the host's
// event kernel, and keeps registries of the data models and spatial engines it made.
//
// Threading contract: as IAnnotationLayerModule. Each registry has its own mutex, held only to read
// or change the registry: an object is taken out of its registry under the lock and stopped,
// uninitialised and deleted after the lock is released. Engine threads announce entities to host
// observers synchronously, and an observer may call back into the module (GetSpatialEngine,
// FindSpatialEngine, ...) while the host's thread waits for those threads to end.
#ifndef ANNOTATIONLAYER_ANNOTATION_LAYER_MODULE_H
#define ANNOTATIONLAYER_ANNOTATION_LAYER_MODULE_H

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "EventKernel.h"
#include "IAnnotationLayerModule.h"
#include "ObjectCreator.h"

class CAnnotationLayerModule : public IAnnotationLayerModule, public IEventObserver {
 public:
  // The key under which the data model class is registered with the object creator.
  static std::string DataModelTypeName();

  CAnnotationLayerModule();
  ~CAnnotationLayerModule() override;
  CAnnotationLayerModule(const CAnnotationLayerModule&) = delete;
  CAnnotationLayerModule& operator=(const CAnnotationLayerModule&) = delete;

  std::string GetModuleName() override;
  std::string GetModuleGUID() override;
  IAnnotationDBDataModel* CreateDataModel(const std::string& typeName,
                                          const std::string& argument) override;
  IAnnotationDBDataModel* GetDataModel(int objectId) override;
  IAnnotationDBDataModel* FindDataModel(const std::string& name) override;
  bool DestroyDataModel(IAnnotationDBDataModel* model) override;
  IAnnotationSpatialEngine* CreateSpatialEngine(const std::string& name,
                                                IAnnotationDBDataModel* model) override;
  IAnnotationSpatialEngine* GetSpatialEngine(int objectId) override;
  IAnnotationSpatialEngine* FindSpatialEngine(const std::string& name) override;
  bool DestroySpatialEngine(IAnnotationSpatialEngine* engine) override;
  CAnnotationEntity* CreateEntity() override;
  int GetDataModelCount() override;
  IAnnotationDBDataModel* CreateObject(const std::string& typeName) override;
  std::string GetCacheDir() override;
  CEventModule* GetEventModule() override;
  bool Start() override;
  bool Stop() override;
  int GetModuleID() override;

  // Host events reach the module here; it does not react to any yet.
  bool OnEvent(const CEventObject* event) override;

 private:
  int moduleId_;
  std::unique_ptr<CEventModule> eventModule_;
  std::unique_ptr<std::mutex> dataModelLock_;
  std::map<int, IAnnotationDBDataModel*> dataModels_;  // owned
  std::unique_ptr<std::mutex> engineLock_;
  std::map<int, IAnnotationSpatialEngine*> engines_;  // owned
  std::string cacheDir_;
  // Kept alive while registered with the object creator; unregistered by the destructor.
  std::unique_ptr<CObjectRegisterAgent> dataModelAgent_;
  bool agentRegistered_;
};

#endif  // ANNOTATIONLAYER_ANNOTATION_LAYER_MODULE_H
