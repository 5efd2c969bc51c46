#include "EngineProbes.h"

#include <algorithm>
#include <chrono>

#include "EventObject.h"
#include "IAnnotationSpatialEngine.h"

CStateEventCounter::CStateEventCounter() {
  CEventKernelSingleton::GetInstance()->RegisterEventObserver(this);
}

CStateEventCounter::~CStateEventCounter() {
  CEventKernelSingleton::GetInstance()->UnRegisterEventObserver(this);
}

bool CStateEventCounter::OnEvent(const CEventObject* event) {
  const auto* state = dynamic_cast<const CStateEventObject*>(event);
  if (state == nullptr || state->GetStateType() != IAnnotationSpatialEngine::kStateType) {
    return false;
  }
  std::lock_guard<std::mutex> guard(mutex_);
  values_[state->GetEventCode()].push_back(state->GetCurrentState().toString().toStdString());
  senders_[state->GetEventCode()].push_back(state->GetSenderID());
  changed_.notify_all();
  return false;
}

int CStateEventCounter::Count(int code) const {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = values_.find(code);
  return it == values_.end() ? 0 : static_cast<int>(it->second.size());
}

std::vector<std::string> CStateEventCounter::Values(int code) const {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = values_.find(code);
  return it == values_.end() ? std::vector<std::string>() : it->second;
}

std::vector<int> CStateEventCounter::Senders(int code) const {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = senders_.find(code);
  return it == senders_.end() ? std::vector<int>() : it->second;
}

bool CStateEventCounter::WaitForCount(int code, int count, int ms) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, std::chrono::milliseconds(ms), [&] {
    auto it = values_.find(code);
    return it != values_.end() && static_cast<int>(it->second.size()) >= count;
  });
}

bool CStateEventCounter::WaitForValues(int code, const std::set<std::string>& values,
                                       int ms) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return changed_.wait_for(lock, std::chrono::milliseconds(ms), [&] {
    auto it = values_.find(code);
    if (it == values_.end()) return values.empty();
    const std::set<std::string> seen(it->second.begin(), it->second.end());
    return std::includes(seen.begin(), seen.end(), values.begin(), values.end());
  });
}

void CStateEventCounter::Clear() {
  std::lock_guard<std::mutex> guard(mutex_);
  values_.clear();
  senders_.clear();
}

class CLogWaiter::Sink : public IZuLogSink {
 public:
  void Write(const ZuLogRecord& record) override {
    std::unique_lock<std::mutex> lock(mutex);
    lines.push_back(record.text);
    changed.notify_all();
    if (hold.empty() || record.text.find(hold) == std::string::npos) return;
    hold.clear();
    released = false;
    changed.wait_for(lock, std::chrono::seconds(10), [this] { return released; });
  }
  int CountLocked(const std::string& fragment) const {
    int count = 0;
    for (const std::string& line : lines) count += line.find(fragment) != std::string::npos;
    return count;
  }

  mutable std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::string> lines;
  std::string hold;
  bool released = false;
};

CLogWaiter::CLogWaiter() : sink_(std::make_shared<Sink>()) { previous_ = CZuLog::SetSink(sink_); }

CLogWaiter::~CLogWaiter() { CZuLog::SetSink(previous_); }

int CLogWaiter::Count(const std::string& fragment) const {
  std::lock_guard<std::mutex> guard(sink_->mutex);
  return sink_->CountLocked(fragment);
}

std::vector<std::string> CLogWaiter::Lines() const {
  std::lock_guard<std::mutex> guard(sink_->mutex);
  return sink_->lines;
}

bool CLogWaiter::WaitForCount(const std::string& fragment, int count, int ms) const {
  std::unique_lock<std::mutex> lock(sink_->mutex);
  return sink_->changed.wait_for(lock, std::chrono::milliseconds(ms),
                                 [&] { return sink_->CountLocked(fragment) >= count; });
}

void CLogWaiter::HoldAt(const std::string& fragment) {
  std::lock_guard<std::mutex> guard(sink_->mutex);
  sink_->hold = fragment;
}

void CLogWaiter::Release() {
  std::lock_guard<std::mutex> guard(sink_->mutex);
  sink_->released = true;
  sink_->changed.notify_all();
}

void CListenerProbe::OnFeatureRemoved(const std::string& uuid) {
  removed.push_back(uuid);
  if (onRemoved) onRemoved(uuid);
}

void CListenerProbe::OnRangeChanged(const EXTENT& range) { ranges.push_back(range); }

EXTENT MakeExtent(double minX, double minY, double maxX, double maxY) {
  EXTENT extent;
  extent.min_x = minX;
  extent.min_y = minY;
  extent.max_x = maxX;
  extent.max_y = maxY;
  return extent;
}
