#include "EventKernel.h"

#include <algorithm>

namespace {

template <typename Entries>
auto FindEntry(Entries& entries, IEventObserver* observer) {
  return std::find_if(entries.begin(), entries.end(),
                      [observer](const auto& entry) { return entry->observer == observer; });
}

}  // namespace

bool CEventKernel::RegisterEventObserver(IEventObserver* observer) {
  if (observer == nullptr) return false;
  std::lock_guard<std::mutex> guard(mutex_);
  if (FindEntry(observers_, observer) != observers_.end()) return false;
  auto entry = std::make_shared<Entry>();
  entry->observer = observer;
  observers_.push_back(std::move(entry));
  return true;
}

bool CEventKernel::UnRegisterEventObserver(IEventObserver* observer) {
  std::unique_lock<std::mutex> lock(mutex_);
  auto it = FindEntry(observers_, observer);
  if (it == observers_.end()) return false;
  std::shared_ptr<Entry> entry = *it;
  entry->removed = true;
  observers_.erase(it);
  // Deliveries on this thread are the caller's own handler (or one it is nested in): waiting for
  // them would never end.
  const std::thread::id self = std::this_thread::get_id();
  delivered_.wait(lock, [&] {
    return std::all_of(entry->delivering.begin(), entry->delivering.end(),
                       [self](std::thread::id id) { return id == self; });
  });
  return true;
}

bool CEventKernel::IsRegistered(IEventObserver* observer) const {
  std::lock_guard<std::mutex> guard(mutex_);
  return FindEntry(observers_, observer) != observers_.end();
}

int CEventKernel::SendEvent(const CEventObject* event) {
  if (event == nullptr) return 0;
  std::vector<std::shared_ptr<Entry>> snapshot;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    snapshot = observers_;
  }
  const std::thread::id self = std::this_thread::get_id();
  int called = 0;
  for (const std::shared_ptr<Entry>& entry : snapshot) {
    {
      // An observer unregistered since the snapshot is not called: it may be gone already.
      std::lock_guard<std::mutex> guard(mutex_);
      if (entry->removed) continue;
      entry->delivering.push_back(self);
    }
    // Ends the delivery even when the handler throws, so that no unregister waits for ever.
    struct Delivery {
      CEventKernel* kernel;
      Entry* entry;
      std::thread::id self;
      ~Delivery() {
        {
          std::lock_guard<std::mutex> guard(kernel->mutex_);
          entry->delivering.erase(
              std::find(entry->delivering.begin(), entry->delivering.end(), self));
        }
        kernel->delivered_.notify_all();
      }
    } delivery{this, entry.get(), self};
    entry->observer->OnEvent(event);
    ++called;
  }
  return called;
}

CEventKernel* CEventKernelSingleton::GetInstance() {
  static CEventKernel instance;
  return &instance;
}
