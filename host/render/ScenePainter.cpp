#include "ScenePainter.h"

#include <QBrush>
#include <QFont>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPolygonF>
#include <QTextCodec>
#include <QTransform>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "FeatureBrushStyle.h"
#include "FeatureIconStyle.h"
#include "FeatureLabelStyle.h"
#include "FeaturePenStyle.h"

namespace {

constexpr double kScreenDpi = 96.0;
constexpr double kMetresPerDegree = 111320.0;
constexpr double kDotRadius = 2.0;

template <typename Style>
const Style* FirstStyle(const CFeatureStyleSet& styles) {
  for (int i = 0; i < styles.GetCount(); ++i) {
    if (const auto* style = dynamic_cast<const Style*>(styles.At(i))) return style;
  }
  return nullptr;
}

Qt::PenStyle ToQtPenStyle(E_OGR_PEN pattern) {
  switch (pattern) {
    case OGR_PEN_NULL: return Qt::NoPen;
    case OGR_PEN_DASH:
    case OGR_PEN_LONG_DASH: return Qt::DashLine;
    case OGR_PEN_SHORT_DASH:
    case OGR_PEN_DOT:
    case OGR_PEN_ALTERNATE: return Qt::DotLine;
    case OGR_PEN_DASH_DOT: return Qt::DashDotLine;
    case OGR_PEN_DASH_DOT_DOT: return Qt::DashDotDotLine;
    default: return Qt::SolidLine;
  }
}

Qt::BrushStyle ToQtBrushStyle(E_OGR_BRUSH pattern) {
  switch (pattern) {
    case OGR_BRUSH_NULL: return Qt::NoBrush;
    case OGR_BRUSH_HORIZONTAL: return Qt::HorPattern;
    case OGR_BRUSH_VERTICAL: return Qt::VerPattern;
    case OGR_BRUSH_FDIAGONAL: return Qt::FDiagPattern;
    case OGR_BRUSH_BDIAGONAL: return Qt::BDiagPattern;
    case OGR_BRUSH_CROSS: return Qt::CrossPattern;
    case OGR_BRUSH_DIAGCROSS: return Qt::DiagCrossPattern;
    default: return Qt::SolidPattern;
  }
}

// Maps the extent onto the image and sizes in style units onto pixels.
class CViewTransform {
 public:
  CViewTransform(const QRectF& extent, const QImage& image)
      : extent_(extent),
        sx_(image.width() / extent.width()),
        sy_(image.height() / extent.height()) {}

  QPointF ToImage(const CVector3D& v) const {
    return QPointF((v.X() - extent_.left()) * sx_, (extent_.bottom() - v.Y()) * sy_);
  }
  QPolygonF ToImage(const CGeometryData& part) const {
    QPolygonF polygon;
    polygon.reserve(static_cast<int>(part.Vertices().size()));
    for (const CVector3D& v : part.Vertices()) polygon << ToImage(v);
    return polygon;
  }
  double ToPixels(double size, E_GCS_UNIT unit) const {
    switch (unit) {
      case GCS_UNIT_PIXEL: return size;
      case GCS_UNIT_MILLIMETER: return size * kScreenDpi / 25.4;
      case GCS_UNIT_CENTIMETER: return size * kScreenDpi / 2.54;
      case GCS_UNIT_INCH: return size * kScreenDpi;
      case GCS_UNIT_GROUND: return size / kMetresPerDegree * sx_;
      default: return size * kScreenDpi / 72.0;  // points
    }
  }

