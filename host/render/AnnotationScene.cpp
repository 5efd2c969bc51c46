#include "AnnotationScene.h"

#include <algorithm>

CAnnotationScene::CAnnotationScene(int id) : id_(id) {}

bool CAnnotationScene::Attach(const CSceneDrawable& drawable) {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = drawables_.find(drawable.key);
  if (it == drawables_.end()) {
    drawables_.emplace(drawable.key, drawable);
    ++statistics_.attached;
    return true;
  }
  if (it->second.owner > drawable.owner) {
    ++statistics_.refused;
    return false;
  }
  if (it->second.owner == drawable.owner) {
    ++statistics_.replaced;
  } else {
    ++statistics_.takenOver;
  }
  it->second = drawable;
  return true;
}

bool CAnnotationScene::UpdateDisplay(const std::string& key, int64_t owner,
                                     const CSceneDisplay& display) {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = drawables_.find(key);
  if (it == drawables_.end() || it->second.owner != owner) return false;
  it->second.display = display;
  return true;
}

bool CAnnotationScene::Detach(const std::string& key, int64_t owner) {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = drawables_.find(key);
  if (it == drawables_.end() || it->second.owner != owner) return false;
  drawables_.erase(it);
  ++statistics_.detached;
  return true;
}

bool CAnnotationScene::Contains(const std::string& key) const {
  std::lock_guard<std::mutex> guard(mutex_);
  return drawables_.count(key) != 0;
}

bool CAnnotationScene::GetDrawable(const std::string& key, CSceneDrawable* drawable) const {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = drawables_.find(key);
  if (it == drawables_.end()) return false;
  if (drawable != nullptr) *drawable = it->second;
  return true;
}

int64_t CAnnotationScene::GetOwner(const std::string& key) const {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = drawables_.find(key);
  return it == drawables_.end() ? 0 : it->second.owner;
}

int CAnnotationScene::GetCount() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return static_cast<int>(drawables_.size());
}

std::vector<std::string> CAnnotationScene::GetKeys() const {
  std::lock_guard<std::mutex> guard(mutex_);
  std::vector<std::string> keys;
  keys.reserve(drawables_.size());
  for (const auto& entry : drawables_) keys.push_back(entry.first);
  return keys;
}

std::vector<CSceneDrawable> CAnnotationScene::Collect(int level) const {
  std::vector<CSceneDrawable> shown;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    for (const auto& entry : drawables_) {
      if (entry.second.display.IsShownAt(level)) shown.push_back(entry.second);
    }
  }
  // The map walk already yields key order; a stable sort keeps it among equal z values.
  std::stable_sort(shown.begin(), shown.end(),
                   [](const CSceneDrawable& a, const CSceneDrawable& b) {
                     return a.display.zValue < b.display.zValue;
                   });
  return shown;
}

CAnnotationScene::Statistics CAnnotationScene::GetStatistics() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return statistics_;
}

void CAnnotationScene::Clear() {
  std::lock_guard<std::mutex> guard(mutex_);
  drawables_.clear();
  statistics_ = Statistics();
}
