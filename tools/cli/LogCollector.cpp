#include "LogCollector.h"

#include "LocalText.h"

namespace {

const char* LevelName(ZuLogLevel level) {
  switch (level) {
    case ZuLogLevel::Info: return "info";
    case ZuLogLevel::Warn: return "warning";
    case ZuLogLevel::Error: return "error";
  }
  return "info";
}

}  // namespace

CLogCollector::CLogCollector(std::FILE* echo) : echo_(echo) {}

void CLogCollector::SetVerbose(bool verbose) {
  std::lock_guard<std::mutex> guard(mutex_);
  verbose_ = verbose;
}

bool CLogCollector::IsVerbose() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return verbose_;
}

void CLogCollector::Write(const ZuLogRecord& record) {
  Keep(record.level, "module: " + CLocalText::ToUtf8(record.text));
}

void CLogCollector::AddMessage(ZuLogLevel level, const std::string& source,
                               const std::string& utf8Text) {
  Keep(level, source + ": " + utf8Text);
}

void CLogCollector::Keep(ZuLogLevel level, const std::string& line) {
  std::lock_guard<std::mutex> guard(mutex_);
  if (level == ZuLogLevel::Error) lastError_ = line;
  if (verbose_ && echo_ != nullptr) {
    std::fprintf(echo_, "[%s] %s\n", LevelName(level), line.c_str());
    std::fflush(echo_);
  }
}

std::string CLogCollector::LastError() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return lastError_;
}

void CLogCollector::ClearLastError() {
  std::lock_guard<std::mutex> guard(mutex_);
  lastError_.clear();
}
