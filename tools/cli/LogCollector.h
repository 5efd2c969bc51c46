// CLogCollector is the tool's log sink: it takes the lines that the module logs (through the
// host's log library) and the messages GDAL reports, keeps the last error of either so that a
// failing command can name the cause in its one-line reason, and shows every line on standard
// error only when asked to (--verbose). Without it, the module's informational lines would mix
// with the tool's output.
//
// Module lines arrive in the local code page and are shown as UTF-8; GDAL messages are UTF-8.
//
// Threading contract: Write and AddMessage may be called from any thread (the module logs from its
// background threads too); every member takes the collector's own mutex.
#ifndef ANNOTATIONLAYER_CLI_LOG_COLLECTOR_H
#define ANNOTATIONLAYER_CLI_LOG_COLLECTOR_H

#include <cstdio>
#include <mutex>
#include <string>

#include "ZuLog.h"

class CLogCollector : public IZuLogSink {
 public:
  // Lines are echoed to `echo` while verbose.
  explicit CLogCollector(std::FILE* echo);
  CLogCollector(const CLogCollector&) = delete;
  CLogCollector& operator=(const CLogCollector&) = delete;

  void SetVerbose(bool verbose);
  bool IsVerbose() const;

  // IZuLogSink: a line from the module.
  void Write(const ZuLogRecord& record) override;
  // A message from another source (GDAL); `source` prefixes it, e.g. "GDAL".
  void AddMessage(ZuLogLevel level, const std::string& source, const std::string& utf8Text);

  // The text of the last error line since the last ClearLastError; empty when there was none.
  std::string LastError() const;
  void ClearLastError();

 private:
  void Keep(ZuLogLevel level, const std::string& line);

  std::FILE* echo_;
  mutable std::mutex mutex_;
  bool verbose_ = false;
  std::string lastError_;
};

#endif  // ANNOTATIONLAYER_CLI_LOG_COLLECTOR_H
