#include "AnnotationRenderer.h"

CAnnotationRenderer* CAnnotationRenderer::GetInstance() {
  static CAnnotationRenderer instance;
  return &instance;
}

CAnnotationScene* CAnnotationRenderer::GetScene(int id) {
  std::lock_guard<std::mutex> guard(mutex_);
  std::unique_ptr<CAnnotationScene>& scene = scenes_[id];
  if (!scene) scene.reset(new CAnnotationScene(id));
  return scene.get();
}

CAnnotationScene* CAnnotationRenderer::FindScene(int id) const {
  std::lock_guard<std::mutex> guard(mutex_);
  auto it = scenes_.find(id);
  return it == scenes_.end() ? nullptr : it->second.get();
}

std::vector<int> CAnnotationRenderer::GetSceneIDs() const {
  std::lock_guard<std::mutex> guard(mutex_);
  std::vector<int> ids;
  for (const auto& entry : scenes_) ids.push_back(entry.first);
  return ids;
}
