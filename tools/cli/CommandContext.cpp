#include "CommandContext.h"

#include <json/writer.h>

#include <memory>
#include <sstream>

#include "ArgumentParser.h"
#include "LogCollector.h"

namespace {

// A reason must stay on one line whatever the module or GDAL put into it.
std::string OneLine(std::string text) {
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return text;
}

}  // namespace

CCommandContext::CCommandContext(const CArgumentParser* args, CLogCollector* log, std::FILE* out,
                                 std::FILE* err)
    : args_(args), log_(log), out_(out), err_(err) {}

bool CCommandContext::Json() const { return args_->Has("json"); }

void CCommandContext::Print(const std::string& line) {
  std::fputs(line.c_str(), out_);
  std::fputc('\n', out_);
}

std::string CCommandContext::JsonText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  builder["emitUTF8"] = true;
  std::ostringstream text;
  std::unique_ptr<Json::StreamWriter> writer(builder.newStreamWriter());
  writer->write(value, &text);
  return text.str();
}

void CCommandContext::PrintJson(const Json::Value& value) { Print(JsonText(value)); }

void CCommandContext::Write(const std::string& text) { std::fputs(text.c_str(), out_); }

int CCommandContext::Fail(const std::string& reason, int code) {
  std::fprintf(err_, "annotationlayer %s: %s\n", args_->Command().c_str(), OneLine(reason).c_str());
  std::fflush(err_);
  return code;
}

int CCommandContext::FailWithCause(const std::string& reason, int code) {
  const std::string cause = log_ != nullptr ? log_->LastError() : std::string();
  return Fail(cause.empty() ? reason : reason + " (" + cause + ")", code);
}

int CCommandContext::UsageError(const std::string& reason) {
  return Fail(reason + " (see 'annotationlayer " + args_->Command() + " --help')", kExitUsage);
}
