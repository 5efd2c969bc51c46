// A module's link to the event kernel: it carries the module's observer (the module hears host
// events through it) and sends the module's own events to the kernel.
//
// The event module does not own the observer. Registering with the kernel is the owner's call
// (GetObserver() is what to register); the destructor unregisters it if the owner did not.
#ifndef ZU_EVENT_MODULE_H
#define ZU_EVENT_MODULE_H

#include "EventKernel.h"
#include "ZuExport.h"

class ZU_EXPORT CEventModule {
 public:
  explicit CEventModule(IEventObserver* observer);
  ~CEventModule();
  CEventModule(const CEventModule&) = delete;
  CEventModule& operator=(const CEventModule&) = delete;

  IEventObserver* GetObserver() const { return observer_; }
  // Sends the event through the kernel singleton; returns the number of observers reached.
  int SendEvent(const CEventObject* event);

 private:
  IEventObserver* observer_;
};

#endif  // ZU_EVENT_MODULE_H
