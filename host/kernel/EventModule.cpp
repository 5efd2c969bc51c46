#include "EventModule.h"

CEventModule::CEventModule(IEventObserver* observer) : observer_(observer) {}

CEventModule::~CEventModule() {
  if (observer_ != nullptr) CEventKernelSingleton::GetInstance()->UnRegisterEventObserver(observer_);
}

int CEventModule::SendEvent(const CEventObject* event) {
  return CEventKernelSingleton::GetInstance()->SendEvent(event);
}
