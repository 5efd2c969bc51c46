#include "Task.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The inverted 0..255 scale onto Linux nice values. Every step sets both the policy and the nice
// value, so a thread started from an idle or niced thread does not keep what it inherited. Raising
// priority needs privileges; like any failure to change priority it is ignored.
void ApplyPriority(int priority) {
  int nice = 0;
  switch (priority) {
    case 0: nice = -20; break;   // time critical
    case 40: nice = -10; break;  // highest
    case 80: nice = -5; break;   // above normal
    case 120: nice = 0; break;   // normal
    case 160: nice = 5; break;   // below normal
    case 200: nice = 10; break;  // lowest
    case 255: {                  // idle
      sched_param param{};
      param.sched_priority = 0;
      if (pthread_setschedparam(pthread_self(), SCHED_IDLE, &param) == 0) return;
      nice = 19;
      break;
    }
    default: nice = 0; break;
  }
  sched_param param{};
  param.sched_priority = 0;
  pthread_setschedparam(pthread_self(), SCHED_OTHER, &param);
  const id_t tid = static_cast<id_t>(syscall(SYS_gettid));
  setpriority(PRIO_PROCESS, tid, nice);
}

}  // namespace

struct CTask::Thread {
  std::thread thread;
  std::mutex mutex;
  std::condition_variable finishedChanged;
  bool finished = false;
  bool abandoned = false;  // a bounded stop ran out on it
  std::shared_ptr<std::atomic<bool>> running;
};

CTask::CTask() : running_(std::make_shared<std::atomic<bool>>(false)) {}

CTask::~CTask() {
  if (!thread_) return;
  // The owner should have stopped the thread. Terminating a thread cannot be done safely, and
  // std::thread's destructor would end the process: a finished thread is joined, a running one is
  // detached and keeps its own state alive until it returns.
  bool finished;
  {
    std::lock_guard<std::mutex> guard(thread_->mutex);
    finished = thread_->finished;
  }
  if (finished) {
    thread_->thread.join();
  } else {
    thread_->thread.detach();
  }
}

void CTask::Entry(CTask* task, std::shared_ptr<Thread> thread, int priority) {
  ApplyPriority(priority);
  try {
    task->OnRunTask();
  } catch (...) {
    // A body that throws ends its thread silently.
  }
  thread->running->store(false, std::memory_order_relaxed);
  std::lock_guard<std::mutex> guard(thread->mutex);
  thread->finished = true;
  thread->finishedChanged.notify_all();
}

bool CTask::StartTask(const std::string& name, int priority, int reserved) {
  (void)reserved;
  if (thread_) {
    running_->store(false, std::memory_order_relaxed);
    // An abandoned body ignored a stop once already: waiting for it could take for ever.
    if (!JoinThread(IsAbandoned() ? 0 : -1)) return false;
  }
  if (&name != &name_) name_ = name;

  running_->store(true, std::memory_order_relaxed);
  auto thread = std::make_shared<Thread>();
  thread->running = running_;
  try {
    thread->thread = std::thread(&CTask::Entry, this, thread, priority);
  } catch (...) {
    running_->store(false, std::memory_order_relaxed);
    return false;
  }
  thread_ = std::move(thread);
  return true;
}

bool CTask::StopTask(int timeout_ms) {
  if (!thread_) return false;
  running_->store(false, std::memory_order_relaxed);
  return JoinThread(timeout_ms);
}

// A thread cannot be killed portably (and killing one that holds a lock would poison the process),
// so a bounded wait that runs out abandons the thread: it keeps running and stays held, the result
// is false and the running flag stays cleared.
bool CTask::JoinThread(int timeout_ms) {
  {
    std::unique_lock<std::mutex> lock(thread_->mutex);
    auto finished = [this] { return thread_->finished; };
    if (timeout_ms < 0) {
      thread_->finishedChanged.wait(lock, finished);
    } else if (!thread_->finishedChanged.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                                                  finished)) {
      thread_->abandoned = true;
      return false;
    }
  }
  thread_->thread.join();
  thread_.reset();
  return true;
}

bool CTask::WaitForFinished(int timeout_ms) {
  if (!thread_) return true;
  std::unique_lock<std::mutex> lock(thread_->mutex);
  auto finished = [this] { return thread_->finished; };
  if (timeout_ms < 0) {
    thread_->finishedChanged.wait(lock, finished);
    return true;
  }
  return thread_->finishedChanged.wait_for(lock, std::chrono::milliseconds(timeout_ms), finished);
}

bool CTask::IsAbandoned() const {
  if (!thread_) return false;
  std::lock_guard<std::mutex> guard(thread_->mutex);
  return thread_->abandoned && !thread_->finished;
}

void CTask::RequestStop() { running_->store(false, std::memory_order_relaxed); }

bool CTask::IsRunning() const { return running_->load(std::memory_order_relaxed); }

bool CTask::IsStopped() const { return !IsRunning(); }

bool CTask::SleepWhileRunning(int ms) {
  if (!IsRunning()) return false;
  if (ms < 0) ms = 100;
  if (ms <= 1000) {
    SleepMilliseconds(ms);
    return true;
  }
  int remaining = ms;
  while (remaining > 1000) {
    SleepMilliseconds(1000);
    remaining -= 1000;
    if (!IsRunning()) return false;
  }
  SleepMilliseconds(remaining);
  return true;
}

void CTask::SleepMilliseconds(int ms) {
  std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}
