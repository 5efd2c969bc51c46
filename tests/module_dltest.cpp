// Loads the built module the way a host does, with dlopen, and drives it through its C entry
// points and the host's object creator only.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include "IAnnotationDBDataModel.h"
#include "IAnnotationLayerModule.h"
#include "ObjectCreator.h"
#include "TempDir.h"
#include "ZuCoreApplication.h"

namespace {
using GetModuleFn = IAnnotationLayerModule* (*)();
using DestroyModuleFn = void (*)();
using CreateDatabaseFn = bool (*)(const std::string&, std::string*);
}  // namespace

TEST(ModuleDlopenTest, HostWalkThrough) {
  CTempDir dir;
  CZuCoreApplication::GetInstance()->SetDataDir(dir.Path());
  void* library = dlopen(ANNOTATIONLAYER_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(nullptr, library) << dlerror();
  auto getModule = reinterpret_cast<GetModuleFn>(dlsym(library, "GetOrCreateAnnotationLayerModule"));
  auto destroyModule = reinterpret_cast<DestroyModuleFn>(dlsym(library, "DestroyAnnotationLayerModule"));
  ASSERT_NE(nullptr, getModule);
  ASSERT_NE(nullptr, destroyModule);
  // Internal classes stay hidden.
  EXPECT_EQ(nullptr, dlsym(library, "_ZN18CSpatialiteHandler5CloseEv"));

  IAnnotationLayerModule* module = getModule();
  ASSERT_NE(nullptr, module);
  ASSERT_TRUE(module->Start());
  IObject* object = CObjectCreatorSingleton::GetInstance()->CreateObject("CSpatialiteDBDataModel");
  auto* model = dynamic_cast<IAnnotationDBDataModel*>(object);
  ASSERT_NE(nullptr, model);
  delete model;

  IAnnotationDBDataModel* registered = module->CreateDataModel("CSpatialiteDBDataModel", "m");
  ASSERT_NE(nullptr, registered);
  EXPECT_EQ(registered, module->FindDataModel("m"));
  destroyModule();
  EXPECT_FALSE(CObjectCreatorSingleton::GetInstance()->IsRegistered("CSpatialiteDBDataModel"));
  dlclose(library);
}
