// A layer's property header text into a field set, and back.
#include <cstddef>
#include <cstdint>
#include <string>

#include "LayerHeaderList.h"
#include "ZuFieldSetObject.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  CZuFieldSetObject fields;
  AnnotationLayerInner::LayerHeaderListFromString(text, fields);
  const std::string written = AnnotationLayerInner::LayerHeaderListToString(fields);
  CZuFieldSetObject reread;
  AnnotationLayerInner::LayerHeaderListFromString(written, reread);
  if (AnnotationLayerInner::LayerHeaderListToString(reread) != written) __builtin_trap();
  return 0;
}
