// CModuleLibrary loads the annotation layer module the way the host does at start-up: dlopen on
// the library file and dlsym on its C entry points. The library stays loaded while the object
// lives; the module object itself is the library's and is destroyed through DestroyModule.
//
// Threading contract: one thread.
#ifndef ANNOTATIONLAYER_DEMO_MODULE_LIBRARY_H
#define ANNOTATIONLAYER_DEMO_MODULE_LIBRARY_H

#include <string>

class IAnnotationLayerModule;

class CModuleLibrary {
 public:
  CModuleLibrary() = default;
  // Destroys the module if it was made, then unloads the library.
  ~CModuleLibrary();
  CModuleLibrary(const CModuleLibrary&) = delete;
  CModuleLibrary& operator=(const CModuleLibrary&) = delete;

  // Loads the library at `path` and resolves the entry points. False with dlerror's reason.
  bool Load(const std::string& path, std::string* error);
  // The process's module, made on first call; null before Load.
  IAnnotationLayerModule* Module();
  void DestroyModule();
  // Creates an empty annotation database at `path`.
  bool CreateDatabase(const std::string& path) const;

 private:
  using GetModuleFn = IAnnotationLayerModule* (*)();
  using DestroyModuleFn = void (*)();
  using CreateDatabaseFn = bool (*)(const char*);

  void* handle_ = nullptr;
  GetModuleFn getModule_ = nullptr;
  DestroyModuleFn destroyModule_ = nullptr;
  CreateDatabaseFn createDatabase_ = nullptr;
  bool moduleMade_ = false;
};

#endif  // ANNOTATIONLAYER_DEMO_MODULE_LIBRARY_H
