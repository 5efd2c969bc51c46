// Deleting whole subtrees in batches, with progress, cancelling and notifications.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <memory>
#include <utility>
#include <vector>

#include "AnnotationDBObjectNotifier.h"
#include "LayerBatchDeleter.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "ModelTest.h"
#include "TextConversion.h"
#include "TreeBuilder.h"
#include "ZuLog.h"

using AnnotationLayerInner::ExecSql;
using AnnotationLayerInner::Utf8ToLocal;

namespace {

class RecordingProgress : public CLayerBatchDeleter::IDeleteProgress {
 public:
  bool OnDeleteLayer(const std::string& name) override {
    events.push_back("layer " + name);
    return cancelOnLayer;
  }
  bool OnDeleteFolder(const std::string& name) override {
    events.push_back("folder " + name);
    return false;
  }
  bool OnDeleteFeatures(const std::string& name, int handled, int total) override {
    events.push_back("features " + name + " " + std::to_string(handled) + "/" +
                     std::to_string(total));
    return cancelOnFeatures;
  }
  std::vector<std::string> events;
  bool cancelOnFeatures = false;
  bool cancelOnLayer = false;
};

class RecordingObserver : public IAnnotationDBObjectObserver {
 public:
  bool OnLayerDeleted(IAnnotationDBDataModel*, const std::string& uuid,
                      const std::string& parent) override {
    deleted.push_back("layer " + uuid + " in " + parent);
    return false;
  }
  bool OnFolderDeleted(IAnnotationDBDataModel*, const std::string& uuid,
                       const std::string& parent) override {
    deleted.push_back("folder " + uuid + " in " + parent);
    return false;
  }
  std::vector<std::string> deleted;
};

class DeleterTest : public CModelTest {
 protected:
  // `n` features with a status, a property, a user data, an enclosure and a style row each,
  // written straight in SQL.
  void AddFeatures(const std::string& layer, int n) {
    sqlite3* db = model_.GetConnection();
    ASSERT_TRUE(ExecSql(db, "BEGIN", ""));
    // Each satellite row, and the tag under which its id enters the feature's index array.
    const std::pair<const char*, const char*> satellites[] = {
        {"s", "INSERT INTO shape_status(puuid, type, value) VALUES(?, 1, 1)"},
        {"p", "INSERT INTO shape_property(puuid, field_name) VALUES(?, 'n')"},
        {"u", "INSERT INTO shape_userdata(puuid, key) VALUES(?, 'k')"},
        {"e", "INSERT INTO shape_enclosure(puuid, url) VALUES(?, 'u')"},
        {nullptr, "INSERT INTO shape_style(puuid, content) VALUES(?, '{}')"}};
    std::vector<std::unique_ptr<CSqlStatement>> rows;
    for (const auto& satellite : satellites) {
      rows.push_back(std::make_unique<CSqlStatement>(db, satellite.second, ""));
    }
    CSqlStatement shape(db, "INSERT INTO shape(uuid, puuid, index_id) VALUES(?, ?, ?)", "");
    for (int i = 0; i < n; ++i) {
      const std::string uuid = layer + "-" + std::to_string(i);
      std::string index;
      for (size_t k = 0; k < rows.size(); ++k) {
        rows[k]->BindText(1, uuid, false);
        rows[k]->StepDone();
        rows[k]->Reset();
        if (satellites[k].first == nullptr) continue;
        index += satellites[k].first + (":" + std::to_string(sqlite3_last_insert_rowid(db)) + ";");
      }
      shape.BindText(1, uuid, false);
      shape.BindText(2, layer, false);
      shape.BindText(3, index, false);
      shape.StepDone();
      shape.Reset();
    }
    ASSERT_TRUE(ExecSql(db, "COMMIT", ""));
  }
};

}  // namespace

TEST_F(DeleterTest, FeaturesGoInBatchesOfSixThousandAndACancelKeepsWhatWasDeleted) {
  const std::string layer = tree_.AddLayer(tree_.AddFolder(root_, "f"), "big");
  AddFeatures(layer, 7000);
  RecordingProgress progress;
  progress.cancelOnFeatures = true;
  CLayerBatchDeleter deleter(&model_);
  deleter.BeginDelete(false, &progress);
  EXPECT_TRUE(deleter.IsDeleting());
  EXPECT_FALSE(deleter.BatchDeleteLayer(layer));
  EXPECT_FALSE(deleter.IsDeleting());
  deleter.EndDelete();
  EXPECT_EQ(std::vector<std::string>{"features big 6000/7000"}, progress.events);
  for (const char* table : {"shape", "shape_status", "shape_property", "shape_userdata",
                            "shape_enclosure", "shape_style"}) {
    EXPECT_EQ(1000, Count(std::string("SELECT COUNT(*) FROM ") + table)) << table;
  }
  EXPECT_EQ(1, Count("SELECT COUNT(*) FROM layer"));
  EXPECT_FALSE(model_.IsInTransaction());
}

