// The module object: start-up, registration with the object creator, the data model registry.
#include <gtest/gtest.h>

#include <sqlite3.h>
#include <spatialite.h>

#include "AnnotationLayerModule.h"
#include "AnnotationLayerNS.h"
#include "EventModule.h"
#include "IAnnotationDBDataModel.h"
#include "ObjectCreator.h"
#include "TempDir.h"
#include "TestDatabase.h"
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

TEST_F(ModuleTest, EnginePartsAnswerEmptyUntilBuilt) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  EXPECT_EQ(nullptr, module->CreateSpatialEngine("e", nullptr));
  EXPECT_EQ(nullptr, module->GetSpatialEngine(1));
  EXPECT_EQ(nullptr, module->FindSpatialEngine("e"));
  EXPECT_FALSE(module->DestroySpatialEngine(nullptr));
  EXPECT_EQ(nullptr, module->CreateEntity());
}
