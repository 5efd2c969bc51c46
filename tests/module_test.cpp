// The module object: start-up, registration with the object creator, the data model registry.
#include <gtest/gtest.h>

#include <memory>

#include <sqlite3.h>
#include <spatialite.h>

#include "AnnotationEntity.h"
#include "AnnotationLayerModule.h"
#include "AnnotationLayerNS.h"
#include "EventModule.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationSpatialEngine.h"
#include "ObjectCreator.h"
#include "TempDir.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "ZuCoreApplication.h"
#include "ZuLog.h"

namespace {

class ModuleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    savedDataDir_ = CZuCoreApplication::GetInstance()->GetDataDir();
    CZuCoreApplication::GetInstance()->SetDataDir(dataDir_.Path());
  }
  void TearDown() override {
    DestroyAnnotationLayerModule();
    CZuCoreApplication::GetInstance()->SetDataDir(savedDataDir_);
  }
  CTempDir dataDir_;
  std::string savedDataDir_;
};

class NotAModel : public IObject {};

}  // namespace

TEST_F(ModuleTest, SingletonIdentityAndCacheDirectory) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  ASSERT_NE(nullptr, module);
  EXPECT_EQ(module, GetOrCreateAnnotationLayerModule());
  EXPECT_EQ("", module->GetModuleName());
  EXPECT_EQ("7C0293CD-FDE3-4ECF-A2AD-81410C7F1A1E", module->GetModuleGUID());
  EXPECT_EQ(-1, module->GetModuleID());
  EXPECT_EQ(dataDir_.Path() + "layer_cache/", module->GetCacheDir());
  EXPECT_TRUE(FileExists(dataDir_.Path() + "layer_cache"));
}

TEST_F(ModuleTest, StartLogsVersionsAndRegistersTheDataModel) {
  EXPECT_EQ("CSpatialiteDBDataModel", CAnnotationLayerModule::DataModelTypeName());
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  CZuLogCapture capture;
  ASSERT_TRUE(module->Start());
  EXPECT_GT(module->GetModuleID(), 0);
  const std::vector<std::string> expected = {
      std::string("== Spatialite-Version Support: ") + spatialite_version() + " ==",
      std::string("== Sqlite-Version Support: ") + sqlite3_libversion() + " =="};
  EXPECT_EQ(expected, capture.Lines());
  EXPECT_TRUE(CObjectCreatorSingleton::GetInstance()->IsRegistered("CSpatialiteDBDataModel"));
  ASSERT_NE(nullptr, module->GetEventModule());
  EXPECT_TRUE(CEventKernelSingleton::GetInstance()->IsRegistered(
      module->GetEventModule()->GetObserver()));

  DestroyAnnotationLayerModule();
  // Nothing the module owned is left behind in the host's registries.
  EXPECT_FALSE(CObjectCreatorSingleton::GetInstance()->IsRegistered("CSpatialiteDBDataModel"));
}

TEST_F(ModuleTest, DataModelRegistry) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  ASSERT_TRUE(module->Start());
  EXPECT_EQ(nullptr, module->CreateDataModel("NoSuchClass", "x"));

  IAnnotationDBDataModel* first = module->CreateDataModel("CSpatialiteDBDataModel", "first");
  IAnnotationDBDataModel* second = module->CreateDataModel("CSpatialiteDBDataModel", "second");
  ASSERT_NE(nullptr, first);
  ASSERT_NE(nullptr, second);
  EXPECT_EQ("first", first->GetObjectName());
  EXPECT_EQ(2, module->GetDataModelCount());
  EXPECT_EQ(first, module->GetDataModel(first->GetObjectID()));
  EXPECT_EQ(second, module->FindDataModel("second"));
  EXPECT_EQ(nullptr, module->FindDataModel("third"));
  EXPECT_EQ(nullptr, module->GetDataModel(-5));

  CTestDatabase db;
  ASSERT_TRUE(first->Install(db.Path()));
  EXPECT_TRUE(module->DestroyDataModel(first));
  EXPECT_EQ(1, module->GetDataModelCount());
  EXPECT_FALSE(module->DestroyDataModel(nullptr));

  ASSERT_TRUE(second->Install(db.Path()));
  EXPECT_TRUE(module->Stop());  // uninstalls and deletes what is left
  EXPECT_EQ(0, module->GetDataModelCount());
}

