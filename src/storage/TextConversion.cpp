#include "TextConversion.h"

#include <QString>
#include <QTextCodec>

namespace AnnotationLayerInner {
namespace {

// GBK is code page 936. Qt's codec registry is thread-safe and the codec objects live for the
// whole process, so the pointer is looked up once.
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

std::string LocalToUtf8(const std::string& local) {
  if (IsAscii(local)) return local;
  QString text = LocalCodec()->toUnicode(local.data(), static_cast<int>(local.size()));
  QByteArray utf8 = text.toUtf8();
  return std::string(utf8.constData(), static_cast<size_t>(utf8.size()));
}

std::string Utf8ToLocal(const std::string& utf8) {
  if (IsAscii(utf8)) return utf8;
  QString text = QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
  QByteArray local = LocalCodec()->fromUnicode(text);
  return std::string(local.constData(), static_cast<size_t>(local.size()));
}

}  // namespace AnnotationLayerInner