 private:
  QRectF extent_;
  double sx_;
  double sy_;
};

QPen MakePen(const CFeaturePenStyle* style, const CViewTransform& view) {
  if (style == nullptr) return QPen(QColor(Qt::black), 1.0);
  QPen pen(style->GetColor());
  pen.setWidthF(std::max(0.0, view.ToPixels(style->GetWidth(), style->GetUnit())));
  pen.setStyle(ToQtPenStyle(style->GetIdentify()));
  return pen;
}

QBrush MakeBrush(const CFeatureBrushStyle* style) {
  if (style == nullptr) return QBrush(Qt::NoBrush);
  return QBrush(style->GetForegroundColor(), ToQtBrushStyle(style->GetIdentify()));
}

// Where a name goes: beside a point, at the middle vertex of the longest line, at the centre of
// the largest ring's bounds; `size` is the extent of that part in pixels (width plus height).
// False when the shape has no vertex.
bool LabelAnchor(const CSceneDrawable& drawable, const CViewTransform& view, QPointF* anchor,
                 double* size) {
  const CGeometryData* best = nullptr;
  QRectF bestBounds;
  for (const CGeometryData& part : drawable.parts) {
    if (part.Vertices().empty()) continue;
    const QRectF bounds = view.ToImage(part).boundingRect();
    if (best == nullptr || bounds.width() + bounds.height() >
                               bestBounds.width() + bestBounds.height()) {
      best = &part;
      bestBounds = bounds;
    }
  }
  if (best == nullptr) return false;
  *size = bestBounds.width() + bestBounds.height();
  switch (drawable.geometryType) {
    case GEOMETRY_DATA_TYPE_POINT:
    case GEOMETRY_DATA_TYPE_MULTIPOINT:
      *anchor = view.ToImage(best->Vertices().front()) + QPointF(kDotRadius + 2, -kDotRadius - 2);
      return true;
    case GEOMETRY_DATA_TYPE_LINESTRING:
    case GEOMETRY_DATA_TYPE_MULTILINESTRING:
      *anchor = view.ToImage(best->Vertices()[best->Vertices().size() / 2]);
      return true;
    default:
      *anchor = bestBounds.center();
      return true;
  }
}

// Texts of the scene (names, font names, icon paths) are in the local code page, GBK.
QString ToUnicode(const std::string& local) {
  QTextCodec* codec = QTextCodec::codecForName("GBK");
  return codec != nullptr ? codec->toUnicode(local.c_str()) : QString::fromLocal8Bit(local.c_str());
}

// Images of icon styles, read once per Paint; a file that does not load is remembered as null.
class CIconImages {
 public:
  const QImage& Get(const std::string& url) {
    auto found = images_.find(url);
    if (found != images_.end()) return found->second;
    return images_.emplace(url, QImage(ToUnicode(url))).first->second;
  }

 private:
  std::map<std::string, QImage> images_;
};

bool DrawIcons(QPainter* painter, const CSceneDrawable& drawable, const CFeatureIconStyle* style,
               const CViewTransform& view, CIconImages* images) {
  if (style == nullptr || style->GetIconUrl().empty()) return false;
  const QImage& icon = images->Get(style->GetIconUrl());
  if (icon.isNull()) return false;
  const double scale = style->GetIconScale() > 0 ? style->GetIconScale() : 1.0;
  const QSizeF size(icon.width() * scale, icon.height() * scale);
  for (const CGeometryData& part : drawable.parts) {
    for (const CVector3D& v : part.Vertices()) {
      painter->save();
      painter->translate(view.ToImage(v));
      painter->rotate(-style->GetAngle());  // counter-clockwise, as on a map
      painter->drawImage(QRectF(QPointF(-size.width() / 2, -size.height() / 2), size), icon);
      painter->restore();
    }
  }
  return true;
}

// Draws the shape; false for geometry kinds that have no picture.
bool DrawShape(QPainter* painter, const CSceneDrawable& drawable, const CViewTransform& view,
               CIconImages* images, bool* drewIcon) {
  const CFeaturePenStyle* penStyle = FirstStyle<CFeaturePenStyle>(drawable.styles);
  const CFeatureBrushStyle* brushStyle = FirstStyle<CFeatureBrushStyle>(drawable.styles);
  const QPen pen = MakePen(penStyle, view);
  painter->setPen(pen);
  painter->setBrush(MakeBrush(brushStyle));
  *drewIcon = false;
  switch (drawable.geometryType) {
    case GEOMETRY_DATA_TYPE_POINT:
    case GEOMETRY_DATA_TYPE_MULTIPOINT:
      *drewIcon = DrawIcons(painter, drawable, FirstStyle<CFeatureIconStyle>(drawable.styles),
                            view, images);
      if (*drewIcon) return true;
      // A dot is a disc: without a brush of its own it is filled with the pen's colour.
      if (brushStyle == nullptr) painter->setBrush(QBrush(pen.color()));
      for (const CGeometryData& part : drawable.parts) {
        for (const CVector3D& v : part.Vertices()) {
          painter->drawEllipse(view.ToImage(v), kDotRadius, kDotRadius);
        }
      }
      return true;
    case GEOMETRY_DATA_TYPE_LINESTRING:
    case GEOMETRY_DATA_TYPE_MULTILINESTRING:
      for (const CGeometryData& part : drawable.parts) painter->drawPolyline(view.ToImage(part));
      return true;
    case GEOMETRY_DATA_TYPE_POLYGON:
    case GEOMETRY_DATA_TYPE_MULTIPOLYGON: {
      // Odd-even filling turns inner rings into holes whichever way they run.
      QPainterPath path;
      path.setFillRule(Qt::OddEvenFill);
      for (const CGeometryData& part : drawable.parts) {
        path.addPolygon(view.ToImage(part));
        path.closeSubpath();
      }
      painter->drawPath(path);
      return true;
    }
    default:
      return false;
  }
}

// Draws a name unless it would overlap one already placed (`placed`, image rectangles); true when
// drawn.
bool DrawLabel(QPainter* painter, const CSceneDrawable& drawable, const QPointF& anchor,
               const CViewTransform& view, std::vector<QRectF>* placed) {
  CFeatureLabelStyle fallback;
  const CFeatureLabelStyle* style = FirstStyle<CFeatureLabelStyle>(drawable.styles);
  if (style == nullptr) style = &fallback;
  QFont font;
  if (!style->GetFontName().empty()) font.setFamily(ToUnicode(style->GetFontName()));
  const double pixels = view.ToPixels(style->GetSize(), style->GetUnit());
  font.setPixelSize(std::max(4, std::min(200, static_cast<int>(pixels + 0.5))));
  font.setBold(style->IsBold());
  font.setItalic(style->IsItalic());
  font.setUnderline(style->IsUnderline());
  font.setStrikeOut(style->IsStrikethrought());

  QPainterPath path;
  path.addText(QPointF(0, 0), font, ToUnicode(drawable.name));
  const QRectF bounds = path.boundingRect().adjusted(-2, -1, 2, 1);
  // Points keep their name beside them; other names are centred on their anchor.
  const bool isPoint = drawable.geometryType == GEOMETRY_DATA_TYPE_POINT ||
                       drawable.geometryType == GEOMETRY_DATA_TYPE_MULTIPOINT;
  QTransform place;
  place.translate(anchor.x(), anchor.y());
  place.rotate(-style->GetAngle());
  if (!isPoint) place.translate(-bounds.center().x(), -bounds.center().y());
  QRectF area = place.mapRect(bounds);
  // A name stays whole inside the picture: moved in from the edge it would cross, left out when
  // it is larger than the picture.
  const QRectF frame(0, 0, painter->device()->width(), painter->device()->height());
  if (area.width() > frame.width() || area.height() > frame.height()) return false;
  const double dx = area.left() < frame.left()     ? frame.left() - area.left()
                    : area.right() > frame.right() ? frame.right() - area.right()
                                                   : 0.0;
  const double dy = area.top() < frame.top()         ? frame.top() - area.top()
                    : area.bottom() > frame.bottom() ? frame.bottom() - area.bottom()
                                                     : 0.0;
  place *= QTransform::fromTranslate(dx, dy);
  area.translate(dx, dy);
  for (const QRectF& other : *placed) {
    if (other.intersects(area)) return false;
  }
  placed->push_back(area);

  painter->save();
  painter->setTransform(place, true);
  painter->fillPath(path, style->GetForegroundColor());
  painter->restore();
  return true;
}

}  // namespace

