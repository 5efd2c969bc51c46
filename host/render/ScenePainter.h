// CScenePainter draws what a scene shows at one display level into an image, for tools that need
// a picture of a view (previews, checks, exports). Points become dots, line strings polylines and
// polygons filled rings, with the first pen and brush style of each drawable (black pen and no
// fill when it has none; dots without a brush are filled with the pen's colour). Names are not drawn: text needs fonts, which only a GUI application
// provides.
//
// Thread safety: stateless; the scene is read through its own lock, the image is the caller's.
#ifndef ZU_SCENE_PAINTER_H
#define ZU_SCENE_PAINTER_H

#include <QImage>
#include <QRectF>

#include "AnnotationScene.h"
#include "ZuExport.h"

class ZU_EXPORT CScenePainter {
 public:
  // Draws the drawables of `scene` shown at `level`, back to front, mapping `extent` (x from
  // longitude, y from latitude; the top of the image is the largest latitude) onto the whole
  // image. Returns how many drawables were drawn; -1 when the image or the extent is empty.
  static int Paint(const CAnnotationScene& scene, int level, const QRectF& extent, QImage* image);
};

#endif  // ZU_SCENE_PAINTER_H
