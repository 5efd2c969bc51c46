#include "ProcessRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace {

void CloseFd(int& fd) {
  if (fd >= 0) close(fd);
  fd = -1;
}

}  // namespace

CProcessResult CProcessRunner::Run(const std::vector<std::string>& argv) const {
  CProcessResult result;
  if (argv.empty()) return result;
  int outPipe[2] = {-1, -1};
  int errFds[2] = {-1, -1};  // [0] read end in the parent, [1] the child's stderr
  if (pipe(outPipe) != 0) return result;
  bool errReady = stderrTerminal_ ? openpty(&errFds[0], &errFds[1], nullptr, nullptr, nullptr) == 0
                                  : pipe(errFds) == 0;
  if (!errReady) {
    CloseFd(outPipe[0]);
    CloseFd(outPipe[1]);
    return result;
  }

  std::vector<char*> args;
  std::vector<std::string> copies(argv);
  for (std::string& arg : copies) args.push_back(&arg[0]);
  args.push_back(nullptr);

  const pid_t pid = fork();
  if (pid == 0) {
    const int devNull = open("/dev/null", O_RDONLY);
    if (devNull >= 0) dup2(devNull, STDIN_FILENO);
    dup2(outPipe[1], STDOUT_FILENO);
    dup2(errFds[1], STDERR_FILENO);
    close(outPipe[0]);
    close(errFds[0]);
    execv(args[0], args.data());
    _exit(127);
  }
  CloseFd(outPipe[1]);
  CloseFd(errFds[1]);
  if (pid < 0) {
    CloseFd(outPipe[0]);
    CloseFd(errFds[0]);
    return result;
  }

  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds_);
  int fds[2] = {outPipe[0], errFds[0]};
  std::string* sinks[2] = {&result.out, &result.err};
  while (fds[0] >= 0 || fds[1] >= 0) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      result.timedOut = true;
      kill(pid, SIGKILL);
      break;
    }
    // poll() skips the entries whose descriptor is negative, that is, already closed.
    pollfd polls[2] = {{fds[0], POLLIN, 0}, {fds[1], POLLIN, 0}};
    const int ready = poll(polls, 2, static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) break;
    for (int i = 0; i < 2; ++i) {
      if (polls[i].revents == 0) continue;
      char buffer[4096];
      const ssize_t n = read(fds[i], buffer, sizeof buffer);
      if (n > 0) {
        sinks[i]->append(buffer, static_cast<size_t>(n));
        if (i == 1 && watcher_) watcher_(pid, result.err);
      } else {
        // End of file; a terminal whose other side closed reports an error (EIO) instead.
        CloseFd(fds[i]);
      }
    }
  }
  CloseFd(fds[0]);
  CloseFd(fds[1]);

  int status = 0;
  // The pipes are closed, so the child has exited or was killed: this wait ends.
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.exitCode = 128 + WTERMSIG(status);
  return result;
}
