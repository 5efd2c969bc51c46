#include "ZuCoreApplication.h"

#include <QDir>
#include <QTextCodec>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <unistd.h>

namespace {

std::string WithTrailingSlash(std::string dir) {
  if (dir.empty() || dir.back() != '/') dir += '/';
  return dir;
}

std::string DefaultDataDir() {
  const char* xdg = std::getenv("XDG_DATA_HOME");
  if (xdg != nullptr && *xdg != '\0') return WithTrailingSlash(xdg) + "zu/";
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home != '\0') return WithTrailingSlash(home) + ".local/share/zu/";
  return "/tmp/zu/";
}

std::string FirstLine(const char* path) {
  std::ifstream in(path);
  std::string line;
  if (in) std::getline(in, line);
  return line;
}

// The machine id survives reboots and is unique per installation; hostname is the fallback.
std::string ReadMachineId() {
  for (const char* path : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
    std::string id = FirstLine(path);
    if (!id.empty()) return id;
  }
  char host[256] = {0};
  if (gethostname(host, sizeof(host) - 1) == 0 && host[0] != '\0') {
    return std::to_string(std::hash<std::string>()(host));
  }
  return "0";
}

QTextCodec* CodecOrUtf8(const char* name) {
  QTextCodec* codec = name != nullptr ? QTextCodec::codecForName(name) : nullptr;
  return codec != nullptr ? codec : QTextCodec::codecForName("UTF-8");
}

std::atomic<int> g_moduleIds{0};
std::atomic<int> g_objectIds{0};

}  // namespace

CZuCoreApplication::CZuCoreApplication() : dataDir_(DefaultDataDir()), cpuId_(ReadMachineId()) {}

CZuCoreApplication* CZuCoreApplication::GetInstance() {
  static CZuCoreApplication instance;
  return &instance;
}

std::string CZuCoreApplication::GetDataDir() const {
  std::lock_guard<std::mutex> guard(mutex_);
  if (!dataDirMade_) dataDirMade_ = QDir().mkpath(ConvertStdStringToQString(dataDir_));
  return dataDir_;
}

void CZuCoreApplication::SetDataDir(const std::string& dir) {
  std::lock_guard<std::mutex> guard(mutex_);
  dataDir_ = WithTrailingSlash(dir);
  dataDirMade_ = false;
}

std::string CZuCoreApplication::GetCpuID() const { return cpuId_; }

int GenerateZuModuleID() { return ++g_moduleIds; }

int GenerateZuObjectID() { return ++g_objectIds; }

std::string ConvertQStringToStdString(const QString& text, const char* codec) {
  QByteArray bytes = CodecOrUtf8(codec)->fromUnicode(text);
  return std::string(bytes.constData(), static_cast<size_t>(bytes.size()));
}

QString ConvertStdStringToQString(const std::string& text, const char* codec) {
  return CodecOrUtf8(codec)->toUnicode(text.data(), static_cast<int>(text.size()));
}
