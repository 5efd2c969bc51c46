#include "LocalText.h"

#include <QByteArray>
#include <QString>
#include <QTextCodec>

namespace {

// The same codec the module converts with, so that text survives the round trip through it.
QTextCodec* LocalCodec() {
  static QTextCodec* codec = QTextCodec::codecForName("GBK");
  return codec;
}

bool IsAscii(const std::string& text) {
  for (unsigned char c : text) {
    if (c >= 0x80) return false;
  }
  return true;
}

}  // namespace

void CLocalText::Prepare() { LocalCodec(); }

std::string CLocalText::FromUtf8(const std::string& utf8) {
  if (IsAscii(utf8) || LocalCodec() == nullptr) return utf8;
  const QString text = QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
  const QByteArray local = LocalCodec()->fromUnicode(text);
  return std::string(local.constData(), static_cast<size_t>(local.size()));
}

std::string CLocalText::ToUtf8(const std::string& local) {
  if (IsAscii(local) || LocalCodec() == nullptr) return local;
  const QString text = LocalCodec()->toUnicode(local.data(), static_cast<int>(local.size()));
  const QByteArray utf8 = text.toUtf8();
  return std::string(utf8.constData(), static_cast<size_t>(utf8.size()));
}
