#include "XEncoder.h"

#include <QByteArray>
#include <QCryptographicHash>

std::string XEncoder::md5Encode(char* data, int length) {
  QByteArray input;
  if (data != nullptr && length > 0) input = QByteArray::fromRawData(data, length);
  QByteArray hex = QCryptographicHash::hash(input, QCryptographicHash::Md5).toHex();
  return std::string(hex.constData(), static_cast<size_t>(hex.size()));
}
