// The style JSON stored in the style tables: a feature style set as one compact JSON object with
// up to four members, "pen", "brush", "icon" and "label", each an object of short keys.
//
//   pen    c colour, w width, u unit, id pen id
//   brush  fc / bc foreground / background colour, id brush id, a angle, s scale
//   icon   url, a angle, s scale
//   label  f font, u unit, s size, a angle, c / b / h text / background / outline colour,
//          bo / it / un / st bold / italic / underline / strikethrough as 0 or 1
//
// Colours are QColor::name() texts ("#rrggbb"), carried as GB18030 bytes; the alpha channel is not
// kept. Reading is deliberately asymmetric for the pen width, which is read as an integer, so 1.5
// comes back as 1. A key that is missing reads as 0, 0.0, false, the empty text or an invalid
// colour, and that value is set. A member that is present but not an object (say "pen":5) counts
// as an object without keys.
//
// Thread safety: stateless; the style set must not be used by another thread meanwhile.
#ifndef ANNOTATIONLAYER_STYLE_JSON_H
#define ANNOTATIONLAYER_STYLE_JSON_H

#include <string>

#include "AnnotationLayerExport.h"
#include "FeatureStyleSet.h"

namespace AnnotationLayerNS {

// The JSON of the first style of each kind in the set; empty for a null or empty set.
ANNOTATIONLAYER_EXPORT std::string ToJsonStyle(const CFeatureStyleSet* styles);

// Fills the set from a JSON text: for each member present and not null, the first style of its
// kind in the set is updated, or a new one is added (the set owns it). False, with one warning
// logged, for a null set and for a text that does not parse as a JSON object; the set is then
// unchanged.
ANNOTATIONLAYER_EXPORT bool FromJsonStyle(CFeatureStyleSet* styles, const std::string& json);

}  // namespace AnnotationLayerNS

#endif  // ANNOTATIONLAYER_STYLE_JSON_H
