// The module object: start-up, registration with the object creator, the data model registry.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <memory>
#include <thread>

#include <sqlite3.h>
#include <spatialite.h>

#include "AnnotationEntity.h"
#include "AnnotationLayerModule.h"
#include "AnnotationLayerNS.h"
#include "EventModule.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationSpatialEngine.h"
#include "NodeCacheCalculator.h"
#include "PointGrid.h"
#include "ObjectCreator.h"
#include "TempDir.h"
#include "TestDatabase.h"
#include "TextConversion.h"
#include "TreeBuilder.h"
#include "ZuCoreApplication.h"
#include "ZuLog.h"

namespace {

class ModuleTest : public ::testing::Test {
 protected:
  // A fresh account: the data directory does not exist yet.
  void SetUp() override { CZuCoreApplication::GetInstance()->SetDataDir(dir_.Path() + "a/b/"); }
  void TearDown() override {
    DestroyAnnotationLayerModule();
    CZuCoreApplication::GetInstance()->SetDataDir(savedDataDir_);
  }
  CTempDir dir_;
  const std::string savedDataDir_ = CZuCoreApplication::GetInstance()->GetDataDir();
};

class NotAModel : public IObject {};

// Hears an engine's first new entity on that engine's thread, waits there until the host's thread
// has begun to stop the engine, and then calls back into the module, as a host observer may.
class CallbackObserver : public IEventObserver {
 public:
  explicit CallbackObserver(IAnnotationSpatialEngine* engine)
      : engine_(engine), id_(engine->GetID()) {
    CEventKernelSingleton::GetInstance()->RegisterEventObserver(this);
  }
  ~CallbackObserver() override { CEventKernelSingleton::GetInstance()->UnRegisterEventObserver(this); }
  bool OnEvent(const CEventObject* event) override {
    const auto* state = dynamic_cast<const CStateEventObject*>(event);
    if (state == nullptr || state->GetEventCode() != 551 || state->GetSenderID() != id_ ||
        called_.exchange(true)) {
      return false;
    }
    inside_.set_value();
    // Nothing tells an observer that its engine is stopping: look, for a bounded time.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (engine_->IsStarted() && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::yield();
    }
    IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
    module->GetSpatialEngine(id_);
    module->FindSpatialEngine("any");
    return false;
  }
  bool WaitInside() {
    return inside_.get_future().wait_for(std::chrono::seconds(20)) == std::future_status::ready;
  }

 private:
  IAnnotationSpatialEngine* engine_;
  const int id_;
  std::atomic<bool> called_{false};
  std::promise<void> inside_;
};

// Runs `work` on a thread of its own. A module that deadlocks cannot be cleaned up after, so a
// run that does not end in time ends the test process with a failure.
void MustFinish(const char* what, std::function<void()> work) {
  auto done = std::make_shared<std::promise<void>>();
  std::thread([work, done] {
    work();
    done->set_value();
  }).detach();
  if (done->get_future().wait_for(std::chrono::seconds(30)) != std::future_status::ready) {
    std::fprintf(stderr, "%s did not return: deadlock with an observer calling the module\n", what);
    std::_Exit(1);
  }
}

// A started engine over a few visible points, made through the module.
IAnnotationSpatialEngine* StartEngineOverPoints(IAnnotationLayerModule* module,
                                                IAnnotationDBDataModel* model,
                                                const std::string& root) {
  const std::string folder = CTreeBuilder(model).AddFolder(root, "f");
  if (!ImportPointGrid(model, folder, "points", SPointGrid{3})) return nullptr;
  model->GetNodeCacheCalculator()->Refresh();
  if (!model->GetNodeCacheCalculator()->WaitForFinished(10000)) return nullptr;
  IAnnotationSpatialEngine* engine = module->CreateSpatialEngine("callback", model);
  if (engine == nullptr || !engine->Start()) return nullptr;
  return engine;
}

}  // namespace

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

