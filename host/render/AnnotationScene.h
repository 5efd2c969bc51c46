// CAnnotationScene holds the drawables attached to one view of the host's renderer, filed by key
// (the feature's uuid), and hands views and tools what to draw at a display level, back to front.
//
// One key holds one drawable. When several objects attach the same key (an object being retired
// while its successor is already attached), the newest owner wins: Attach by a newer owner takes
// the key over, Attach by an older owner is refused, and UpdateDisplay and Detach act only for the
// owner that holds the key. A late Detach from a retired object therefore never removes its
// successor's drawable.
//
// Thread safety: every operation may be called from any thread. One internal mutex guards the
// scene; it is never held while calling out, so callers may hold their own locks around calls.
#ifndef ZU_ANNOTATION_SCENE_H
#define ZU_ANNOTATION_SCENE_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "SceneDrawable.h"
#include "ZuExport.h"

class ZU_EXPORT CAnnotationScene {
 public:
  // Counters of what happened to the scene since it was made (or last cleared).
  struct Statistics {
    int64_t attached = 0;   // keys added
    int64_t replaced = 0;   // Attach by the owner already holding the key
    int64_t takenOver = 0;  // Attach by a newer owner of a held key
    int64_t refused = 0;    // Attach by an older owner of a held key
    int64_t detached = 0;   // keys removed by Detach
  };

  explicit CAnnotationScene(int id);
  CAnnotationScene(const CAnnotationScene&) = delete;
  CAnnotationScene& operator=(const CAnnotationScene&) = delete;

  int GetID() const { return id_; }

  // Adds the drawable, or replaces the one its owner (or an older owner) filed under the same key.
  // False when a newer owner holds the key.
  bool Attach(const CSceneDrawable& drawable);
  // Changes how a held drawable is displayed. False unless `owner` holds `key`.
  bool UpdateDisplay(const std::string& key, int64_t owner, const CSceneDisplay& display);
  // Removes the drawable. False unless `owner` holds `key`.
  bool Detach(const std::string& key, int64_t owner);

  bool Contains(const std::string& key) const;
  // Copies the drawable filed under `key`; false when there is none.
  bool GetDrawable(const std::string& key, CSceneDrawable* drawable) const;
  // The owner holding `key`, or 0.
  int64_t GetOwner(const std::string& key) const;
  int GetCount() const;
  std::vector<std::string> GetKeys() const;
  // What to draw at `level`: copies of the drawables shown there, ascending by z value (equal
  // values by key), so that drawing them in order puts higher values on top.
  std::vector<CSceneDrawable> Collect(int level) const;

  Statistics GetStatistics() const;
  // Removes every drawable and resets the statistics.
  void Clear();

 private:
  const int id_;
  mutable std::mutex mutex_;
  std::map<std::string, CSceneDrawable> drawables_;
  Statistics statistics_;
};

#endif  // ZU_ANNOTATION_SCENE_H
