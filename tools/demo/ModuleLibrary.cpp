#include "ModuleLibrary.h"

#include <dlfcn.h>

CModuleLibrary::~CModuleLibrary() {
  DestroyModule();
  if (handle_ != nullptr) dlclose(handle_);
}

bool CModuleLibrary::Load(const std::string& path, std::string* error) {
  if (handle_ != nullptr) return true;
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    *error = dlerror();
    return false;
  }
  getModule_ = reinterpret_cast<GetModuleFn>(dlsym(handle_, "GetOrCreateAnnotationLayerModule"));
  destroyModule_ = reinterpret_cast<DestroyModuleFn>(dlsym(handle_, "DestroyAnnotationLayerModule"));
  createDatabase_ =
      reinterpret_cast<CreateDatabaseFn>(dlsym(handle_, "AnnotationLayerCreateDatabase"));
  if (getModule_ == nullptr || destroyModule_ == nullptr || createDatabase_ == nullptr) {
    *error = path + " lacks the module's entry points";
    return false;
  }
  return true;
}

IAnnotationLayerModule* CModuleLibrary::Module() {
  if (getModule_ == nullptr) return nullptr;
  moduleMade_ = true;
  return getModule_();
}

void CModuleLibrary::DestroyModule() {
  if (moduleMade_ && destroyModule_ != nullptr) destroyModule_();
  moduleMade_ = false;
}

bool CModuleLibrary::CreateDatabase(const std::string& path) const {
  return createDatabase_ != nullptr && createDatabase_(path.c_str());
}
