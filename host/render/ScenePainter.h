// CScenePainter draws what a scene shows at one display level into an image, for tools that need
// a picture of a view (previews, checks, exports).
//
// Shapes are drawn back to front with the first pen and brush style of each drawable: points as
// dots (or as the image of their icon style, when it names a readable image file), line strings
// as polylines, polygons as filled rings (inner rings become holes). A drawable without a pen is
// outlined in black, one without a brush is not filled, and a dot without a brush takes the pen's
// colour. The pen's and brush's patterns map onto Qt's dash and hatch patterns.
//
// Names are drawn after every shape, so that no shape covers a label, with the drawable's label
// style (font, size, decorations, angle, text colour), at the display levels where the name is
// shown. The label's background and outline colours are not drawn: stored styles keep colours
// without alpha, so an unset or transparent colour comes back as opaque black and cannot be told
// from a chosen one.
// Names never overlap: the largest shapes place theirs first (the topmost first among equals), and
// a name that would cover one already placed is left out.
// Text needs fonts, which Qt only provides to a QGuiApplication: without one (a plain
// QCoreApplication or none) names are skipped and shapes are still drawn. A tool with no display
// makes a QGuiApplication on a platform that needs no display.
//
// Thread safety: stateless; the scene is read through its own lock, the image is the caller's.
// Drawing names uses Qt's font database, which belongs to the thread of the QGuiApplication.
#ifndef ZU_SCENE_PAINTER_H
#define ZU_SCENE_PAINTER_H

#include <QImage>
#include <QRectF>

#include "AnnotationScene.h"
#include "ZuExport.h"

class ZU_EXPORT CScenePainter {
 public:
  // What one Paint did.
  struct Result {
    int shapes = 0;  // drawables whose shape was drawn
    int labels = 0;  // names drawn (names left out for overlapping are not counted)
    int icons = 0;   // points drawn with their icon's image
  };

  // Draws the drawables of `scene` shown at `level`, back to front, mapping `extent` (x from
  // longitude, y from latitude; the top of the image is the largest latitude) onto the whole
  // image. Returns how many drawables were drawn; -1 when the image or the extent is empty.
  static int Paint(const CAnnotationScene& scene, int level, const QRectF& extent, QImage* image);
  // The same, telling shapes, names and icons apart. False when the image or extent is empty.
  static bool Paint(const CAnnotationScene& scene, int level, const QRectF& extent, QImage* image,
                    Result* result);
  // Whether names can be drawn in this process (a QGuiApplication exists).
  static bool CanDrawText();
};

#endif  // ZU_SCENE_PAINTER_H
