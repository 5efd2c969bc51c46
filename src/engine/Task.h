// A background task: a thin wrapper around one thread that runs the virtual OnRunTask until the
// body returns or is asked to stop. Subclasses override OnRunTask and poll IsStopped() (or sleep
// with SleepWhileRunning) so that a stop request is noticed.
//
// The usual way to stop a task: if (!t.IsStopped()) { t.RequestStop(); t.StopTask(-1); }
//
// A bounded StopTask that runs out cannot kill the thread (no portable, safe way exists): the
// thread is abandoned. It stays held, so that one task never has two threads, but no call waits
// for it unasked: StartTask refuses at once (false) while an abandoned thread still runs, and
// succeeds once its body has returned. StopTask waits for it again only as long as it is told to.
//
// Threading contract: StartTask, StopTask and the destructor are called by the owner's thread only.
// The running flag is shared between the owner and the task's thread; a stale read costs at most
// one more round of the body's loop. The owner must stop the thread before destroying the task;
// a task destroyed while its thread still runs detaches the thread (see ~CTask).
#ifndef ANNOTATIONLAYER_TASK_H
#define ANNOTATIONLAYER_TASK_H

#include <atomic>
#include <memory>
#include <string>

#include "AnnotationLayerExport.h"

class ANNOTATIONLAYER_EXPORT CTask {
 public:
  CTask();
  virtual ~CTask();
  CTask(const CTask&) = delete;
  CTask& operator=(const CTask&) = delete;

  // Starts a new thread running OnRunTask. A thread left from an earlier run is waited for first,
  // so one task never has two threads; an abandoned one is not waited for (false at once). `priority` is on an inverted 0..255 scale: 0 most urgent,
  // 120 normal, 255 idle; only the steps 0, 40, 80, 120, 160, 200 and 255 are honoured, anything
  // else runs at normal priority. `reserved` is accepted and ignored. False when no thread could
  // be created.
  bool StartTask(const std::string& name, int priority, int reserved);
  // Clears the running flag and waits for the thread: for ever when timeout_ms < 0, else at most
  // timeout_ms. False when no thread is held, and when the wait ran out: the thread is then
  // abandoned (see above).
  bool StopTask(int timeout_ms);
  // Whether a bounded StopTask ran out on the held thread and its body has not returned yet.
  bool IsAbandoned() const;
  // Waits until the body of the held thread has returned, for ever when timeout_ms < 0, without
  // asking it to stop and without releasing the thread. True when no thread is held or the body
  // has returned; false when the wait ran out.
  bool WaitForFinished(int timeout_ms);
  // Clears the running flag and returns at once.
  void RequestStop();
  bool IsRunning() const;
  bool IsStopped() const;
  // Sleeps `ms` (negative: 100) while running. Sleeps longer than a second are cut into one-second
  // slices and end early, returning false, when a stop is requested. False at once when stopped.
  bool SleepWhileRunning(int ms);

  const std::string& GetName() const { return name_; }

 protected:
  // The thread's body. Exceptions that escape it are swallowed; leaving it clears the running flag.
  virtual void OnRunTask() = 0;
  // One uninterrupted sleep of SleepWhileRunning; tests replace it to observe the slices.
  virtual void SleepMilliseconds(int ms);

 private:
  struct Thread;
  static void Entry(CTask* task, std::shared_ptr<Thread> thread, int priority);
  // Waits for the held thread and releases it. False, with the thread still held, when the wait
  // ran out.
  bool JoinThread(int timeout_ms);

  std::string name_;
  // Shared with the running thread so that the thread's last write (clearing the flag when the
  // body returns) never lands in a task that its owner has already destroyed.
  std::shared_ptr<std::atomic<bool>> running_;
  std::shared_ptr<Thread> thread_;  // null when no thread is held
};

#endif  // ANNOTATIONLAYER_TASK_H
