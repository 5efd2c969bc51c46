// Background tasks: start, cooperative and bounded stop, priorities, interruptible sleep.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "CriticalLock.h"
#include "Task.h"
#include "TaskEx.h"

using namespace std::chrono;

namespace {

// A one-shot flag that a test thread can wait for, at most `timeout`.
class Signal {
 public:
  void Set() {
    std::lock_guard<std::mutex> guard(mutex_);
    set_ = true;
    changed_.notify_all();
  }
  bool WaitFor(milliseconds timeout = milliseconds(5000)) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, timeout, [this] { return set_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool set_ = false;
};

// A task whose body is a function of the task; `started` is set as the body begins.
class BodyTask : public CTask {
 public:
  explicit BodyTask(std::function<void(BodyTask&)> body) : body_(std::move(body)) {}
  Signal started, release;

 protected:
  void OnRunTask() override {
    started.Set();
    body_(*this);
  }

 private:
  std::function<void(BodyTask&)> body_;
};

// The scheduling policy and nice value of a task run at `priority` from the calling thread.
std::pair<int, int> SchedulingAt(int priority) {
  int policy = -1, nice = -100;
  BodyTask probe([&](BodyTask&) {
    policy = sched_getscheduler(0);
    nice = getpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)));
  });
  EXPECT_TRUE(probe.StartTask("probe", priority, 0));
  EXPECT_TRUE(probe.StopTask(-1));
  return {policy, nice};
}

// Calls SleepWhileRunning on its thread and records the slices it sleeps instead of sleeping;
// `stopInSlice` (1-based) requests a stop from inside that slice.
class SleepProbe : public CTask {
 public:
  int sleepMs = 0;
  int stopInSlice = 0;
  bool result = false;
  std::vector<int> slices;
  Signal done;

  // Starts the probe and waits until its body is through, then releases the thread.
  void Run() {
    ASSERT_TRUE(StartTask("sleep", 120, 0));
    ASSERT_TRUE(done.WaitFor());
    ASSERT_TRUE(StopTask(-1));
  }

 protected:
  void OnRunTask() override {
    result = SleepWhileRunning(sleepMs);
    done.Set();
  }
  void SleepMilliseconds(int ms) override {
    slices.push_back(ms);
    if (static_cast<int>(slices.size()) == stopInSlice) RequestStop();
  }
};

}  // namespace

TEST(TaskTest, StartPollStopAndRestart) {
  BodyTask task([](BodyTask& self) {
    while (!self.IsStopped()) std::this_thread::sleep_for(milliseconds(1));
  });
  EXPECT_FALSE(task.StopTask(-1));  // never started
  EXPECT_FALSE(task.SleepWhileRunning(-5));  // stopped: at once, false
  ASSERT_TRUE(task.StartTask("poller", 120, 102400));
  EXPECT_EQ("poller", task.GetName());
  ASSERT_TRUE(task.started.WaitFor());
  EXPECT_TRUE(task.IsRunning());
  task.RequestStop();
  EXPECT_TRUE(task.IsStopped());
  EXPECT_TRUE(task.StopTask(-1));
  EXPECT_FALSE(task.StopTask(-1));  // handle released
  ASSERT_TRUE(task.StartTask(task.GetName(), 120, 102400));  // a second run on the same object
  EXPECT_TRUE(task.StopTask(-1));

  BodyTask thrower([](BodyTask&) { throw std::runtime_error("body failed"); });
  ASSERT_TRUE(thrower.StartTask("thrower", 120, 0));
  ASSERT_TRUE(thrower.started.WaitFor());
  EXPECT_TRUE(thrower.StopTask(-1));
  EXPECT_TRUE(thrower.IsStopped());  // a body that throws reads as stopped
}

TEST(TaskTest, BoundedStopThatRunsOutAbandonsTheThreadWithoutATrap) {
  BodyTask task([](BodyTask& self) { self.release.WaitFor(seconds(30)); });  // ignores stops
  ASSERT_TRUE(task.StartTask("stubborn", 120, 0));
  ASSERT_TRUE(task.started.WaitFor());
  EXPECT_FALSE(task.StopTask(20));
  EXPECT_TRUE(task.IsStopped());    // the flag stays cleared
  EXPECT_TRUE(task.IsAbandoned());
  // A restart neither waits for the abandoned body nor runs a second thread beside it.
  auto restart = std::async(std::launch::async, [&task] { return task.StartTask("again", 120, 0); });
  const bool returned = restart.wait_for(seconds(5)) == std::future_status::ready;
  task.release.Set();  // lets the body end either way, so that a failure cannot hang the suite
  ASSERT_TRUE(returned) << "StartTask waited for an abandoned thread";
  EXPECT_FALSE(restart.get());
  ASSERT_TRUE(task.WaitForFinished(5000));
  EXPECT_FALSE(task.IsAbandoned());
  ASSERT_TRUE(task.StartTask("again", 120, 0));  // the finished thread is joined, a new one runs
  EXPECT_TRUE(task.StopTask(-1));
}