TEST_F(ModuleTest, DataModelAndSpatialEngineRegistries) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  ASSERT_TRUE(module->Start());
  EXPECT_EQ(nullptr, module->CreateDataModel("NoSuchClass", "x"));
  IAnnotationDBDataModel* first = module->CreateDataModel("CSpatialiteDBDataModel", "first");
  IAnnotationDBDataModel* model = module->CreateDataModel("CSpatialiteDBDataModel", "m");
  ASSERT_NE(nullptr, first);
  ASSERT_NE(nullptr, model);
  EXPECT_EQ("first", first->GetObjectName());
  EXPECT_EQ(2, module->GetDataModelCount());
  EXPECT_EQ(first, module->GetDataModel(first->GetObjectID()));
  EXPECT_EQ(model, module->FindDataModel("m"));
  EXPECT_EQ(nullptr, module->FindDataModel("third"));
  EXPECT_EQ(nullptr, module->GetDataModel(-5));
  CTestDatabase db;
  ASSERT_TRUE(first->Install(db.Path()));
  EXPECT_TRUE(module->DestroyDataModel(first));
  EXPECT_EQ(1, module->GetDataModelCount());
  EXPECT_FALSE(module->DestroyDataModel(nullptr));

  EXPECT_EQ(nullptr, module->CreateSpatialEngine("e", nullptr));
  EXPECT_EQ(nullptr, module->GetSpatialEngine(1));
  EXPECT_FALSE(module->DestroySpatialEngine(nullptr));
  ASSERT_TRUE(model->Install(db.Path()));
  IAnnotationSpatialEngine* engine = module->CreateSpatialEngine("first", model);
  IAnnotationSpatialEngine* second = module->CreateSpatialEngine("second", model);
  ASSERT_NE(nullptr, engine);
  ASSERT_NE(nullptr, second);
  EXPECT_EQ("first", engine->GetName());
  EXPECT_EQ(model, engine->GetDataModel());
  EXPECT_EQ(engine, module->GetSpatialEngine(engine->GetID()));
  EXPECT_EQ(second, module->FindSpatialEngine("second"));
  EXPECT_EQ(nullptr, module->FindSpatialEngine("third"));
  ASSERT_TRUE(engine->Start());
  const int firstId = engine->GetID();
  EXPECT_TRUE(module->DestroySpatialEngine(engine));  // stopped and deleted
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

TEST_F(ModuleTest, CreateObjectAndCreateEntityHandNewUnregisteredObjectsToTheCaller) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  ASSERT_TRUE(module->Start());
  std::unique_ptr<IAnnotationDBDataModel> model(module->CreateObject("CSpatialiteDBDataModel"));
  ASSERT_NE(nullptr, model);
  EXPECT_EQ(0, module->GetDataModelCount());
  EXPECT_EQ(-1, model->GetObjectID());
  CObjectRegisterAgentT<NotAModel> agent;
  ASSERT_TRUE(CObjectCreatorSingleton::GetInstance()->RegisterType("NotAModel", &agent));
  EXPECT_EQ(nullptr, module->CreateObject("NotAModel"));
  EXPECT_EQ(nullptr, module->CreateDataModel("NotAModel", "x"));
  CObjectCreatorSingleton::GetInstance()->UnregisterType("NotAModel");

  std::unique_ptr<CAnnotationEntity> entity(module->CreateEntity());
  ASSERT_NE(nullptr, entity);
  EXPECT_FALSE(entity->IsAttached());
}

TEST_F(ModuleTest, ObserversMayCallTheModuleWhileItsEnginesStop) {
  IAnnotationLayerModule* module = GetOrCreateAnnotationLayerModule();
  ASSERT_TRUE(module->Start());
  CTestDatabase db;
  IAnnotationDBDataModel* model = module->CreateDataModel("CSpatialiteDBDataModel", "m");
  ASSERT_NE(nullptr, model);
  ASSERT_TRUE(model->Install(db.Path()));

  IAnnotationSpatialEngine* engine = StartEngineOverPoints(module, model, db.RootUUID());
  ASSERT_NE(nullptr, engine);
  {
    CallbackObserver observer(engine);
    engine->OnUpdateRange(EXTENT{-1, -1, 5, 5});
    ASSERT_TRUE(observer.WaitInside());
    MustFinish("DestroySpatialEngine", [&] { module->DestroySpatialEngine(engine); });
  }

  engine = StartEngineOverPoints(module, model, db.RootUUID());
  ASSERT_NE(nullptr, engine);
  CallbackObserver observer(engine);
  engine->OnUpdateRange(EXTENT{-1, -1, 5, 5});
  ASSERT_TRUE(observer.WaitInside());
  MustFinish("DestroyAnnotationLayerModule", [] { DestroyAnnotationLayerModule(); });
}
