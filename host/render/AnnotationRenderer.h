// CAnnotationRenderer is the host renderer's registry of scenes, one per view. Objects that draw
// into a view attach to the scene of the view's id (the annotation engines pass their attach
// parameter as that id).
//
// Ownership: the renderer owns its scenes; a scene lives until the process ends, so a scene
// pointer, once handed out, stays valid.
//
// Thread safety: every operation may be called from any thread.
#ifndef ZU_ANNOTATION_RENDERER_H
#define ZU_ANNOTATION_RENDERER_H

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "AnnotationScene.h"
#include "ZuExport.h"

class ZU_EXPORT CAnnotationRenderer {
 public:
  static CAnnotationRenderer* GetInstance();

  CAnnotationRenderer(const CAnnotationRenderer&) = delete;
  CAnnotationRenderer& operator=(const CAnnotationRenderer&) = delete;

  // The scene of view `id`, made on first use.
  CAnnotationScene* GetScene(int id);
  // The scene of view `id`, or null when none was made.
  CAnnotationScene* FindScene(int id) const;
  std::vector<int> GetSceneIDs() const;

 private:
  CAnnotationRenderer() = default;

  mutable std::mutex mutex_;
  std::map<int, std::unique_ptr<CAnnotationScene>> scenes_;
};

#endif  // ZU_ANNOTATION_RENDERER_H
