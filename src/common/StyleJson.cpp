#include "StyleJson.h"

#include <cfloat>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

#include "FeatureBrushStyle.h"
#include "FeatureIconStyle.h"
#include "FeatureLabelStyle.h"
#include "FeaturePenStyle.h"
#include "JsonValue.h"
#include "ZuCoreApplication.h"
#include "ZuLog.h"

namespace AnnotationLayerNS {
namespace {

constexpr const char* kColorCodec = "GB18030";

template <typename Style>
const Style* FirstOf(const CFeatureStyleSet& styles) {
  for (int i = 0; i < styles.GetCount(); ++i) {
    if (const auto* style = dynamic_cast<const Style*>(styles.At(i))) return style;
  }
  return nullptr;
}

// The first style of the kind, or a new one added to the set.
template <typename Style>
Style* FirstOrNew(CFeatureStyleSet& styles) {
  for (int i = 0; i < styles.GetCount(); ++i) {
    if (auto* style = dynamic_cast<Style*>(styles.At(i))) return style;
  }
  auto style = std::make_unique<Style>();
  Style* added = style.get();
  styles.PushBack(std::move(style));
  return added;
}

CJsonValue ColorToJson(const QColor& color) {
  return CJsonValue(ConvertQStringToStdString(color.name(), kColorCodec));
}

QColor ColorFromJson(const CJsonValue& value) {
  QColor color;
  color.setNamedColor(ConvertStdStringToQString(value.AsString(), kColorCodec));
  return color;
}

CJsonValue Flag(bool on) { return CJsonValue(on ? 1 : 0); }

// Conversion to float is undefined for finite doubles beyond its range; those become infinite.
float ToFloat(double d) {
  if (std::isfinite(d) && std::fabs(d) > FLT_MAX) {
    return d > 0 ? std::numeric_limits<float>::infinity() : -std::numeric_limits<float>::infinity();
  }
  return static_cast<float>(d);
}

CJsonValue PenToJson(const CFeaturePenStyle& pen) {
  CJsonValue json;
  json.Set("c", ColorToJson(pen.GetColor()));
  json.Set("w", CJsonValue(pen.GetWidth()));
  json.Set("u", CJsonValue(static_cast<int>(pen.GetUnit())));
  json.Set("id", CJsonValue(static_cast<int>(pen.GetIdentify())));
  return json;
}

CJsonValue BrushToJson(const CFeatureBrushStyle& brush) {
  CJsonValue json;
  json.Set("fc", ColorToJson(brush.GetForegroundColor()));
  json.Set("bc", ColorToJson(brush.GetBackgroundColor()));
  json.Set("id", CJsonValue(static_cast<int>(brush.GetIdentify())));
  json.Set("a", CJsonValue(brush.GetAngle()));
  json.Set("s", CJsonValue(brush.GetScale()));
  return json;
}

CJsonValue IconToJson(const CFeatureIconStyle& icon) {
  CJsonValue json;
  json.Set("url", CJsonValue(icon.GetIconUrl()));
  json.Set("a", CJsonValue(icon.GetAngle()));
  json.Set("s", CJsonValue(static_cast<double>(icon.GetIconScale())));
  return json;
}

CJsonValue LabelToJson(const CFeatureLabelStyle& label) {
  CJsonValue json;
  json.Set("f", CJsonValue(label.GetFontName()));
  json.Set("u", CJsonValue(static_cast<int>(label.GetUnit())));
  json.Set("s", CJsonValue(label.GetSize()));
  json.Set("a", CJsonValue(label.GetAngle()));
  json.Set("c", ColorToJson(label.GetForegroundColor()));
  json.Set("b", ColorToJson(label.GetBackgroundColor()));
  json.Set("h", ColorToJson(label.GetOutLineColor()));
  json.Set("bo", Flag(label.IsBold()));
  json.Set("it", Flag(label.IsItalic()));
  json.Set("un", Flag(label.IsUnderline()));
  json.Set("st", Flag(label.IsStrikethrought()));
  return json;
}

void PenFromJson(const CJsonValue& json, CFeaturePenStyle& pen) {
  pen.SetColor(ColorFromJson(json.Get("c")));
  pen.SetWidth(static_cast<double>(json.Get("w").AsInt()));
  pen.SetUnit(static_cast<E_GCS_UNIT>(json.Get("u").AsInt()));
  pen.SetIdentify(static_cast<E_OGR_PEN>(json.Get("id").AsInt()));
}

void BrushFromJson(const CJsonValue& json, CFeatureBrushStyle& brush) {
  brush.SetForegroundColor(ColorFromJson(json.Get("fc")));
  brush.SetBackgroundColor(ColorFromJson(json.Get("bc")));
  brush.SetIdentify(static_cast<E_OGR_BRUSH>(json.Get("id").AsInt()));
  brush.SetAngle(json.Get("a").AsDouble());
  brush.SetScale(json.Get("s").AsDouble());
}

void IconFromJson(const CJsonValue& json, CFeatureIconStyle& icon) {
  icon.SetIconUrl(json.Get("url").AsString());
  icon.SetAngle(json.Get("a").AsDouble());
  icon.SetIconScale(ToFloat(json.Get("s").AsDouble()));
}

void LabelFromJson(const CJsonValue& json, CFeatureLabelStyle& label) {
  label.SetFontName(json.Get("f").AsString());
  label.SetUnit(static_cast<E_GCS_UNIT>(json.Get("u").AsInt()));
  label.SetSize(json.Get("s").AsDouble());
  label.SetAngle(json.Get("a").AsDouble());
  label.SetForegroundColor(ColorFromJson(json.Get("c")));
  label.SetBackgroundColor(ColorFromJson(json.Get("b")));
  label.SetOutLineColor(ColorFromJson(json.Get("h")));
  label.SetBold(json.Get("bo").AsBool());
  label.SetItalic(json.Get("it").AsBool());
  label.SetUnderline(json.Get("un").AsBool());
  label.SetStrikethrough(json.Get("st").AsBool());
}

}  // namespace

std::string ToJsonStyle(const CFeatureStyleSet* styles) {
  if (styles == nullptr || styles->IsEmpty()) return std::string();
  CJsonValue root;
  if (const auto* pen = FirstOf<CFeaturePenStyle>(*styles)) root.Set("pen", PenToJson(*pen));
  if (const auto* brush = FirstOf<CFeatureBrushStyle>(*styles)) {
    root.Set("brush", BrushToJson(*brush));
  }
  if (const auto* icon = FirstOf<CFeatureIconStyle>(*styles)) root.Set("icon", IconToJson(*icon));
  if (const auto* label = FirstOf<CFeatureLabelStyle>(*styles)) {
    root.Set("label", LabelToJson(*label));
  }
  return root.Write();
}

bool FromJsonStyle(CFeatureStyleSet* styles, const std::string& json) {
  if (styles == nullptr) {
    ZuLogWarn << "[FromJsonStyle]: no style set";
    return false;
  }
  CJsonValue root;
  std::string error;
  if (!CJsonValue::Parse(json, root, &error) || !root.IsObject()) {
    // jsoncpp's messages span lines; the log keeps one line per failure.
    for (char& c : error) {
      if (c == '\n') c = ' ';
    }
    ZuLogWarn << "[FromJsonStyle]: not a JSON object (" << json.size() << " bytes) " << error;
    return false;
  }
  const CJsonValue pen = root.Get("pen");
  if (!pen.IsNull()) PenFromJson(pen, *FirstOrNew<CFeaturePenStyle>(*styles));
  const CJsonValue brush = root.Get("brush");
  if (!brush.IsNull()) BrushFromJson(brush, *FirstOrNew<CFeatureBrushStyle>(*styles));
  const CJsonValue icon = root.Get("icon");
  if (!icon.IsNull()) IconFromJson(icon, *FirstOrNew<CFeatureIconStyle>(*styles));
  const CJsonValue label = root.Get("label");
  if (!label.IsNull()) LabelFromJson(label, *FirstOrNew<CFeatureLabelStyle>(*styles));
  return true;
}

}  // namespace AnnotationLayerNS
