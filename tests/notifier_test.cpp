// The data model's observer registry.
#include <gtest/gtest.h>

#include <vector>

#include "AnnotationDBObjectNotifier.h"

namespace {

class RecordingObserver : public IAnnotationDBObjectObserver {
 public:
  explicit RecordingObserver(std::vector<std::string>* log, std::string name, bool consume = false)
      : log_(log), name_(std::move(name)), consume_(consume) {}
  bool OnFolderInserted(IAnnotationDBDataModel*, const std::string& uuid,
                        const std::string& extra) override {
    return Record("folder+", uuid, extra);
  }
  bool OnLayerInserted(IAnnotationDBDataModel*, const std::string& uuid,
                       const std::string& extra) override {
    return Record("layer+", uuid, extra);
  }
  bool OnFeatureInserted(IAnnotationDBDataModel*, const std::string& uuid,
                         const std::string& extra) override {
    return Record("feature+", uuid, extra);
  }
  bool OnFolderDeleted(IAnnotationDBDataModel*, const std::string& uuid,
                       const std::string& extra) override {
    return Record("folder-", uuid, extra);
  }
  bool OnLayerDeleted(IAnnotationDBDataModel*, const std::string& uuid,
                      const std::string& extra) override {
    return Record("layer-", uuid, extra);
  }
  bool OnFeatureDeleted(IAnnotationDBDataModel*, const std::string& uuid,
                        const std::string& extra) override {
    return Record("feature-", uuid, extra);
  }
  bool OnLayerModified(IAnnotationDBDataModel*, const std::string& uuid,
                       const std::string& extra) override {
    return Record("layer~", uuid, extra);
  }
  bool OnEnclosureDeleted(IAnnotationDBDataModel*, const std::string& uuid,
                          const std::string& extra) override {
    return Record("enclosure-", uuid, extra);
  }

 private:
  bool Record(const std::string& what, const std::string& uuid, const std::string& extra) {
    log_->push_back(name_ + ":" + what + uuid + "/" + extra);
    return consume_;
  }
  std::vector<std::string>* log_;
  std::string name_;
  bool consume_;
};

}  // namespace

TEST(NotifierTest, ForwardsTheSixInsertAndDeleteNotifications) {
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
  const std::vector<std::string> expected = {"o:folder+F/p", "o:layer+L/F", "o:feature+S/L",
                                             "o:folder-F/",  "o:layer-L/",  "o:feature-S/"};
  EXPECT_EQ(expected, log);
}

TEST(NotifierTest, OtherNotificationsReachNobody) {
  std::vector<std::string> log;
  RecordingObserver observer(&log, "o");
  CAnnotationDBObjectNotifier notifier;
  notifier.AddObserver(&observer);
  IAnnotationDBObjectNotifier& emitter = notifier;
  EXPECT_FALSE(emitter.OnLayerModified(nullptr, "L", ""));
  EXPECT_FALSE(emitter.OnEnclosureDeleted(nullptr, "E", ""));
  EXPECT_FALSE(emitter.OnDatabaseReset(nullptr, "", ""));
  EXPECT_TRUE(log.empty());
}

TEST(NotifierTest, RegistrationRules) {
  std::vector<std::string> log;
  RecordingObserver observer(&log, "o");
  CAnnotationDBObjectNotifier notifier;
  EXPECT_FALSE(notifier.AddObserver(nullptr));
  EXPECT_TRUE(notifier.AddObserver(&observer));
  EXPECT_TRUE(notifier.AddObserver(&observer));
  EXPECT_EQ(1, notifier.GetObserverCount());
  notifier.OnLayerInserted(nullptr, "L", "");
  EXPECT_EQ(1u, log.size());  // registered twice, told once
  EXPECT_FALSE(notifier.RemoveObserver(nullptr));
  EXPECT_TRUE(notifier.RemoveObserver(&observer));
  EXPECT_EQ(0, notifier.GetObserverCount());
  notifier.OnLayerInserted(nullptr, "L", "");
  EXPECT_EQ(1u, log.size());
}

TEST(NotifierTest, WalkStopsAtTheFirstObserverThatReturnsTrue) {
  std::vector<std::string> log;
  // Two observers in one array so that their address order is known.
  RecordingObserver pair[2] = {RecordingObserver(&log, "first", true),
                               RecordingObserver(&log, "second")};
  CAnnotationDBObjectNotifier notifier;
  notifier.AddObserver(&pair[1]);
  notifier.AddObserver(&pair[0]);
  EXPECT_TRUE(notifier.OnFeatureDeleted(nullptr, "S", ""));
  EXPECT_EQ(std::vector<std::string>{"first:feature-S/"}, log);
}
