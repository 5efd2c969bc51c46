// CStyleConverter maps OGR feature style strings (OGR's style tools, e.g.
// "PEN(c:#FF0000,w:2px);BRUSH(fc:#00FF00)") to the host's feature styles and back.
//
//   PEN     c colour, w width with its unit, id "ogr-pen-<n>"      -> CFeaturePenStyle
//   BRUSH   fc / bc colours, id "ogr-brush-<n>", a angle, s size   -> CFeatureBrushStyle
//   LABEL   f font, s size with its unit, a angle, c / b / o text,
//           background and outline colours, bo it un st           -> CFeatureLabelStyle
//   SYMBOL  id (the symbol's name or file), a angle, s scale      -> CFeatureIconStyle
//
// Units keep their kind (g, px, pt, mm, cm, in; a bare number is millimetres, as OGR reads it).
// Colours lose their alpha channel, as the module's style JSON does. The label's text (t) is not
// kept: a feature's label is its name.
//
// Threading contract: stateless; safe from any thread.
#ifndef ANNOTATIONLAYER_CLI_STYLE_CONVERTER_H
#define ANNOTATIONLAYER_CLI_STYLE_CONVERTER_H

#include <string>

class CFeatureStyleSet;

class CStyleConverter {
 public:
  CStyleConverter() = delete;

  // Adds one style per recognised part of `style` to `styles`; the number added.
  static int FromStyleString(const std::string& style, CFeatureStyleSet* styles);
  // The style string of the first style of each kind in `styles`; empty for an empty set.
  static std::string ToStyleString(const CFeatureStyleSet& styles);
};

#endif  // ANNOTATIONLAYER_CLI_STYLE_CONVERTER_H
