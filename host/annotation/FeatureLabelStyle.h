// CFeatureLabelStyle: how a feature's text is drawn (font, size in a unit, rotation, colours of
// text, background and outline, and font decorations).
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ZU_FEATURE_LABEL_STYLE_H
#define ZU_FEATURE_LABEL_STYLE_H

#include <QColor>

#include <string>

#include "FeatureStyle.h"
#include "FeatureStyleTypes.h"
#include "ZuExport.h"

class ZU_EXPORT CFeatureLabelStyle : public CFeatureStyle {
 public:
  // Black 12-point text of the default font on a transparent background, without outline or
  // decorations.
  CFeatureLabelStyle();
  CFeatureLabelStyle(const CFeatureLabelStyle&) = default;
  CFeatureLabelStyle& operator=(const CFeatureLabelStyle&) = default;
  ~CFeatureLabelStyle() override;

  std::unique_ptr<CFeatureStyle> Clone() const override;

  // Font family in the local code page; empty means the renderer's default font.
  const std::string& GetFontName() const { return fontName_; }
  void SetFontName(const std::string& name) { fontName_ = name; }
  E_GCS_UNIT GetUnit() const { return unit_; }
  void SetUnit(E_GCS_UNIT unit) { unit_ = unit; }
  double GetSize() const { return size_; }
  void SetSize(double size) { size_ = size; }
  // Rotation in degrees.
  double GetAngle() const { return angle_; }
  void SetAngle(double angle) { angle_ = angle; }

  const QColor& GetForegroundColor() const { return foreground_; }
  void SetForegroundColor(const QColor& color) { foreground_ = color; }
  const QColor& GetBackgroundColor() const { return background_; }
  void SetBackgroundColor(const QColor& color) { background_ = color; }
  // An invalid colour draws no outline.
  const QColor& GetOutLineColor() const { return outline_; }
  void SetOutLineColor(const QColor& color) { outline_ = color; }

  bool IsBold() const { return bold_; }
  void SetBold(bool bold) { bold_ = bold; }
  bool IsItalic() const { return italic_; }
  void SetItalic(bool italic) { italic_ = italic; }
  bool IsUnderline() const { return underline_; }
  void SetUnderline(bool underline) { underline_ = underline; }
  // The getter's spelling is part of the host's interface.
  bool IsStrikethrought() const { return strikethrough_; }
  void SetStrikethrough(bool strikethrough) { strikethrough_ = strikethrough; }

 private:
  std::string fontName_;
  E_GCS_UNIT unit_ = GCS_UNIT_POINT;
  double size_ = 12.0;
  double angle_ = 0.0;
  QColor foreground_;
  QColor background_;
  QColor outline_;
  bool bold_ = false;
  bool italic_ = false;
  bool underline_ = false;
  bool strikethrough_ = false;
};

#endif  // ZU_FEATURE_LABEL_STYLE_H
