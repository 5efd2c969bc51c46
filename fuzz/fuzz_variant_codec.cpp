// Typed values as text: a type name, a NUL byte, then the text.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "VariantTextCodec.h"
#include "ZuLog.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static auto quiet = CZuLog::SetSink(std::make_shared<CZuLogCaptureSink>());
  (void)quiet;
  const std::string input(reinterpret_cast<const char*>(data), size);
  const size_t split = input.find('\0');
  const std::string typeName = input.substr(0, split);
  const std::string text = split == std::string::npos ? std::string() : input.substr(split + 1);
  const QVariant value = AnnotationLayerNS::VariantFromText(typeName, text);
  if (value.isValid()) {
    std::string name, written;
    if (AnnotationLayerNS::VariantToText(value, name, written)) {
      const QVariant again = AnnotationLayerNS::VariantFromText(name, written);
      if (!again.isValid()) __builtin_trap();
    }
  }
  return 0;
}
