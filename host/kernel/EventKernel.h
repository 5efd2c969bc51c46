// The host's event kernel: observers register once and receive every event sent to the kernel,
// synchronously, on the sending thread.
//
// Thread safety: registration and dispatch may happen on any thread. Dispatch works on a snapshot
// of the observer list taken under the lock, so an observer may (un)register from its handler; an
// observer must stay alive until UnRegisterEventObserver has returned.
#ifndef ZU_EVENT_KERNEL_H
#define ZU_EVENT_KERNEL_H

#include <mutex>
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
  mutable std::mutex mutex_;
  std::vector<IEventObserver*> observers_;
};

class ZU_EXPORT CEventKernelSingleton {
 public:
  static CEventKernel* GetInstance();
};

#endif  // ZU_EVENT_KERNEL_H
