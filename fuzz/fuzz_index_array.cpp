// Index array texts as stored in index_id.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FeatureOption.h"
#include "IndexArray.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  CFeatureOption option;
  option.SetIndexArrayString(text);
  CFeatureOption rebuilt;
  rebuilt.SetIndexArray(option.GetIndexStatus(), option.GetIndexProperty(),
                        option.GetIndexUserdata(), option.GetIndexEnclosure());
  // A rebuilt text is canonical: reading it gives the same ids again.
  CFeatureOption reread;
  reread.SetIndexArrayString(rebuilt.GetIndexArrayString());
  if (reread.GetIndexStatus() != option.GetIndexStatus()) __builtin_trap();
  return 0;
}
