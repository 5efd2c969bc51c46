// Style JSON text from the database into a style set, and back out.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FeatureStyleSet.h"
#include "StyleJson.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  CFeatureStyleSet styles;
  if (AnnotationLayerNS::FromJsonStyle(&styles, text)) {
    const std::string again = AnnotationLayerNS::ToJsonStyle(&styles);
    CFeatureStyleSet reread;
    if (!again.empty() && !AnnotationLayerNS::FromJsonStyle(&reread, again)) __builtin_trap();
  }
  return 0;
}
