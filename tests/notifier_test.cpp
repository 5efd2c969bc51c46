// The data model's observer registry.
#include <gtest/gtest.h>

#include <vector>

#include "AnnotationDBObjectNotifier.h"

namespace {

// Records "<name>:<what><uuid>/<extra>" for every notification it is told of.
class RecordingObserver : public IAnnotationDBObjectObserver {
 public:
  RecordingObserver(std::vector<std::string>* log, std::string name, bool consume = false)
      : log_(log), name_(std::move(name)), consume_(consume) {}
#define AL_RECORD(Method, what)                                                             \
  bool Method(IAnnotationDBDataModel*, const std::string& uuid, const std::string& extra) \
      override {                                                                            \
    log_->push_back(name_ + ":" what + uuid + "/" + extra);                                 \
    return consume_;                                                                        \
  }
  AL_RECORD(OnFolderInserted, "folder+")
  AL_RECORD(OnLayerInserted, "layer+")
  AL_RECORD(OnFeatureInserted, "feature+")
  AL_RECORD(OnFolderDeleted, "folder-")
  AL_RECORD(OnLayerDeleted, "layer-")
  AL_RECORD(OnFeatureDeleted, "feature-")
  AL_RECORD(OnLayerModified, "layer~")
  AL_RECORD(OnEnclosureDeleted, "enclosure-")
#undef AL_RECORD

 private:
  std::vector<std::string>* log_;
  std::string name_;
  bool consume_;
};

}  // namespace

TEST(NotifierTest, ForwardsTheSixInsertAndDeleteNotificationsOnly) {
  std::vector<std::string> log;
  RecordingObserver observer(&log, "o");
  CAnnotationDBObjectNotifier notifier;
  ASSERT_TRUE(notifier.AddObserver(&observer));
  notifier.OnFolderInserted(nullptr, "F", "p");
  notifier.OnLayerInserted(nullptr, "L", "F");
  notifier.OnFeatureInserted(nullptr, "S", "L");
  notifier.OnFolderDeleted(nullptr, "F", "");
  notifier.OnLayerDeleted(nullptr, "L", "");
  notifier.OnFeatureDeleted(nullptr, "S", "");
  IAnnotationDBObjectNotifier& emitter = notifier;  // the others reach nobody
  EXPECT_FALSE(emitter.OnLayerModified(nullptr, "L", ""));
  EXPECT_FALSE(emitter.OnEnclosureDeleted(nullptr, "E", ""));
  EXPECT_FALSE(emitter.OnDatabaseReset(nullptr, "", ""));
  const std::vector<std::string> expected = {"o:folder+F/p", "o:layer+L/F", "o:feature+S/L",
                                             "o:folder-F/",  "o:layer-L/",  "o:feature-S/"};
  EXPECT_EQ(expected, log);
}

TEST(NotifierTest, RegistrationRulesAndTheWalkStopsAtTheFirstObserverThatReturnsTrue) {
  std::vector<std::string> log;
  // Two observers in one array so that their address order is known.
  RecordingObserver pair[2] = {RecordingObserver(&log, "first", true),
                               RecordingObserver(&log, "second")};
  CAnnotationDBObjectNotifier notifier;
  EXPECT_FALSE(notifier.AddObserver(nullptr));
  EXPECT_TRUE(notifier.AddObserver(&pair[1]));
  EXPECT_TRUE(notifier.AddObserver(&pair[1]));
  EXPECT_EQ(1, notifier.GetObserverCount());
  EXPECT_FALSE(notifier.OnLayerInserted(nullptr, "L", ""));
  EXPECT_EQ(std::vector<std::string>{"second:layer+L/"}, log);  // registered twice, told once
  notifier.AddObserver(&pair[0]);
  log.clear();
  EXPECT_TRUE(notifier.OnFeatureDeleted(nullptr, "S", ""));
  EXPECT_EQ(std::vector<std::string>{"first:feature-S/"}, log);
  EXPECT_FALSE(notifier.RemoveObserver(nullptr));
  EXPECT_TRUE(notifier.RemoveObserver(&pair[0]));
  EXPECT_TRUE(notifier.RemoveObserver(&pair[1]));
  EXPECT_EQ(0, notifier.GetObserverCount());
  EXPECT_FALSE(notifier.OnLayerInserted(nullptr, "L", ""));
  EXPECT_EQ(1u, log.size());
}
