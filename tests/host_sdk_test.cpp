// The host SDK libraries: log sinks and the event kernel.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>
#include <vector>

#include "EventKernel.h"
#include "TempDir.h"
#include "ZuLog.h"

TEST(ZuLogTest, CaptureKeepsLevelsCodesAndTextFromEveryThreadAndRestoresTheSink) {
  std::shared_ptr<IZuLogSink> before = CZuLog::GetSink();
  {
    CZuLogCapture capture;
    ZuLogWarn << "[Warn]:" << 1.5;
    ZuLogError(-1) << "[Error]:" << std::string("boom");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([t] {
        for (int i = 0; i < 100; ++i) ZuLOG << "thread " << t;
      });
    }
    for (auto& thread : threads) thread.join();
    const std::vector<ZuLogRecord> records = capture.Sink().Records();
    ASSERT_EQ(402u, records.size());
    EXPECT_EQ("[Warn]:1.5", records[0].text);
    EXPECT_EQ(ZuLogLevel::Error, records[1].level);
    EXPECT_EQ(-1, records[1].code);
    EXPECT_EQ("[Error]:boom", records[1].text);
    EXPECT_EQ(1, capture.Count("[Warn]:"));
    EXPECT_NE(before, CZuLog::GetSink());
  }
  EXPECT_EQ(before, CZuLog::GetSink());
}

TEST(ZuLogTest, FileSinkWritesOneLinePerMessageWithBytesUnchanged) {
  CTempDir dir;
  const std::string path = dir.File("log.txt");
  auto sink = std::make_shared<CZuLogFileSink>(path);
  ASSERT_TRUE(sink->IsOpen());
  std::shared_ptr<IZuLogSink> previous = CZuLog::SetSink(sink);
  ZuLogError(-1) << "[Tag]:" << "\xc6\xf4\xb6\xaf";  // GB18030 bytes pass through
  ZuLOG << "second";
  CZuLog::SetSink(previous);
  EXPECT_EQ("ERROR(-1) [Tag]:\xc6\xf4\xb6\xaf\nINFO second\n", ReadFileBytes(path));
}

namespace {
class RecordingObserver : public IEventObserver {
 public:
  bool OnEvent(const CEventObject* event) override {
    const auto* state = dynamic_cast<const CStateEventObject*>(event);
    if (state != nullptr) {
      codes.push_back(state->GetEventCode());
      values.push_back(state->GetCurrentState().toString().toStdString());
    }
    return true;
  }
  std::vector<int> codes;
  std::vector<std::string> values;
};
}  // namespace

TEST(EventKernelTest, SynchronousDispatchToEveryObserver) {
  CEventKernel kernel;
  RecordingObserver first, second;
  EXPECT_FALSE(kernel.RegisterEventObserver(nullptr));
  EXPECT_TRUE(kernel.RegisterEventObserver(&first));
  EXPECT_FALSE(kernel.RegisterEventObserver(&first));
  EXPECT_TRUE(kernel.RegisterEventObserver(&second));
  CStateEventObject event(1623, 7, 551, QVariant(QString("uuid")));
  EXPECT_EQ(2, kernel.SendEvent(&event));
  EXPECT_EQ(std::vector<int>{551}, first.codes);
  EXPECT_EQ(std::vector<std::string>{"uuid"}, second.values);
  EXPECT_TRUE(kernel.UnRegisterEventObserver(&first));
  EXPECT_FALSE(kernel.UnRegisterEventObserver(&first));
  EXPECT_EQ(1, kernel.SendEvent(&event));
  EXPECT_EQ(1u, first.codes.size());
}

namespace {

// Stays inside its handler until opened (at most 10 s), so that a test can act while a delivery
// is in flight.
struct GateObserver : IEventObserver {
  bool OnEvent(const CEventObject*) override {
    inside.set_value();
    opened.wait_for(std::chrono::seconds(10));
    return false;
  }
  std::promise<void> inside, open;
  std::shared_future<void> opened = open.get_future().share();
};

// Unregisters itself from its own handler.
class SelfRemovingObserver : public IEventObserver {
 public:
  explicit SelfRemovingObserver(CEventKernel* kernel) : kernel_(kernel) {}
  bool OnEvent(const CEventObject*) override {
    removed = kernel_->UnRegisterEventObserver(this);
    return false;
  }
  bool removed = false;

 private:
  CEventKernel* kernel_;
};

}  // namespace

TEST(EventKernelTest, UnregisterWaitsForDeliveriesInFlightAndNoneStartsAfterIt) {
  CEventKernel kernel;
  GateObserver gate;
  RecordingObserver later;
  ASSERT_TRUE(kernel.RegisterEventObserver(&gate));
  ASSERT_TRUE(kernel.RegisterEventObserver(&later));
  CStateEventObject event(1623, 7, 551, QVariant(QString("uuid")));
  std::thread sender([&] { kernel.SendEvent(&event); });
  ASSERT_EQ(std::future_status::ready,
            gate.inside.get_future().wait_for(std::chrono::seconds(5)));
  // `later` was due after `gate` in the delivery under way; once unregistered it is not called.
  EXPECT_TRUE(kernel.UnRegisterEventObserver(&later));
  auto unregister = std::async(std::launch::async,
                               [&] { return kernel.UnRegisterEventObserver(&gate); });
  const bool returnedEarly =
      unregister.wait_for(std::chrono::milliseconds(200)) == std::future_status::ready;
  gate.open.set_value();
  sender.join();
  EXPECT_FALSE(returnedEarly) << "unregister returned while its observer was still being called";
  EXPECT_TRUE(unregister.get());
  EXPECT_TRUE(later.codes.empty());
}

TEST(EventKernelTest, AnObserverMayUnregisterItselfFromItsHandler) {
  // Sent from a thread of its own that shares everything it touches, so that a deadlock fails the
  // test instead of hanging the suite.
  auto kernel = std::make_shared<CEventKernel>();
  auto observer = std::make_shared<SelfRemovingObserver>(kernel.get());
  auto event = std::make_shared<CStateEventObject>(1623, 7, 552, QVariant());
  ASSERT_TRUE(kernel->RegisterEventObserver(observer.get()));
  auto done = std::make_shared<std::promise<int>>();
  std::thread([kernel, observer, event, done] { done->set_value(kernel->SendEvent(event.get())); })
      .detach();
  auto result = done->get_future();
  ASSERT_EQ(std::future_status::ready, result.wait_for(std::chrono::seconds(5)));
  EXPECT_EQ(1, result.get());
  EXPECT_TRUE(observer->removed);
  EXPECT_EQ(0, kernel->SendEvent(event.get()));
}
