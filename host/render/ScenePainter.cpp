#include "ScenePainter.h"

#include <QBrush>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPolygonF>

#include "FeatureBrushStyle.h"
#include "FeaturePenStyle.h"

namespace {

template <typename Style>
const Style* FirstStyle(const CFeatureStyleSet& styles) {
  for (int i = 0; i < styles.GetCount(); ++i) {
    if (const auto* style = dynamic_cast<const Style*>(styles.At(i))) return style;
  }
  return nullptr;
}

}  // namespace

int CScenePainter::Paint(const CAnnotationScene& scene, int level, const QRectF& extent,
                         QImage* image) {
  if (image == nullptr || image->isNull() || extent.width() <= 0 || extent.height() <= 0) {
    return -1;
  }
  const double sx = image->width() / extent.width();
  const double sy = image->height() / extent.height();
  auto toImage = [&](const CVector3D& v) {
    return QPointF((v.X() - extent.left()) * sx, (extent.bottom() - v.Y()) * sy);
  };

  QPainter painter(image);
  painter.setRenderHint(QPainter::Antialiasing, true);
  int drawn = 0;
  for (const CSceneDrawable& drawable : scene.Collect(level)) {
    const CFeaturePenStyle* penStyle = FirstStyle<CFeaturePenStyle>(drawable.styles);
    const CFeatureBrushStyle* brushStyle = FirstStyle<CFeatureBrushStyle>(drawable.styles);
    QPen pen(penStyle != nullptr ? penStyle->GetColor() : QColor(Qt::black));
    pen.setWidthF(penStyle != nullptr ? penStyle->GetWidth() : 1.0);
    painter.setPen(pen);
    painter.setBrush(brushStyle != nullptr ? QBrush(brushStyle->GetForegroundColor())
                                           : QBrush(Qt::NoBrush));
    switch (drawable.geometryType) {
      case GEOMETRY_DATA_TYPE_POINT:
      case GEOMETRY_DATA_TYPE_MULTIPOINT:
        // A dot is a disc: without a brush of its own it is filled with the pen's colour.
        if (brushStyle == nullptr) painter.setBrush(QBrush(pen.color()));
        for (const CGeometryData& part : drawable.parts) {
          for (const CVector3D& v : part.Vertices()) painter.drawEllipse(toImage(v), 2.0, 2.0);
        }
        break;
      case GEOMETRY_DATA_TYPE_LINESTRING:
      case GEOMETRY_DATA_TYPE_MULTILINESTRING:
        for (const CGeometryData& part : drawable.parts) {
          QPolygonF line;
          for (const CVector3D& v : part.Vertices()) line << toImage(v);
          painter.drawPolyline(line);
        }
        break;
      case GEOMETRY_DATA_TYPE_POLYGON:
      case GEOMETRY_DATA_TYPE_MULTIPOLYGON: {
        // Odd-even filling turns inner rings into holes whichever way they run.
        QPainterPath path;
        path.setFillRule(Qt::OddEvenFill);
        for (const CGeometryData& part : drawable.parts) {
          QPolygonF ring;
          for (const CVector3D& v : part.Vertices()) ring << toImage(v);
          path.addPolygon(ring);
          path.closeSubpath();
        }
        painter.drawPath(path);
        break;
      }
      default:
        continue;
    }
    ++drawn;
  }
  return drawn;
}
