#include "SqlText.h"

#include <sstream>

namespace AnnotationLayerInner {

std::string JoinIds(const std::vector<int64_t>& ids) {
  std::string text;
  for (size_t i = 0; i < ids.size(); ++i) {
    if (i > 0) text += ',';
    text += std::to_string(ids[i]);
  }
  return text;
}

std::string FormatDouble(double value) {
  std::ostringstream out;
  out.precision(14);
  out << value;
  return out.str();
}

bool IsSafeSqlText(const std::string& text) {
  return text.find('\'') == std::string::npos && text.find('\0') == std::string::npos;
}

}  // namespace AnnotationLayerInner