TEST(TaskTest, DestroyingARunningTaskDetachesItsThread) {
  auto released = std::make_shared<Signal>();
  auto finished = std::make_shared<Signal>();
  {
    // The body only touches state it shares, so it can outlive the task object.
    class Detached : public CTask {
     public:
      Detached(std::shared_ptr<Signal> r, std::shared_ptr<Signal> f) : r_(r), f_(f) {}
      Signal started;

     protected:
      void OnRunTask() override {
        // Copied before the signal: once it is set, the object may be gone.
        std::shared_ptr<Signal> r = r_, f = f_;
        started.Set();
        r->WaitFor(seconds(30));
        f->Set();
      }

     private:
      std::shared_ptr<Signal> r_, f_;
    };
    auto task = std::make_unique<Detached>(released, finished);
    ASSERT_TRUE(task->StartTask("detached", 120, 0));
    ASSERT_TRUE(task->started.WaitFor());
  }  // destroyed while running: the process goes on
  released->Set();
  EXPECT_TRUE(finished->WaitFor());
}

TEST(TaskTest, PriorityStepsAndOffStepValues) {
  EXPECT_EQ(SCHED_IDLE, SchedulingAt(255).first);
  const std::pair<int, int> lowest = SchedulingAt(200);
  EXPECT_EQ(SCHED_OTHER, lowest.first);
  EXPECT_GT(lowest.second, getpriority(PRIO_PROCESS, 0));

  // Normal (120, and 100, which is no step) is set, not inherited: a task started from an idle,
  // niced thread runs at normal priority. Leaving the idle class needs privileges.
  if (geteuid() != 0) GTEST_SKIP() << "needs root to leave the idle scheduling class";
  for (int priority : {120, 100}) {
    std::pair<int, int> normal;
    std::thread([&] {
      sched_param param{};
      ASSERT_EQ(0, pthread_setschedparam(pthread_self(), SCHED_IDLE, &param));
      setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 19);
      normal = SchedulingAt(priority);
    }).join();
    EXPECT_EQ(SCHED_OTHER, normal.first) << priority;
    EXPECT_EQ(0, normal.second) << priority;
  }
}

TEST(TaskTest, LongSleepsAreSlicedAndEndAfterTheSliceThatSawTheStop) {
  struct Case {
    int sleepMs, stopInSlice;
    bool result;
    std::vector<int> slices;
  };
  const Case cases[] = {{2500, 0, true, {1000, 1000, 500}},
                        {2500, 1, false, {1000}},
                        {-5, 1, true, {100}}};  // taken as 100; a short sleep is not cut
  for (const Case& c : cases) {
    SCOPED_TRACE(c.sleepMs);
    SleepProbe probe;
    probe.sleepMs = c.sleepMs;
    probe.stopInSlice = c.stopInSlice;
    probe.Run();
    EXPECT_EQ(c.result, probe.result);
    EXPECT_EQ(c.slices, probe.slices);
  }
}

namespace {
class CountingUser : public CTaskExUser {
 public:
  std::atomic<int> calls{0};
  CTaskEx* lastTask = nullptr;
  void OnRunTaskEx(CTaskEx* task) override {
    lastTask = task;
    ++calls;
  }
};
}  // namespace

TEST(TaskExTest, ForwardsToItsUserAndEndsWithoutOne) {
  CTaskEx orphan;
  ASSERT_TRUE(orphan.StartTask("orphan", 120, 0));
  EXPECT_TRUE(orphan.StopTask(-1));
  CountingUser user;
  CTaskEx first, second;
  for (CTaskEx* task : {&first, &second}) {
    task->SetTaskUser(&user);
    ASSERT_TRUE(task->StartTask("t", 120, 0));
    ASSERT_TRUE(task->StopTask(-1));
    EXPECT_EQ(task, user.lastTask);
  }
  EXPECT_EQ(2, user.calls.load());
  CTaskExUser().OnRunTaskEx(&first);  // the default does nothing
}

TEST(CriticalLockTest, IsReentrantAndExcludesOtherThreads) {
  CCriticalLock lock;
  EXPECT_TRUE(lock.Lock());
  EXPECT_TRUE(lock.Lock());
  std::atomic<bool> entered{false};
  std::thread other([&] {
    CCriticalLockGuard guard(&lock);
    entered = true;
  });
  std::this_thread::yield();
  EXPECT_FALSE(entered.load());
  EXPECT_TRUE(lock.Unlock());
  EXPECT_TRUE(lock.Unlock());
  other.join();
  EXPECT_TRUE(entered.load());
}
