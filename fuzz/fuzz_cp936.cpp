// Text between the local code page (936) and UTF-8, both ways.
#include <cstddef>
#include <cstdint>
#include <string>

#include "TextConversion.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  AnnotationLayerInner::Utf8ToLocal(AnnotationLayerInner::LocalToUtf8(text));
  AnnotationLayerInner::LocalToUtf8(AnnotationLayerInner::Utf8ToLocal(text));
  return 0;
}