TEST_F(DeleterTest, DeepestLayersFirstAndObserversHearOfEachLayer) {
  const std::string folder = tree_.AddFolder(root_, "f");
  const std::string sub = tree_.AddFolder(folder, "sub");
  const std::string top = tree_.AddLayer(folder, "top");
  const std::string middle = tree_.AddChildLayer(top, "middle");
  const std::string bottom = tree_.AddChildLayer(middle, "bottom");
  tree_.AddFeature(bottom, "s");
  RecordingObserver observer;
  ASSERT_TRUE(model_.AddObserver(&observer));
  RecordingProgress progress;
  CLayerBatchDeleter deleter(&model_);
  deleter.BeginDelete(false, &progress);
  ASSERT_TRUE(deleter.BatchDeleteFolder(folder));
  deleter.EndDelete();
  const std::vector<std::string> events = {"folder sub", "features bottom 1/1", "layer bottom",
                                           "layer middle", "layer top", "folder f"};
  EXPECT_EQ(events, progress.events);
  const std::vector<std::string> deleted = {
      "folder " + sub + " in " + folder,     "layer " + bottom + " in " + middle,
      "layer " + middle + " in " + top,      "layer " + top + " in " + folder,
      "folder " + folder + " in " + root_};
  EXPECT_EQ(deleted, observer.deleted);
  EXPECT_EQ(1, Count("SELECT COUNT(*) FROM folder"));
  EXPECT_EQ(1, Count("SELECT COUNT(*) FROM folder_status"));
  EXPECT_EQ(1, Count("SELECT COUNT(*) FROM folder_order"));
  EXPECT_EQ(0, Count("SELECT COUNT(*) FROM layer_order"));
  // The calculator was told to rebuild; it ends with the root alone.
  ASSERT_TRUE(model_.GetNodeCacheCalculator()->WaitForFinished(10000));
  EXPECT_EQ(1, model_.GetNodeCacheCalculator()->GetCacheCount());
  model_.RemoveObserver(&observer);
}

TEST_F(DeleterTest, QuietTopLevelSkipsItsCallbackAndNotification) {
  const std::string layer = tree_.AddLayer(tree_.AddFolder(root_, "f"), "l");
  RecordingObserver observer;
  model_.AddObserver(&observer);
  RecordingProgress progress;
  CLayerBatchDeleter deleter(&model_);
  CLayerBatchDeleter copy = deleter;  // handles share one deleter
  copy.BeginDelete(true, &progress);
  EXPECT_TRUE(deleter.IsDeleting());
  ASSERT_TRUE(deleter.BatchDeleteLayer(layer));
  deleter.EndDelete();
  EXPECT_TRUE(progress.events.empty());
  EXPECT_TRUE(observer.deleted.empty());
  model_.RemoveObserver(&observer);
}

TEST_F(DeleterTest, ModelDeletesGoThroughTheDeleterWhichRefusesQuotesAndClosedModels) {
  const std::string layer = tree_.AddLayer(tree_.AddFolder(root_, "f"), "l");
  AddFeatures(layer, 10);
  CZuLogCapture capture;
  ASSERT_TRUE(model_.DeleteLayer(layer));
  EXPECT_EQ(1, capture.Count("EndDelete: "));
  EXPECT_EQ(0, Count("SELECT COUNT(*) FROM shape"));
  CLayerBatchDeleter deleter(&model_);
  deleter.BeginDelete(false, nullptr);
  EXPECT_FALSE(deleter.BatchDeleteLayer("it's"));  // refused before it reaches SQL
  deleter.EndDelete();
  EXPECT_EQ(1, capture.Count("refused uuid"));

  CSpatialiteDBDataModel closed;
  CLayerBatchDeleter unusable(&closed);
  EXPECT_EQ(1, capture.Count("[CLayerBatchDeleter] " + Utf8ToLocal("DBDataModel未建立")));
  unusable.BeginDelete(false, nullptr);
  EXPECT_FALSE(unusable.BatchDeleteLayer("x"));
  EXPECT_FALSE(CLayerBatchDeleter(nullptr).BatchDeleteFolder("x"));
}
