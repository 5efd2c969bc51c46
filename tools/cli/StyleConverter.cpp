#include "StyleConverter.h"

#include <ogr_featurestyle.h>

#include <QColor>

#include <cctype>
#include <cstdio>
#include <memory>
#include <typeinfo>

#include "FeatureBrushStyle.h"
#include "FeatureIconStyle.h"
#include "FeatureLabelStyle.h"
#include "FeaturePenStyle.h"
#include "FeatureStyleSet.h"
#include "LocalText.h"

namespace {

// The unit written after a parameter's number in the part's text; a bare number is in
// millimetres, as OGR reads it. E_GCS_UNIT follows OGRSTUnitId, so the values carry over.
OGRSTUnitId UnitOfParam(const std::string& part, const std::string& key) {
  for (size_t at = part.find(key + ":"); at != std::string::npos;
       at = part.find(key + ":", at + 1)) {
    if (at == 0 || (part[at - 1] != '(' && part[at - 1] != ',')) continue;
    size_t i = at + key.size() + 1;
    while (i < part.size() && (std::isdigit(static_cast<unsigned char>(part[i])) ||
                               part[i] == '.' || part[i] == '-' || part[i] == '+' ||
                               part[i] == 'e' || part[i] == 'E')) {
      ++i;
    }
    const std::string unit = part.substr(i, 2);
    if (unit.compare(0, 1, "g") == 0) return OGRSTUGround;
    if (unit == "px") return OGRSTUPixel;
    if (unit == "pt") return OGRSTUPoints;
    if (unit == "cm") return OGRSTUCM;
    if (unit == "in") return OGRSTUInches;
    return OGRSTUMM;
  }
  return OGRSTUMM;
}

const char* UnitSuffix(E_GCS_UNIT unit) {
  switch (unit) {
    case GCS_UNIT_GROUND: return "g";
    case GCS_UNIT_PIXEL: return "px";
    case GCS_UNIT_POINT: return "pt";
    case GCS_UNIT_MILLIMETER: return "mm";
    case GCS_UNIT_CENTIMETER: return "cm";
    case GCS_UNIT_INCH: return "in";
  }
  return "px";
}

QColor ColorOf(const char* text) {
  int r = 0, g = 0, b = 0, a = 0;
  if (text == nullptr || !OGRStyleTool::GetRGBFromString(text, r, g, b, a)) return QColor();
  return QColor(r, g, b);
}

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.15g", value);
  return text;
}

// Quotes a text parameter as the style syntax wants it.
std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "\"";
}

void AddPen(OGRStylePen* tool, const std::string& part, CFeatureStyleSet* styles) {
  auto pen = std::make_unique<CFeaturePenStyle>();
  GBool isDefault = FALSE;
  const QColor color = ColorOf(tool->Color(isDefault));
  if (!isDefault && color.isValid()) pen->SetColor(color);
  const OGRSTUnitId unit = UnitOfParam(part, "w");
  tool->SetUnit(unit);
  const double width = tool->Width(isDefault);
  if (!isDefault) {
    pen->SetWidth(width);
    pen->SetUnit(static_cast<E_GCS_UNIT>(unit));
  }
  const char* id = tool->Id(isDefault);
  const int pattern = isDefault ? -1 : OGRStyleTool::GetSpecificId(id, "ogr-pen");
  if (pattern >= OGR_PEN_SOLID && pattern <= OGR_PEN_ALTERNATE) {
    pen->SetIdentify(static_cast<E_OGR_PEN>(pattern));
  }
  styles->PushBack(std::move(pen));
}

void AddBrush(OGRStyleBrush* tool, CFeatureStyleSet* styles) {
  auto brush = std::make_unique<CFeatureBrushStyle>();
  GBool isDefault = FALSE;
  QColor color = ColorOf(tool->ForeColor(isDefault));
  if (!isDefault && color.isValid()) brush->SetForegroundColor(color);
  color = ColorOf(tool->BackColor(isDefault));
  if (!isDefault && color.isValid()) brush->SetBackgroundColor(color);
  const char* id = tool->Id(isDefault);
  const int pattern = isDefault ? -1 : OGRStyleTool::GetSpecificId(id, "ogr-brush");
  if (pattern >= OGR_BRUSH_SOLID && pattern <= OGR_BRUSH_DIAGCROSS) {
    brush->SetIdentify(static_cast<E_OGR_BRUSH>(pattern));
  }
  const double angle = tool->Angle(isDefault);
  if (!isDefault) brush->SetAngle(angle);
  tool->SetUnit(OGRSTUMM);  // a pattern's size is a plain factor here: no conversion
  const double size = tool->Size(isDefault);
  if (!isDefault) brush->SetScale(size);
  styles->PushBack(std::move(brush));
}

void AddLabel(OGRStyleLabel* tool, const std::string& part, CFeatureStyleSet* styles) {
  auto label = std::make_unique<CFeatureLabelStyle>();
  GBool isDefault = FALSE;
  const char* font = tool->FontName(isDefault);
  if (!isDefault && font != nullptr) label->SetFontName(CLocalText::FromUtf8(font));
  const OGRSTUnitId unit = UnitOfParam(part, "s");
  tool->SetUnit(unit);
  const double size = tool->Size(isDefault);
  if (!isDefault) {
    label->SetSize(size);
    label->SetUnit(static_cast<E_GCS_UNIT>(unit));
  }
  const double angle = tool->Angle(isDefault);
  if (!isDefault) label->SetAngle(angle);
  QColor color = ColorOf(tool->ForeColor(isDefault));
  if (!isDefault && color.isValid()) label->SetForegroundColor(color);
  color = ColorOf(tool->BackColor(isDefault));
  if (!isDefault && color.isValid()) label->SetBackgroundColor(color);
  color = ColorOf(tool->OutlineColor(isDefault));
  if (!isDefault && color.isValid()) label->SetOutLineColor(color);
  bool flag = tool->Bold(isDefault) != 0;
  if (!isDefault) label->SetBold(flag);
  flag = tool->Italic(isDefault) != 0;
  if (!isDefault) label->SetItalic(flag);
  flag = tool->Underline(isDefault) != 0;
  if (!isDefault) label->SetUnderline(flag);
  flag = tool->Strikeout(isDefault) != 0;
  if (!isDefault) label->SetStrikethrough(flag);
  styles->PushBack(std::move(label));
}

