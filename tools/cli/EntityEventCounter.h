// CEntityEventCounter listens, through the host's event kernel, to the state events one spatial
// engine sends: 551 for every entity it builds, 552 for every pass that changed entities. Tools
// count them and wait on them to learn when a view is ready to draw.
//
// Threading contract: the events arrive on the engine's threads; every operation may be called
// from any thread. The counter registers itself on construction and unregisters on destruction,
// so it must be destroyed before the engine's module goes.
#ifndef ANNOTATIONLAYER_CLI_ENTITY_EVENT_COUNTER_H
#define ANNOTATIONLAYER_CLI_ENTITY_EVENT_COUNTER_H

#include <condition_variable>
#include <mutex>

#include "EventKernel.h"

class CEntityEventCounter : public IEventObserver {
 public:
  // Counts the events of the engine with id `engineId`.
  explicit CEntityEventCounter(int engineId);
  ~CEntityEventCounter() override;
  CEntityEventCounter(const CEntityEventCounter&) = delete;
  CEntityEventCounter& operator=(const CEntityEventCounter&) = delete;

  bool OnEvent(const CEventObject* event) override;

  int EntitiesBuilt() const;  // 551 events so far
  int PassesChanged() const;  // 552 events so far
  // Waits until the number of events of either kind differs from `seen` (their sum), or `ms` ran
  // out; returns the current sum.
  int WaitForNews(int seen, int ms) const;

 private:
  const int engineId_;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  int entities_ = 0;
  int passes_ = 0;
};

#endif  // ANNOTATIONLAYER_CLI_ENTITY_EVENT_COUNTER_H
