#include "EntityEventCounter.h"

#include <chrono>

#include "EventObject.h"
#include "IAnnotationSpatialEngine.h"

CEntityEventCounter::CEntityEventCounter(int engineId) : engineId_(engineId) {
  CEventKernelSingleton::GetInstance()->RegisterEventObserver(this);
}

CEntityEventCounter::~CEntityEventCounter() {
  CEventKernelSingleton::GetInstance()->UnRegisterEventObserver(this);
}

bool CEntityEventCounter::OnEvent(const CEventObject* event) {
  const auto* state = dynamic_cast<const CStateEventObject*>(event);
  if (state == nullptr || state->GetStateType() != IAnnotationSpatialEngine::kStateType ||
      state->GetSenderID() != engineId_) {
    return false;
  }
  {
    std::lock_guard<std::mutex> guard(mutex_);
    if (state->GetEventCode() == IAnnotationSpatialEngine::kEventEntityCreated) {
      ++entities_;
    } else if (state->GetEventCode() == IAnnotationSpatialEngine::kEventPassChanged) {
      ++passes_;
    } else {
      return false;
    }
  }
  changed_.notify_all();
  return false;
}

int CEntityEventCounter::EntitiesBuilt() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return entities_;
}

int CEntityEventCounter::PassesChanged() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return passes_;
}

int CEntityEventCounter::WaitForNews(int seen, int ms) const {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait_for(lock, std::chrono::milliseconds(ms),
                    [&] { return entities_ + passes_ != seen; });
  return entities_ + passes_;
}
