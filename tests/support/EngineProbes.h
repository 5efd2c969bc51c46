// Observers for tests of the spatial engine: they count what the engine announces and let a test
// wait, with a bound, until a count is reached.
#ifndef ANNOTATIONLAYER_TEST_ENGINE_PROBES_H
#define ANNOTATIONLAYER_TEST_ENGINE_PROBES_H

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "AnnotationLayerTypes.h"
#include "EventKernel.h"
#include "IAnnotationSpatialEngineListener.h"
#include "ZuLog.h"

// Registered with the host's event kernel for its lifetime; counts the state events of state type
// 1623 by event code. Events arrive on the engine's threads.
class CStateEventCounter : public IEventObserver {
 public:
  CStateEventCounter();
  ~CStateEventCounter() override;
  CStateEventCounter(const CStateEventCounter&) = delete;
  CStateEventCounter& operator=(const CStateEventCounter&) = delete;

  bool OnEvent(const CEventObject* event) override;

  int Count(int code) const;
  // The values (as text) of the events of `code`, in arrival order.
  std::vector<std::string> Values(int code) const;
  // The sender ids seen with `code`.
  std::vector<int> Senders(int code) const;
  // Waits until at least `count` events of `code` have arrived; false when `ms` ran out.
  bool WaitForCount(int code, int count, int ms = 20000) const;
  // Waits until events of `code` have carried every value in `values`; false when `ms` ran out.
  bool WaitForValues(int code, const std::set<std::string>& values, int ms = 20000) const;
  void Clear();

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::map<int, std::vector<std::string>> values_;
  std::map<int, std::vector<int>> senders_;
};

// Takes the log's place for its lifetime (like CZuLogCapture) and lets a test wait for lines.
class CLogWaiter {
 public:
  CLogWaiter();
  ~CLogWaiter();
  CLogWaiter(const CLogWaiter&) = delete;
  CLogWaiter& operator=(const CLogWaiter&) = delete;

  int Count(const std::string& fragment) const;
  std::vector<std::string> Lines() const;
  // Waits until at least `count` lines contain `fragment`; false when `ms` ran out.
  bool WaitForCount(const std::string& fragment, int count, int ms = 20000) const;
  // The next line containing `fragment` keeps its logging thread waiting (at most 10 s) until
  // Release(); every other thread's logging waits with it.
  void HoldAt(const std::string& fragment);
  void Release();

 private:
  class Sink;
  std::shared_ptr<Sink> sink_;
  std::shared_ptr<IZuLogSink> previous_;
};

// Counts the listener's notifications; they come on the host's (the test's) thread.
class CListenerProbe : public IAnnotationSpatialEngineListener {
 public:
  void OnRangeChanged(const EXTENT& range) override;
  void OnReset() override { ++resets; }
  void OnFeatureRemoved(const std::string& uuid) override;
  void OnFeatureChanged(const std::string& uuid) override { changed.push_back(uuid); }

  std::vector<EXTENT> ranges;
  int resets = 0;
  std::vector<std::string> removed;
  std::vector<std::string> changed;
  std::function<void(const std::string&)> onRemoved;  // called after recording, when set
};

// An extent from its four bounds.
EXTENT MakeExtent(double minX, double minY, double maxX, double maxY);

#endif  // ANNOTATIONLAYER_TEST_ENGINE_PROBES_H
