// Runs a program as a child process and collects its exit code and output, for tests of
// command-line tools. Every run is bounded: a child still running at the deadline is killed and
// the result says so. Standard error can be a pseudo-terminal instead of a pipe, for output that
// only appears on terminals; a callback sees the output as it arrives and may signal the child.
#ifndef ANNOTATIONLAYER_TEST_PROCESS_RUNNER_H
#define ANNOTATIONLAYER_TEST_PROCESS_RUNNER_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

struct CProcessResult {
  int exitCode = -1;       // the exit status, or 128 + signal for a child ended by a signal
  bool timedOut = false;   // killed at the deadline
  std::string out;         // standard output
  std::string err;         // standard error (or what the terminal received)
};

class CProcessRunner {
 public:
  // Called with the child's pid and the standard error seen so far, whenever more arrives.
  using ErrorWatcher = std::function<void(pid_t pid, const std::string& errSoFar)>;

  CProcessRunner() = default;
  CProcessRunner(const CProcessRunner&) = delete;
  CProcessRunner& operator=(const CProcessRunner&) = delete;

  void SetTimeoutSeconds(int seconds) { timeoutSeconds_ = seconds; }
  // Standard error on a pseudo-terminal rather than a pipe.
  void SetStderrTerminal(bool terminal) { stderrTerminal_ = terminal; }
  void SetErrorWatcher(ErrorWatcher watcher) { watcher_ = std::move(watcher); }

  // Runs argv[0] with the arguments argv[1..] (no shell), standard input empty.
  CProcessResult Run(const std::vector<std::string>& argv) const;

 private:
  int timeoutSeconds_ = 300;
  bool stderrTerminal_ = false;
  ErrorWatcher watcher_;
};

#endif  // ANNOTATIONLAYER_TEST_PROCESS_RUNNER_H
