#include "IndexArray.h"

#include <locale>
#include <sstream>

namespace AnnotationLayerInner {
namespace {

// Reads one number text the way stream extraction does. The stream is reused across calls to keep
// long texts cheap.
int64_t ReadNumber(std::istringstream& in, const std::string& numberText) {
  in.clear();
  in.str(numberText);
  int64_t value = 0;
  if (!(in >> value)) return 0;  // also on overflow, where extraction stores the limit
  return value;
}

}  // namespace

std::string IndexArrayPart(char tag, const std::vector<int64_t>& ids) {
  if (ids.empty()) return std::string();
  std::string part;
  part += tag;
  part += ':';
  for (size_t i = 0; i < ids.size(); ++i) {
    if (i > 0) part += ',';
    part += std::to_string(ids[i]);
  }
  return part;
}

void ReplaceIndexArrayPart(std::string& text, char tag, const std::vector<int64_t>& ids) {
  if (ids.empty()) return;
  text = IndexArrayPart(tag, ids);
}

void AppendIndexArrayPart(std::string& text, char tag, const std::vector<int64_t>& ids) {
  if (ids.empty()) return;
  if (!text.empty()) text += ';';
  text += IndexArrayPart(tag, ids);
}

std::vector<int64_t> ParseIndexArray(const std::string& text, char tag) {
  std::vector<int64_t> ids;
  const size_t tagPos = text.find(tag);
  if (tagPos == std::string::npos) return ids;

  std::istringstream in;
  in.imbue(std::locale::classic());
  std::string numberText;
  // The tag and the character after it; a tag at the very end leaves nothing to read.
  for (size_t i = tagPos + 2; i < text.size(); ++i) {
    const char c = text[i];
    if (c == ',') {
      ids.push_back(ReadNumber(in, numberText));
      numberText.clear();
    } else if (c == ';') {
      ids.push_back(ReadNumber(in, numberText));
      return ids;
    } else {
      numberText += c;
    }
  }
  ids.push_back(ReadNumber(in, numberText));
  return ids;
}

}  // namespace AnnotationLayerInner
