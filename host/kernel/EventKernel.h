// The host's event kernel: observers register once and receive every event sent to the kernel,
// synchronously, on the sending thread.
//
// Thread safety: registration and dispatch may happen on any thread; no lock is held while an
// observer runs. UnRegisterEventObserver returns only when no other thread is delivering to that
// observer any more, and no delivery starts after it returned, so the observer may be destroyed
// right after it. An observer may unregister itself (or register others) from its own handler:
// the delivery it is in is not waited for. It must not unregister itself from a handler while
// another thread waits on that handler, which would wait for each other.
#ifndef ZU_EVENT_KERNEL_H
#define ZU_EVENT_KERNEL_H

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "EventObject.h"
#include "ZuExport.h"

class ZU_EXPORT IEventObserver {
 public:
  virtual ~IEventObserver() = default;
  // Returns true when the event was consumed; later observers still hear of it.
  virtual bool OnEvent(const CEventObject* event) = 0;
};

class ZU_EXPORT CEventKernel {
 public:
  CEventKernel() = default;
  CEventKernel(const CEventKernel&) = delete;
  CEventKernel& operator=(const CEventKernel&) = delete;

  // False for null or an observer that is already registered.
  bool RegisterEventObserver(IEventObserver* observer);
  // False when the observer was not registered.
  bool UnRegisterEventObserver(IEventObserver* observer);
  bool IsRegistered(IEventObserver* observer) const;
  // Delivers the event to every registered observer in registration order; returns how many
  // observers were called.
  int SendEvent(const CEventObject* event);

 private:
  // One registration; deliveries hold it by shared pointer, so it outlives its removal.
  struct Entry {
    IEventObserver* observer;
    bool removed = false;
    std::vector<std::thread::id> delivering;  // threads inside observer->OnEvent now
  };

  mutable std::mutex mutex_;
  std::condition_variable delivered_;  // a delivery ended
  std::vector<std::shared_ptr<Entry>> observers_;
};

class ZU_EXPORT CEventKernelSingleton {
 public:
  static CEventKernel* GetInstance();
};

#endif  // ZU_EVENT_KERNEL_H