void AddSymbol(OGRStyleSymbol* tool, CFeatureStyleSet* styles) {
  auto icon = std::make_unique<CFeatureIconStyle>();
  GBool isDefault = FALSE;
  const char* id = tool->Id(isDefault);
  if (!isDefault && id != nullptr) icon->SetIconUrl(CLocalText::FromUtf8(id));
  const double angle = tool->Angle(isDefault);
  if (!isDefault) icon->SetAngle(angle);
  tool->SetUnit(OGRSTUMM);
  const double size = tool->Size(isDefault);
  if (!isDefault) icon->SetIconScale(static_cast<float>(size));
  styles->PushBack(std::move(icon));
}

template <typename T>
const T* FirstOf(const CFeatureStyleSet& styles) {
  for (int i = 0; i < styles.GetCount(); ++i) {
    if (const T* style = dynamic_cast<const T*>(styles.At(i))) return style;
  }
  return nullptr;
}

}  // namespace

int CStyleConverter::FromStyleString(const std::string& style, CFeatureStyleSet* styles) {
  if (style.empty() || styles == nullptr) return 0;
  OGRStyleMgr manager;
  if (!manager.InitStyleString(style.c_str())) return 0;
  int added = 0;
  const int count = manager.GetPartCount();
  for (int i = 0; i < count; ++i) {
    std::unique_ptr<OGRStyleTool> tool(manager.GetPart(i));
    if (!tool) continue;
    const char* text = tool->GetStyleString();
    const std::string part = text != nullptr ? text : "";
    switch (tool->GetType()) {
      case OGRSTCPen: AddPen(static_cast<OGRStylePen*>(tool.get()), part, styles); break;
      case OGRSTCBrush: AddBrush(static_cast<OGRStyleBrush*>(tool.get()), styles); break;
      case OGRSTCLabel: AddLabel(static_cast<OGRStyleLabel*>(tool.get()), part, styles); break;
      case OGRSTCSymbol: AddSymbol(static_cast<OGRStyleSymbol*>(tool.get()), styles); break;
      default: continue;
    }
    ++added;
  }
  return added;
}

std::string CStyleConverter::ToStyleString(const CFeatureStyleSet& styles) {
  std::string text;
  auto append = [&text](const std::string& part) {
    if (!text.empty()) text += ";";
    text += part;
  };
  auto color = [](const char* key, const QColor& value) {
    return value.isValid() ? std::string(",") + key + ":" + value.name().toStdString()
                           : std::string();
  };
  if (const auto* pen = FirstOf<CFeaturePenStyle>(styles)) {
    std::string part = "PEN(w:" + Number(pen->GetWidth()) + UnitSuffix(pen->GetUnit()) +
                       color("c", pen->GetColor()) + ",id:\"ogr-pen-" +
                       std::to_string(pen->GetIdentify()) + "\")";
    append(part);
  }
  if (const auto* brush = FirstOf<CFeatureBrushStyle>(styles)) {
    std::string part = "BRUSH(id:\"ogr-brush-" + std::to_string(brush->GetIdentify()) + "\"" +
                       color("fc", brush->GetForegroundColor()) +
                       color("bc", brush->GetBackgroundColor());
    if (brush->GetAngle() != 0.0) part += ",a:" + Number(brush->GetAngle());
    if (brush->GetScale() != 1.0) part += ",s:" + Number(brush->GetScale());
    append(part + ")");
  }
  if (const auto* symbol = FirstOf<CFeatureIconStyle>(styles)) {
    if (!symbol->GetIconUrl().empty()) {
      std::string part = "SYMBOL(id:" + Quoted(CLocalText::ToUtf8(symbol->GetIconUrl()));
      if (symbol->GetAngle() != 0.0) part += ",a:" + Number(symbol->GetAngle());
      if (symbol->GetIconScale() != 1.0f) part += ",s:" + Number(symbol->GetIconScale());
      append(part + ")");
    }
  }
  if (const auto* label = FirstOf<CFeatureLabelStyle>(styles)) {
    std::string part = "LABEL(s:" + Number(label->GetSize()) + UnitSuffix(label->GetUnit());
    if (!label->GetFontName().empty()) {
      part += ",f:" + Quoted(CLocalText::ToUtf8(label->GetFontName()));
    }
    if (label->GetAngle() != 0.0) part += ",a:" + Number(label->GetAngle());
    part += color("c", label->GetForegroundColor()) + color("b", label->GetBackgroundColor()) +
            color("o", label->GetOutLineColor());
    if (label->IsBold()) part += ",bo:1";
    if (label->IsItalic()) part += ",it:1";
    if (label->IsUnderline()) part += ",un:1";
    if (label->IsStrikethrought()) part += ",st:1";
    append(part + ")");
  }
  return text;
}
