#include "EventKernel.h"

#include <algorithm>

bool CEventKernel::RegisterEventObserver(IEventObserver* observer) {
  if (observer == nullptr) return false;
  std::lock_guard<std::mutex> guard(mutex_);
  if (std::find(observers_.begin(), observers_.end(), observer) != observers_.end()) return false;
  observers_.push_back(observer);
  return true;
}

bool CEventKernel::UnRegisterEventObserver(IEventObserver* observer) {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = std::find(observers_.begin(), observers_.end(), observer);
  if (it == observers_.end()) return false;
  observers_.erase(it);
  return true;
}

bool CEventKernel::IsRegistered(IEventObserver* observer) const {
  std::lock_guard<std::mutex> guard(mutex_);
  return std::find(observers_.begin(), observers_.end(), observer) != observers_.end();
}

int CEventKernel::SendEvent(const CEventObject* event) {
  if (event == nullptr) return 0;
  std::vector<IEventObserver*> snapshot;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    snapshot = observers_;
  }
  for (IEventObserver* observer : snapshot) observer->OnEvent(event);
  return static_cast<int>(snapshot.size());
}

CEventKernel* CEventKernelSingleton::GetInstance() {
  static CEventKernel instance;
  return &instance;
}
