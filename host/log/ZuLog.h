// The host's log library: a stream logger that writes one line per message.
//
//   ZuLOG << "[Tag]:" << message;          // info
//   ZuLogWarn << "something odd " << n;     // warning
//   ZuLogError(-1) << "[Tag]:" << errmsg;  // error with a code
//
// Each macro makes a temporary CZuLogObject; the line is handed to the current sink when the
// temporary is destroyed at the end of the full expression. Message bytes are the process's local
// code page (GB18030 / code page 936); sinks decide how to show them.
//
// Thread safety: any thread may log at any time. Sinks are swapped atomically and are called under
// the logger's own mutex, so a sink sees one line at a time.
#ifndef ZU_LOG_H
#define ZU_LOG_H

#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "ZuExport.h"

enum class ZuLogLevel { Info = 0, Warn = 1, Error = 2 };

// One finished line: level, error code (0 unless given to ZuLogError) and the message text.
struct ZuLogRecord {
  ZuLogLevel level = ZuLogLevel::Info;
  int code = 0;
  std::string text;
};

// Receives finished lines. Called with the logger's mutex held.
class ZU_EXPORT IZuLogSink {
 public:
  virtual ~IZuLogSink() = default;
  virtual void Write(const ZuLogRecord& record) = 0;
};

// Writes "LEVEL message" to standard error, converting the local code page to UTF-8 for display.
class ZU_EXPORT CZuLogStderrSink : public IZuLogSink {
 public:
  void Write(const ZuLogRecord& record) override;
};

// Appends "LEVEL message" lines to a file, bytes unchanged (the file is GB18030 text).
class ZU_EXPORT CZuLogFileSink : public IZuLogSink {
 public:
  explicit CZuLogFileSink(const std::string& path);
  ~CZuLogFileSink() override;
  CZuLogFileSink(const CZuLogFileSink&) = delete;
  CZuLogFileSink& operator=(const CZuLogFileSink&) = delete;

  bool IsOpen() const;
  void Write(const ZuLogRecord& record) override;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Keeps every line in memory; tests read them back. Safe to read while other threads log.
class ZU_EXPORT CZuLogCaptureSink : public IZuLogSink {
 public:
  void Write(const ZuLogRecord& record) override;

  std::vector<ZuLogRecord> Records() const;
  std::vector<std::string> Lines() const;
  // True when some line contains `fragment`.
  bool Contains(const std::string& fragment) const;
  // Number of lines that contain `fragment`.
  int Count(const std::string& fragment) const;
  void Clear();

 private:
  mutable std::mutex mutex_;
  std::vector<ZuLogRecord> records_;
};

class ZU_EXPORT CZuLog {
 public:
  // Replaces the sink; null restores the standard error sink. Returns the previous sink.
  static std::shared_ptr<IZuLogSink> SetSink(std::shared_ptr<IZuLogSink> sink);
  static std::shared_ptr<IZuLogSink> GetSink();
  static void Emit(const ZuLogRecord& record);
};

// Installs a capture sink for its lifetime and restores the previous sink afterwards.
class ZU_EXPORT CZuLogCapture {
 public:
  CZuLogCapture();
  ~CZuLogCapture();
  CZuLogCapture(const CZuLogCapture&) = delete;
  CZuLogCapture& operator=(const CZuLogCapture&) = delete;

  CZuLogCaptureSink& Sink() { return *sink_; }
  std::vector<std::string> Lines() const { return sink_->Lines(); }
  bool Contains(const std::string& fragment) const { return sink_->Contains(fragment); }
  int Count(const std::string& fragment) const { return sink_->Count(fragment); }
  void Clear() { sink_->Clear(); }

 private:
  std::shared_ptr<CZuLogCaptureSink> sink_;
  std::shared_ptr<IZuLogSink> previous_;
};

// One message under construction. Not copyable; lives for one full expression.
class ZU_EXPORT CZuLogObject {
 public:
  explicit CZuLogObject(ZuLogLevel level, int code = 0);
  ~CZuLogObject();
  CZuLogObject(const CZuLogObject&) = delete;
  CZuLogObject& operator=(const CZuLogObject&) = delete;

  template <typename T>
  CZuLogObject& operator<<(const T& value) {
    stream_ << value;
    return *this;
  }

 private:
  ZuLogLevel level_;
  int code_;
  std::ostringstream stream_;
};

#define ZuLOG CZuLogObject(ZuLogLevel::Info)
#define ZuLogInfo CZuLogObject(ZuLogLevel::Info)
#define ZuLogWarn CZuLogObject(ZuLogLevel::Warn)
#define ZuLogError(code) CZuLogObject(ZuLogLevel::Error, (code))

#endif  // ZU_LOG_H
