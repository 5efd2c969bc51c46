// The host's encoder library: digests of byte buffers.
//
// Stateless; safe from any thread.
#ifndef X_ENCODER_H
#define X_ENCODER_H

#include <string>

#include "ZuExport.h"

class ZU_EXPORT XEncoder {
 public:
  // MD5 of `length` bytes at `data` as 32 lowercase hexadecimal digits. A null pointer or a
  // negative length digests nothing (the MD5 of the empty input).
  static std::string md5Encode(char* data, int length);
};

#endif  // X_ENCODER_H
