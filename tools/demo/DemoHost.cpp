// A small host: loads the annotation layer module the way the desktop application does (dlopen and
// the C entry points), then walks through the module's life on a scratch database, printing each
// step.
#include <dlfcn.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>

#include "IAnnotationDBDataModel.h"
#include "IAnnotationLayerModule.h"
#include "ObjectCreator.h"
#include "ZuCoreApplication.h"

namespace {

using GetModuleFn = IAnnotationLayerModule* (*)();
using DestroyModuleFn = void (*)();
using CreateDatabaseFn = bool (*)(const char*);

int step = 0;

bool Report(const std::string& what, bool ok) {
  std::cout << "[" << ++step << "] " << what << ": " << (ok ? "ok" : "FAILED") << std::endl;
  return ok;
}

// A scratch directory removed when the demo ends.
class ScratchDir {
 public:
  ScratchDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "al-demo-XXXXXX").string();
    if (mkdtemp(&pattern[0]) != nullptr) path_ = pattern + "/";
  }
  ~ScratchDir() {
    std::error_code ec;
    if (!path_.empty()) std::filesystem::remove_all(path_, ec);
  }
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

int Run(const char* modulePath) {
  ScratchDir scratch;
  if (!Report("scratch directory " + scratch.Path(), !scratch.Path().empty())) return 1;
  CZuCoreApplication::GetInstance()->SetDataDir(scratch.Path());

  void* library = dlopen(modulePath, RTLD_NOW | RTLD_LOCAL);
  if (!Report(std::string("load ") + modulePath, library != nullptr)) {
    std::cerr << dlerror() << std::endl;
    return 1;
  }
  auto getModule = reinterpret_cast<GetModuleFn>(dlsym(library, "GetOrCreateAnnotationLayerModule"));
  auto destroyModule = reinterpret_cast<DestroyModuleFn>(dlsym(library, "DestroyAnnotationLayerModule"));
  auto createDatabase = reinterpret_cast<CreateDatabaseFn>(dlsym(library, "AnnotationLayerCreateDatabase"));
  if (!Report("resolve entry points", getModule && destroyModule && createDatabase)) return 1;

  IAnnotationLayerModule* module = getModule();
  if (!Report("start module (versions are logged above)", module != nullptr && module->Start())) {
    return 1;
  }

  IObject* object = CObjectCreatorSingleton::GetInstance()->CreateObject("CSpatialiteDBDataModel");
  auto* model = dynamic_cast<IAnnotationDBDataModel*>(object);
  if (!Report("create data model \"CSpatialiteDBDataModel\" through the object creator",
              model != nullptr)) {
    delete object;
    return 1;
  }
  model->Initialize("demo");

  const std::string dbPath = scratch.Path() + "annotation.db";
  bool ok = Report("create annotation database " + dbPath, createDatabase(dbPath.c_str()));
  ok = ok && Report("install data model", model->Install(dbPath));
  if (ok) {
    std::cout << "    empty database (only the top root): " << (model->IsEmpty() ? "yes" : "no")
              << std::endl;
    ok = Report("begin transaction (outer, issues BEGIN)", model->BeginTransaction()) &&
         Report("begin transaction (inner)", model->BeginTransaction()) &&
         Report("commit transaction (inner, nothing issued)", model->CommitTransaction()) &&
         Report("in transaction after the inner commit", model->IsInTransaction()) &&
         Report("commit transaction (outer, issues COMMIT)", model->CommitTransaction()) &&
         Report("no transaction open", !model->IsInTransaction());
  }
  Report("uninstall data model", model->Uninstall());
  model->Uninitialize();
  delete model;

  destroyModule();
  Report("destroy module", true);
  dlclose(library);
  std::cout << (ok ? "demo finished" : "demo failed") << std::endl;
  return ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const char* modulePath = argc > 1 ? argv[1] : ANNOTATIONLAYER_MODULE_PATH;
  return Run(modulePath);
}
