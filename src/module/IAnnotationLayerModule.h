// The module's interface to the host: data models and spatial engines are made, found and
// destroyed through it, and it links the module to the host's event kernel.
//
// Ownership: objects made by Create* and registered here are owned by the module until passed to
// the matching Destroy*; Stop destroys whatever is left. CreateObject and CreateEntity hand their
// result to the caller.
//
// Threading contract: Start and Stop run on the host's main thread. The registry operations lock
// their registry and may be called from any thread.
#ifndef ANNOTATIONLAYER_IANNOTATION_LAYER_MODULE_H
#define ANNOTATIONLAYER_IANNOTATION_LAYER_MODULE_H

#include <string>

#include "AnnotationLayerExport.h"
#include "IZuModule.h"

class CEventModule;
class IAnnotationDBDataModel;
class IAnnotationSpatialEngine;
class CAnnotationEntity;

class ANNOTATIONLAYER_EXPORT IAnnotationLayerModule : public IZuModule {
 public:
  ~IAnnotationLayerModule() override = default;

  std::string GetModuleName() override = 0;
  std::string GetModuleGUID() override = 0;
  // Makes a data model of the registered class `typeName`, initialises it with `argument` (its
  // name) and registers it under its object id. Null on failure.
  virtual IAnnotationDBDataModel* CreateDataModel(const std::string& typeName,
                                                  const std::string& argument) = 0;
  virtual IAnnotationDBDataModel* GetDataModel(int objectId) = 0;
  // The registered model whose name equals `name`, or null.
  virtual IAnnotationDBDataModel* FindDataModel(const std::string& name) = 0;
  // Uninitialises and deletes a model made by CreateDataModel.
  virtual bool DestroyDataModel(IAnnotationDBDataModel* model) = 0;
  // Makes a spatial engine over `model`, initialises it with `name` and registers it under its
  // object id. Null when model is null.
  virtual IAnnotationSpatialEngine* CreateSpatialEngine(const std::string& name,
                                                        IAnnotationDBDataModel* model) = 0;
  virtual IAnnotationSpatialEngine* GetSpatialEngine(int objectId) = 0;
  // The registered engine whose name equals `name`, or null.
  virtual IAnnotationSpatialEngine* FindSpatialEngine(const std::string& name) = 0;
  // Uninitialises (stops) and deletes an engine made by CreateSpatialEngine.
  virtual bool DestroySpatialEngine(IAnnotationSpatialEngine* engine) = 0;
  // A new, empty entity owned by the caller.
  virtual CAnnotationEntity* CreateEntity() = 0;
  // The number of data models registered with the module.
  virtual int GetDataModelCount() = 0;
  // A data model of class `typeName`, not registered and owned by the caller; null when the class
  // is unknown or is not a data model.
  virtual IAnnotationDBDataModel* CreateObject(const std::string& typeName) = 0;
  // The module's cache directory (made by the constructor when missing).
  virtual std::string GetCacheDir() = 0;
  virtual CEventModule* GetEventModule() = 0;
  bool Start() override = 0;
  bool Stop() override = 0;
  int GetModuleID() override = 0;
};

extern "C" {
// The one module object of the process, made on the first call. For hosts that resolve the entry
// points by name (dlsym), both functions have C linkage.
ANNOTATIONLAYER_EXPORT IAnnotationLayerModule* GetOrCreateAnnotationLayerModule();
// Stops and deletes the module object; a later GetOrCreateAnnotationLayerModule makes a new one.
ANNOTATIONLAYER_EXPORT void DestroyAnnotationLayerModule();
// Creates a new, empty annotation database at `path` (local code page); see
// AnnotationLayerNS::CreateAnnotationDatabase. Lets hosts that load the module by name make one.
ANNOTATIONLAYER_EXPORT bool AnnotationLayerCreateDatabase(const char* path);
}

#endif  // ANNOTATIONLAYER_IANNOTATION_LAYER_MODULE_H
