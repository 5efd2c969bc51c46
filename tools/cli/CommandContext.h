// CCommandContext is what a running subcommand gets from the tool: its parsed arguments, where to
// print (data to standard output, as text or as JSON with --json; reasons to standard error), the
// log collector that knows the last error the module or GDAL reported, and the exit codes.
//
// Failures are one line on standard error, "annotationlayer <command>: <reason>", so that scripts
// and people see the same thing.
//
// Threading contract: none; the main thread uses it while the command runs.
#ifndef ANNOTATIONLAYER_CLI_COMMAND_CONTEXT_H
#define ANNOTATIONLAYER_CLI_COMMAND_CONTEXT_H

#include <json/value.h>

#include <cstdio>
#include <string>

class CArgumentParser;
class CLogCollector;

class CCommandContext {
 public:
  static constexpr int kExitOk = 0;
  static constexpr int kExitFailure = 1;
  static constexpr int kExitUsage = 2;
  static constexpr int kExitInterrupted = 130;

  // None of the pointers is owned; all must outlive the context.
  CCommandContext(const CArgumentParser* args, CLogCollector* log, std::FILE* out, std::FILE* err);
  CCommandContext(const CCommandContext&) = delete;
  CCommandContext& operator=(const CCommandContext&) = delete;

  const CArgumentParser& Args() const { return *args_; }
  CLogCollector* Log() const { return log_; }
  std::FILE* Err() const { return err_; }
  // Whether the command was asked for --json output.
  bool Json() const;

  // One line of text output.
  void Print(const std::string& line);
  // A JSON document as the whole output.
  void PrintJson(const Json::Value& value);
  // Output as it is, with no line end added: for a document printed in pieces as it is read.
  void Write(const std::string& text);
  // `value` as PrintJson writes it (two-space indentation, UTF-8 as it is), without a line end.
  static std::string JsonText(const Json::Value& value);

  // Prints the reason and returns `code`.
  int Fail(const std::string& reason, int code = kExitFailure);
  // The same, with the last error reported by the module or GDAL appended as the cause.
  int FailWithCause(const std::string& reason, int code = kExitFailure);
  // A mistake in the arguments: the reason, a pointer to --help, and the usage exit code.
  int UsageError(const std::string& reason);

 private:
  const CArgumentParser* args_;
  CLogCollector* log_;
  std::FILE* out_;
  std::FILE* err_;
};

#endif  // ANNOTATIONLAYER_CLI_COMMAND_CONTEXT_H
