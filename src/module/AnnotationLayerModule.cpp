#include "AnnotationLayerModule.h"

#include <sqlite3.h>
#include <spatialite.h>

#include <sys/stat.h>

#include "AnnotationEntity.h"
#include "AnnotationLayerNS.h"
#include "AnnotationSpatialEngine.h"
#include "EventModule.h"
#include "SpatialiteDBDataModel.h"
#include "TextConversion.h"
#include "TypeName.h"
#include "ZuCoreApplication.h"
#include "ZuLog.h"

std::string CAnnotationLayerModule::DataModelTypeName() {
  return AnnotationLayerInner::PlainClassName(typeid(CSpatialiteDBDataModel));
}

CAnnotationLayerModule::CAnnotationLayerModule()
    : moduleId_(-1),
      dataModelLock_(new std::mutex),
      engineLock_(new std::mutex),
      cacheDir_(AnnotationLayerNS::GetDefaultCacheDir()),
      dataModelAgent_(new CObjectRegisterAgentT<CSpatialiteDBDataModel>),
      agentRegistered_(false) {
  // One level only: the data directory itself is the host's to make.
  const std::string fsPath = AnnotationLayerInner::LocalToUtf8(cacheDir_);
  struct stat info;
  if (stat(fsPath.c_str(), &info) != 0) mkdir(fsPath.c_str(), 0755);
}

CAnnotationLayerModule::~CAnnotationLayerModule() {
  Stop();
  // The object creator keeps a pointer to the agent: it must not outlive the module.
  if (agentRegistered_) {
    CObjectCreatorSingleton::GetInstance()->UnregisterType(DataModelTypeName());
  }
}

std::string CAnnotationLayerModule::GetModuleName() { return std::string(); }

std::string CAnnotationLayerModule::GetModuleGUID() {
  return "7C0293CD-FDE3-4ECF-A2AD-81410C7F1A1E";
}

IAnnotationDBDataModel* CAnnotationLayerModule::CreateDataModel(const std::string& typeName,
                                                                const std::string& argument) {
  IAnnotationDBDataModel* model = CreateObject(typeName);
  if (model == nullptr) return nullptr;
  if (!model->Initialize(argument)) {
    delete model;
    return nullptr;
  }
  std::lock_guard<std::mutex> guard(*dataModelLock_);
  dataModels_[model->GetObjectID()] = model;
  return model;
}

IAnnotationDBDataModel* CAnnotationLayerModule::GetDataModel(int objectId) {
  std::lock_guard<std::mutex> guard(*dataModelLock_);
  auto it = dataModels_.find(objectId);
  return it == dataModels_.end() ? nullptr : it->second;
}

IAnnotationDBDataModel* CAnnotationLayerModule::FindDataModel(const std::string& name) {
  std::lock_guard<std::mutex> guard(*dataModelLock_);
  for (const auto& entry : dataModels_) {
    if (entry.second->GetObjectName() == name) return entry.second;
  }
  return nullptr;
}

bool CAnnotationLayerModule::DestroyDataModel(IAnnotationDBDataModel* model) {
  if (model == nullptr) return false;
  {
    std::lock_guard<std::mutex> guard(*dataModelLock_);
    dataModels_.erase(model->GetObjectID());
  }
  model->Uninitialize();
  delete model;
  return true;
}

IAnnotationSpatialEngine* CAnnotationLayerModule::CreateSpatialEngine(
    const std::string& name, IAnnotationDBDataModel* model) {
  std::unique_ptr<CAnnotationSpatialEngine> engine(new CAnnotationSpatialEngine);
  if (!engine->Initialize(name, model)) return nullptr;
  std::lock_guard<std::mutex> guard(*engineLock_);
  IAnnotationSpatialEngine* created = engine.release();
  engines_[created->GetID()] = created;
  return created;
}

IAnnotationSpatialEngine* CAnnotationLayerModule::GetSpatialEngine(int objectId) {
  std::lock_guard<std::mutex> guard(*engineLock_);
  auto it = engines_.find(objectId);
  return it == engines_.end() ? nullptr : it->second;
}

IAnnotationSpatialEngine* CAnnotationLayerModule::FindSpatialEngine(const std::string& name) {
  std::lock_guard<std::mutex> guard(*engineLock_);
  for (const auto& entry : engines_) {
    if (entry.second->GetName() == name) return entry.second;
  }
  return nullptr;
}

bool CAnnotationLayerModule::DestroySpatialEngine(IAnnotationSpatialEngine* engine) {
  if (engine == nullptr) return false;
  {
    std::lock_guard<std::mutex> guard(*engineLock_);
    engines_.erase(engine->GetID());
  }
  // Joins the engine's threads, which may be inside a host observer that calls the module.
  engine->Uninitialize();
  delete engine;
  return true;
}

CAnnotationEntity* CAnnotationLayerModule::CreateEntity() { return new CAnnotationEntity; }

int CAnnotationLayerModule::GetDataModelCount() {
  std::lock_guard<std::mutex> guard(*dataModelLock_);
  return static_cast<int>(dataModels_.size());
}

IAnnotationDBDataModel* CAnnotationLayerModule::CreateObject(const std::string& typeName) {
  IObject* object = CObjectCreatorSingleton::GetInstance()->CreateObject(typeName);
  if (object == nullptr) return nullptr;
  auto* model = dynamic_cast<IAnnotationDBDataModel*>(object);
  if (model == nullptr) delete object;
  return model;
}

std::string CAnnotationLayerModule::GetCacheDir() { return cacheDir_; }

CEventModule* CAnnotationLayerModule::GetEventModule() { return eventModule_.get(); }

bool CAnnotationLayerModule::Start() {
  moduleId_ = GenerateZuModuleID();
  ZuLOG << "== Spatialite-Version Support: " << spatialite_version() << " ==";
  ZuLOG << "== Sqlite-Version Support: " << sqlite3_libversion() << " ==";

  if (!eventModule_) {
    eventModule_.reset(new CEventModule(this));
    CEventKernelSingleton::GetInstance()->RegisterEventObserver(eventModule_->GetObserver());
  }
  if (!agentRegistered_) {
    agentRegistered_ = CObjectCreatorSingleton::GetInstance()->RegisterType(DataModelTypeName(),
                                                                            dataModelAgent_.get());
  }
  return true;
}

bool CAnnotationLayerModule::Stop() {
  // Both registries are emptied under their locks first; the objects are wound down afterwards,
  // with no lock held, while engine threads may still call into the module. Engines read their
  // data models from their own threads: they stop before any model goes, and are uninitialised and
  // deleted after the models.
  std::map<int, IAnnotationSpatialEngine*> engines;
  {
    std::lock_guard<std::mutex> guard(*engineLock_);
    engines.swap(engines_);
  }
  std::map<int, IAnnotationDBDataModel*> models;
  {
    std::lock_guard<std::mutex> guard(*dataModelLock_);
    models.swap(dataModels_);
  }
  for (auto& entry : engines) entry.second->Stop();
  for (auto& entry : models) {
    entry.second->Uninitialize();
    delete entry.second;
  }
  for (auto& entry : engines) {
    entry.second->Uninitialize();
    delete entry.second;
  }
  return true;
}

int CAnnotationLayerModule::GetModuleID() { return moduleId_; }

bool CAnnotationLayerModule::OnEvent(const CEventObject* event) { return false; }
