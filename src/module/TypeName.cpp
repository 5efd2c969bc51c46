#include "TypeName.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace AnnotationLayerInner {

std::string PlainClassName(const std::type_info& type) {
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> demangled(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  std::string name = (status == 0 && demangled) ? demangled.get() : type.name();
  const std::string prefix = "class ";
  if (name.compare(0, prefix.size(), prefix) == 0) name.erase(0, prefix.size());
  return name;
}

}  // namespace AnnotationLayerInner
