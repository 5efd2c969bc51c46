#include "ZuLog.h"

#include <QByteArray>
#include <QString>
#include <QTextCodec>

#include <cstdio>
#include <fstream>

namespace {

const char* LevelName(ZuLogLevel level) {
  switch (level) {
    case ZuLogLevel::Info: return "INFO";
    case ZuLogLevel::Warn: return "WARN";
    case ZuLogLevel::Error: return "ERROR";
  }
  return "INFO";
}

std::string FormatLine(const ZuLogRecord& record) {
  std::string line = LevelName(record.level);
  if (record.level == ZuLogLevel::Error && record.code != 0) {
    line += "(" + std::to_string(record.code) + ")";
  }
  line += " ";
  line += record.text;
  return line;
}

struct LoggerState {
  std::mutex emitMutex;  // serialises calls into the sink
  std::mutex sinkMutex;  // guards the pointer itself
  std::shared_ptr<IZuLogSink> sink = std::make_shared<CZuLogStderrSink>();
};

LoggerState& State() {
  static LoggerState* state = new LoggerState;  // never destroyed: threads may log during exit
  return *state;
}

}  // namespace

void CZuLogStderrSink::Write(const ZuLogRecord& record) {
  static QTextCodec* codec = QTextCodec::codecForName("GB18030");
  std::string line = FormatLine(record);
  if (codec != nullptr) {
    QString text = codec->toUnicode(line.data(), static_cast<int>(line.size()));
    line = text.toUtf8().toStdString();
  }
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
}

struct CZuLogFileSink::Impl {
  std::ofstream out;
};

CZuLogFileSink::CZuLogFileSink(const std::string& path) : impl_(new Impl) {
  impl_->out.open(path, std::ios::out | std::ios::app | std::ios::binary);
}

CZuLogFileSink::~CZuLogFileSink() = default;

bool CZuLogFileSink::IsOpen() const { return impl_->out.is_open(); }

void CZuLogFileSink::Write(const ZuLogRecord& record) {
  if (!impl_->out.is_open()) return;
  impl_->out << FormatLine(record) << '\n';
  impl_->out.flush();
}

void CZuLogCaptureSink::Write(const ZuLogRecord& record) {
  std::lock_guard<std::mutex> guard(mutex_);
  records_.push_back(record);
}

std::vector<ZuLogRecord> CZuLogCaptureSink::Records() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return records_;
}

std::vector<std::string> CZuLogCaptureSink::Lines() const {
  std::lock_guard<std::mutex> guard(mutex_);
  std::vector<std::string> lines;
  lines.reserve(records_.size());
  for (const ZuLogRecord& r : records_) lines.push_back(r.text);
  return lines;
}

bool CZuLogCaptureSink::Contains(const std::string& fragment) const { return Count(fragment) > 0; }

int CZuLogCaptureSink::Count(const std::string& fragment) const {
  std::lock_guard<std::mutex> guard(mutex_);
  int n = 0;
  for (const ZuLogRecord& r : records_) {
    if (r.text.find(fragment) != std::string::npos) ++n;
  }
  return n;
}

void CZuLogCaptureSink::Clear() {
  std::lock_guard<std::mutex> guard(mutex_);
  records_.clear();
}

std::shared_ptr<IZuLogSink> CZuLog::SetSink(std::shared_ptr<IZuLogSink> sink) {
  if (!sink) sink = std::make_shared<CZuLogStderrSink>();
  LoggerState& state = State();
  std::lock_guard<std::mutex> guard(state.sinkMutex);
  std::swap(state.sink, sink);
  return sink;
}

std::shared_ptr<IZuLogSink> CZuLog::GetSink() {
  LoggerState& state = State();
  std::lock_guard<std::mutex> guard(state.sinkMutex);
  return state.sink;
}

void CZuLog::Emit(const ZuLogRecord& record) {
  std::shared_ptr<IZuLogSink> sink = GetSink();
  std::lock_guard<std::mutex> guard(State().emitMutex);
  sink->Write(record);
}

CZuLogCapture::CZuLogCapture() : sink_(std::make_shared<CZuLogCaptureSink>()) {
  previous_ = CZuLog::SetSink(sink_);
}

CZuLogCapture::~CZuLogCapture() { CZuLog::SetSink(previous_); }

CZuLogObject::CZuLogObject(ZuLogLevel level, int code) : level_(level), code_(code) {}

CZuLogObject::~CZuLogObject() {
  ZuLogRecord record;
  record.level = level_;
  record.code = code_;
  record.text = stream_.str();
  CZuLog::Emit(record);
}
