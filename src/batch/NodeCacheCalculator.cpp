#include "NodeCacheCalculator.h"

#include <chrono>

#include "CriticalLock.h"
#include "FolderOption.h"
#include "IAnnotationDBDataModel.h"
#include "LayerOption.h"
#include "TextConversion.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

CNodeCacheCalculator::CNodeCacheCalculator(IAnnotationDBDataModel* model)
    : model_(model), lock_(new CCriticalLock) {}

CNodeCacheCalculator::~CNodeCacheCalculator() {
  // The running walk receives 2 at its next callback and ends.
  calculating_.store(false, std::memory_order_relaxed);
  if (!IsStopped()) {
    RequestStop();
  }
  StopTask(-1);
}

void CNodeCacheCalculator::SetLChange(const CFolderOption& option) {
  CCriticalLockGuard guard(lock_.get());
  Entry& entry = cache_[option.GetUUID()];
  entry.order = option.GetOrderNum();
  entry.attribute.SetVisible(option.IsCheckedState());
}

void CNodeCacheCalculator::SetLChange(const CLayerOption& option) {
  CCriticalLockGuard guard(lock_.get());
  Entry& entry = cache_[option.GetUUID()];
  entry.order = option.GetOrderNum();
  entry.attribute.SetVisible(option.IsCheckedState());
  entry.attribute.SetLevel(static_cast<char>(option.GetMinLevel()),
                           static_cast<char>(option.GetMaxLevel()));
  entry.attribute.SetLevel(static_cast<char>(option.GetMinNameLevel()),
                           static_cast<char>(option.GetMaxNameLevel()));
}

void CNodeCacheCalculator::SetLOrderChange(const std::string& uuid, int order) {
  CCriticalLockGuard guard(lock_.get());
  cache_[uuid].order = order;
}

void CNodeCacheCalculator::SetLVisibleChange(const std::string& uuid, bool visible) {
  CCriticalLockGuard guard(lock_.get());
  auto it = cache_.find(uuid);
  if (it != cache_.end()) it->second.attribute.SetVisible(visible);
}

void CNodeCacheCalculator::SetLLevelChange(const CLayerOption& option) {
  CCriticalLockGuard guard(lock_.get());
  auto it = cache_.find(option.GetUUID());
  if (it == cache_.end()) return;
  it->second.attribute.SetLevel(static_cast<char>(option.GetMinLevel()),
                                static_cast<char>(option.GetMaxLevel()));
  it->second.attribute.SetLevel(static_cast<char>(option.GetMinNameLevel()),
                                static_cast<char>(option.GetMaxNameLevel()));
}

void CNodeCacheCalculator::Refresh() {
  if (IsCalculating()) {
    ZuLOG << "[CNodeCacheCalculator::Refresh] " << Utf8ToLocal("Node缓存进行中");
    return;
  }
  {
    CCriticalLockGuard guard(lock_.get());
    cache_.clear();
  }
  StartTask(std::string(), 120, 102400);
}

CNodeAttribute CNodeCacheCalculator::GetLAttribute(const std::string& uuid) {
  CCriticalLockGuard guard(lock_.get());
  auto it = cache_.find(uuid);
  return it == cache_.end() ? CNodeAttribute() : it->second.attribute;
}

int CNodeCacheCalculator::GetLOrder(const std::string& uuid) const {
  CCriticalLockGuard guard(lock_.get());
  auto it = cache_.find(uuid);
  return it == cache_.end() ? -1 : it->second.order;
}

int CNodeCacheCalculator::GetCacheCount() const {
  CCriticalLockGuard guard(lock_.get());
  return static_cast<int>(cache_.size());
}

CNodeOrder CNodeCacheCalculator::GetEntityOrder(const std::string& uuid) {
  CNodeOrder order;
  if (model_ == nullptr) return order;
  std::list<std::string> ancestors;
  model_->QueryAncestorUUIDs(uuid, ancestors);
  for (const std::string& ancestor : ancestors) order.PushBack(GetLOrder(ancestor));
  order.PushBack(model_->QueryOrderNum(model_->QueryNodeKind(uuid), uuid));
  return order;
}

CNodeAttribute CNodeCacheCalculator::GetEntityAttribute(const std::string& uuid) {
  return GetVisibleEntityOrder(uuid, nullptr);
}

CNodeAttribute CNodeCacheCalculator::GetVisibleEntityOrder(const std::string& uuid,
                                                           CNodeOrder* order) {
  CNodeAttribute accumulator;
  if (model_ == nullptr || !model_->IsNodeVisible(uuid)) {
    accumulator.SetVisible(false);
    return accumulator;
  }
  std::list<std::string> ancestors;
  model_->QueryAncestorUUIDs(uuid, ancestors);
  for (const std::string& ancestor : ancestors) {
    const CNodeAttribute own = GetLAttribute(ancestor);
    accumulator += own;
    if (!own.IsVisible()) break;
  }
  if (order != nullptr && accumulator.IsVisible()) {
    CNodeOrder key;
    for (const std::string& ancestor : ancestors) key.PushBack(GetLOrder(ancestor));
    key.PushBack(model_->QueryOrderNum(model_->QueryNodeKind(uuid), uuid));
    *order = std::move(key);
  }
  return accumulator;
}

void CNodeCacheCalculator::OnRunTask() {
  const auto start = std::chrono::steady_clock::now();
  ZuLOG << "[CNodeCacheCalculator] " << Utf8ToLocal("开启一次Node缓存更新") << " >>>>>";
  calculating_.store(true, std::memory_order_relaxed);
  if (model_ != nullptr) model_->Travel(this);
  calculating_.store(false, std::memory_order_relaxed);
  const double ms =
      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  ZuLOG << "[CNodeCacheCalculator] " << Utf8ToLocal("一次Node缓存更新完成") << " <<<<< time-ms="
        << ms << Utf8ToLocal(" 缓存个数=") << GetCacheCount();
}

IAnnotationDBObjectVisitor::E_HANDLE_TYPE CNodeCacheCalculator::ApplyFolder(
    IAnnotationDBDataModel*, const std::list<std::string>&, const std::string&,
    const CFolderOption& option) {
  if (!IsCalculating()) return HANDLE_TYPE_STOP;
  SetLChange(option);
  return HANDLE_TYPE_CONTINUE;
}

IAnnotationDBObjectVisitor::E_HANDLE_TYPE CNodeCacheCalculator::ApplyLayer(
    IAnnotationDBDataModel*, const std::list<std::string>&, const std::string& uuid,
    const CLayerOption& option) {
  if (!IsCalculating()) return HANDLE_TYPE_STOP;
  SetLChange(option);
  return model_->IsLayerExistLayer(uuid) ? HANDLE_TYPE_CONTINUE : HANDLE_TYPE_SKIP_CHILDREN;
}
