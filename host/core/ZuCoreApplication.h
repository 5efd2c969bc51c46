// The host's core library: the application singleton, process-wide id generators and text
// conversions between Qt strings and byte strings in a named code page.
//
// Thread safety: every function may be called from any thread. SetDataDir should be called during
// start-up, before other threads read the data directory.
#ifndef ZU_CORE_APPLICATION_H
#define ZU_CORE_APPLICATION_H

#include <QString>

#include <mutex>
#include <string>

#include "ZuExport.h"

class ZU_EXPORT CZuCoreApplication {
 public:
  static CZuCoreApplication* GetInstance();

  // The per-user data directory, always ending in '/'. Defaults to $XDG_DATA_HOME/zu/ or
  // ~/.local/share/zu/. The first call after start-up or SetDataDir makes the directory with its
  // parents when it does not exist (a fresh account has none), and tries again on later calls
  // while that fails. The text is in the local code page, as every path the host hands out.
  std::string GetDataDir() const;
  // Replaces the data directory; a missing trailing '/' is added.
  void SetDataDir(const std::string& dir);

  // A stable text that identifies this machine (the systemd machine id where there is one).
  std::string GetCpuID() const;

  CZuCoreApplication(const CZuCoreApplication&) = delete;
  CZuCoreApplication& operator=(const CZuCoreApplication&) = delete;

 private:
  CZuCoreApplication();

  mutable std::mutex mutex_;
  std::string dataDir_;
  mutable bool dataDirMade_ = false;  // GetDataDir has made sure the directory exists
  std::string cpuId_;
};

// Ids for modules and for objects; each call returns a new positive number, unique in the process.
ZU_EXPORT int GenerateZuModuleID();
ZU_EXPORT int GenerateZuObjectID();

// Converts between QString and bytes in the named codec ("GB18030", "UTF-8", ...). An unknown codec
// name falls back to UTF-8.
ZU_EXPORT std::string ConvertQStringToStdString(const QString& text, const char* codec = "GB18030");
ZU_EXPORT QString ConvertStdStringToQString(const std::string& text, const char* codec = "GB18030");

#endif  // ZU_CORE_APPLICATION_H