TEST_F(ModuleTest, CreateObjectIsUnregisteredAndChecksTheType) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  ASSERT_TRUE(module->Start());
  IAnnotationDBDataModel* model = module->CreateObject("CSpatialiteDBDataModel");
  ASSERT_NE(nullptr, model);
  EXPECT_EQ(0, module->GetDataModelCount());
  EXPECT_EQ(-1, model->GetObjectID());
  delete model;

  CObjectRegisterAgentT<NotAModel> agent;
  ASSERT_TRUE(CObjectCreatorSingleton::GetInstance()->RegisterType("NotAModel", &agent));
  EXPECT_EQ(nullptr, module->CreateObject("NotAModel"));
  EXPECT_EQ(nullptr, module->CreateDataModel("NotAModel", "x"));
  CObjectCreatorSingleton::GetInstance()->UnregisterType("NotAModel");
}

TEST_F(ModuleTest, SpatialEngineRegistry) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  ASSERT_TRUE(module->Start());
  EXPECT_EQ(nullptr, module->CreateSpatialEngine("e", nullptr));
  EXPECT_EQ(nullptr, module->GetSpatialEngine(1));
  EXPECT_EQ(nullptr, module->FindSpatialEngine("e"));
  EXPECT_FALSE(module->DestroySpatialEngine(nullptr));

  CTestDatabase db;
  IAnnotationDBDataModel* model = module->CreateDataModel("CSpatialiteDBDataModel", "m");
  ASSERT_NE(nullptr, model);
  ASSERT_TRUE(model->Install(db.Path()));
  IAnnotationSpatialEngine* first = module->CreateSpatialEngine("first", model);
  IAnnotationSpatialEngine* second = module->CreateSpatialEngine("second", model);
  ASSERT_NE(nullptr, first);
  ASSERT_NE(nullptr, second);
  EXPECT_EQ("first", first->GetName());
  EXPECT_EQ(model, first->GetDataModel());
  EXPECT_EQ(first, module->GetSpatialEngine(first->GetID()));
  EXPECT_EQ(second, module->FindSpatialEngine("second"));
  EXPECT_EQ(nullptr, module->FindSpatialEngine("third"));
  ASSERT_TRUE(first->Start());
  const int firstId = first->GetID();
  EXPECT_TRUE(module->DestroySpatialEngine(first));  // stopped and deleted
  EXPECT_EQ(nullptr, module->GetSpatialEngine(firstId));

  // Stop winds down what is left, started engines included, before their model goes.
  ASSERT_TRUE(second->Start());
  second->OnUpdateRange(EXTENT{0, 0, 1, 1});
  CZuLogCapture capture;
  EXPECT_TRUE(module->Stop());
  EXPECT_EQ(1, capture.Count(AnnotationLayerInner::Utf8ToLocal(
                                "[CAnnotationSpatialEngine] Stop引擎 [second]")));
  EXPECT_EQ(nullptr, module->FindSpatialEngine("second"));
  EXPECT_EQ(0, module->GetDataModelCount());
}

TEST_F(ModuleTest, CreateEntityHandsANewEntityToTheCaller) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  std::unique_ptr<CAnnotationEntity> first(module->CreateEntity());
  std::unique_ptr<CAnnotationEntity> second(module->CreateEntity());
  ASSERT_NE(nullptr, first);
  ASSERT_NE(nullptr, second);
  EXPECT_LT(first->GetID(), second->GetID());
  EXPECT_FALSE(first->IsAttached());
  EXPECT_EQ("", first->GetUUID());
}