bool CScenePainter::CanDrawText() {
  return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

int CScenePainter::Paint(const CAnnotationScene& scene, int level, const QRectF& extent,
                         QImage* image) {
  Result result;
  return Paint(scene, level, extent, image, &result) ? result.shapes : -1;
}

bool CScenePainter::Paint(const CAnnotationScene& scene, int level, const QRectF& extent,
                          QImage* image, Result* result) {
  *result = Result();
  if (image == nullptr || image->isNull() || extent.width() <= 0 || extent.height() <= 0) {
    return false;
  }
  const CViewTransform view(extent, *image);
  CIconImages icons;
  QPainter painter(image);
  painter.setRenderHint(QPainter::Antialiasing, true);
  painter.setRenderHint(QPainter::SmoothPixmapTransform, true);

  const std::vector<CSceneDrawable> drawables = scene.Collect(level);
  for (const CSceneDrawable& drawable : drawables) {
    bool drewIcon = false;
    if (!DrawShape(&painter, drawable, view, &icons, &drewIcon)) continue;
    ++result->shapes;
    if (drewIcon) ++result->icons;
  }
  if (!CanDrawText()) return true;
  // Names last, so that shapes never cover them. The largest shapes place their names first (the
  // topmost first among equals), and a name that would overlap one already placed is left out.
  struct Candidate {
    const CSceneDrawable* drawable;
    QPointF anchor;
    double size;
  };
  std::vector<Candidate> candidates;
  for (auto it = drawables.rbegin(); it != drawables.rend(); ++it) {
    Candidate candidate{&*it, QPointF(), 0};
    if (it->name.empty() || !it->display.IsNameShownAt(level) ||
        !LabelAnchor(*it, view, &candidate.anchor, &candidate.size)) {
      continue;
    }
    candidates.push_back(candidate);
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) { return a.size > b.size; });
  std::vector<QRectF> placed;
  for (const Candidate& candidate : candidates) {
    if (DrawLabel(&painter, *candidate.drawable, candidate.anchor, view, &placed)) {
      ++result->labels;
    }
  }
  return true;
}
