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
  ForgetInherited();
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
  ForgetInherited();
}

void CNodeCacheCalculator::SetLOrderChange(const std::string& uuid, int order) {
  CCriticalLockGuard guard(lock_.get());
  cache_[uuid].order = order;
  ForgetInherited();
}

void CNodeCacheCalculator::SetLVisibleChange(const std::string& uuid, bool visible) {
  CCriticalLockGuard guard(lock_.get());
  auto it = cache_.find(uuid);
  if (it == cache_.end()) return;
  it->second.attribute.SetVisible(visible);
  ForgetInherited();
}

void CNodeCacheCalculator::SetLLevelChange(const CLayerOption& option) {
  CCriticalLockGuard guard(lock_.get());
  auto it = cache_.find(option.GetUUID());
  if (it == cache_.end()) return;
  it->second.attribute.SetLevel(static_cast<char>(option.GetMinLevel()),
                                static_cast<char>(option.GetMaxLevel()));
  it->second.attribute.SetLevel(static_cast<char>(option.GetMinNameLevel()),
                                static_cast<char>(option.GetMaxNameLevel()));
  ForgetInherited();
}

void CNodeCacheCalculator::SetLParentChange(const std::string&) {
  // The chains of every layer below the node changed; which ones those are would cost a walk.
  CCriticalLockGuard guard(lock_.get());
  ForgetInherited();
}

void CNodeCacheCalculator::ForgetInherited() {
  inherited_.clear();
  ++generation_;
}

void CNodeCacheCalculator::Refresh() {
  if (IsCalculating()) {
    {
      // Also when the refresh is refused: the caller changed the tree.
      CCriticalLockGuard guard(lock_.get());
      ForgetInherited();
    }
    ZuLOG << "[CNodeCacheCalculator::Refresh] " << Utf8ToLocal("Node缓存进行中");
    return;
  }
  {
    CCriticalLockGuard guard(lock_.get());
    cache_.clear();
    ForgetInherited();
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

CNodeCacheCalculator::Inherited CNodeCacheCalculator::InheritedFrom(const std::string& parent) {
  uint64_t generation = 0;
  {
    CCriticalLockGuard guard(lock_.get());
    auto it = inherited_.find(parent);
    if (it != inherited_.end()) return it->second;
    generation = generation_;
  }
  // The chain a feature's ancestor walk takes: it reads its parent as a layer, so a parent that
  // is no layer ends the chain at once, and a broken chain (a cycle) leaves it empty.
  std::list<std::string> chain;
  if (!parent.empty()) {
    if (model_->QueryNodeKind(parent) != NODE_KIND_LAYER) {
      chain.push_back(parent);
    } else if (model_->QueryAncestorUUIDs(parent, chain)) {
      chain.push_back(parent);
    }
  }
  Inherited inherited;
  CCriticalLockGuard guard(lock_.get());
  bool cut = false;
  for (const std::string& ancestor : chain) {
    auto it = cache_.find(ancestor);
    const Entry entry = it == cache_.end() ? Entry() : it->second;
    if (!cut) {
      inherited.attribute += entry.attribute;
      cut = !entry.attribute.IsVisible();
    }
    inherited.orders.push_back(entry.order);
  }
  // Kept only when no change reached the cache meanwhile; otherwise it may mix old and new values.
  if (generation == generation_) inherited_.emplace(parent, inherited);
  return inherited;
}

CNodeOrder CNodeCacheCalculator::GetEntityOrder(const std::string& uuid) {
  CNodeOrder order;
  if (model_ == nullptr) return order;
  IAnnotationDBDataModel::FeatureLink link;
  if (model_->QueryFeatureLink(uuid, link, true)) {
    CNodeOrder key(InheritedFrom(link.parentUuid).orders);
    key.PushBack(link.orderNum);
    return key;
  }
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
                                                           CNodeOrder* order,
                                                           E_ANNOTATION_TYPE* type) {
  CNodeAttribute accumulator;
  if (model_ == nullptr) {
    accumulator.SetVisible(false);
    return accumulator;
  }
  IAnnotationDBDataModel::FeatureLink link;
  if (model_->QueryFeatureLink(uuid, link, order != nullptr)) {
    return GetVisibleLinkOrder(link, order, type);
  }
  // Folders and layers, and models that cannot read a feature's link in one go.
  if (!model_->IsNodeVisible(uuid)) {
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

CNodeAttribute CNodeCacheCalculator::GetVisibleLinkOrder(
    const IAnnotationDBDataModel::FeatureLink& link, CNodeOrder* order, E_ANNOTATION_TYPE* type) {
  if (type != nullptr) *type = static_cast<E_ANNOTATION_TYPE>(link.type);
  if (!link.checked) {
    CNodeAttribute hidden;
    hidden.SetVisible(false);
    return hidden;
  }
  Inherited inherited = InheritedFrom(link.parentUuid);
  if (order != nullptr && inherited.attribute.IsVisible()) {
    CNodeOrder key(std::move(inherited.orders));
    key.PushBack(link.orderNum);
    *order = std::move(key);
  }
  return inherited.attribute;
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
