#include "SubtreeExtent.h"

#include <algorithm>
#include <vector>

#include "ChildLister.h"
#include "IAnnotationDBDataModel.h"

namespace {

bool IsZero(const EXTENT& extent) {
  return extent.min_x == 0 && extent.min_y == 0 && extent.max_x == 0 && extent.max_y == 0;
}

void Grow(const EXTENT& box, EXTENT* extent, bool* found) {
  // A layer without features stores the inverted extent: nothing to add.
  if (box.min_x > box.max_x || box.min_y > box.max_y) return;
  if (!*found) {
    *extent = box;
    *found = true;
    return;
  }
  extent->min_x = std::min(extent->min_x, box.min_x);
  extent->min_y = std::min(extent->min_y, box.min_y);
  extent->max_x = std::max(extent->max_x, box.max_x);
  extent->max_y = std::max(extent->max_y, box.max_y);
}

void GrowBelow(IAnnotationDBDataModel* model, const std::string& uuid, E_NODE_KIND kind,
               EXTENT* extent, bool* found) {
  bool storedExtent = false;
  if (kind == NODE_KIND_LAYER) {
    const EXTENT stored = model->QueryLayerOption(uuid).GetExtent();
    storedExtent = !IsZero(stored);
    if (storedExtent) Grow(stored, extent, found);
  }
  // Features are listed only where the stored extent is missing: their boxes are one query each.
  CChildLister lister(kind == NODE_KIND_LAYER && !storedExtent, false);
  std::vector<CChildLister::Child> children;
  lister.List(model, uuid, kind, &children);
  for (const CChildLister::Child& child : children) {
    if (child.kind == NODE_KIND_FEATURE) {
      // All zero is what the model answers for a feature without geometry (and for a point at
      // exactly 0,0, which the union of its neighbours rarely misses by much).
      const EXTENT box = model->QueryBoundingBox(child.uuid);
      if (!IsZero(box)) Grow(box, extent, found);
    } else {
      GrowBelow(model, child.uuid, child.kind, extent, found);
    }
  }
}

}  // namespace

bool CSubtreeExtent::Compute(IAnnotationDBDataModel* model, const std::string& uuid,
                             E_NODE_KIND kind, EXTENT* extent) {
  bool found = false;
  GrowBelow(model, uuid, kind, extent, &found);
  return found;
}
