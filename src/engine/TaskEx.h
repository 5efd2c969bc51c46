// A CTask whose body forwards to a separate CTaskExUser, so that one owner can drive many threads
// without deriving from CTask.
//
// Threading contract: as CTask. The user is not owned; the owner detaches it (SetTaskUser(nullptr))
// only after the thread has been stopped. A task without a user ends at once when started.
#ifndef ANNOTATIONLAYER_TASK_EX_H
#define ANNOTATIONLAYER_TASK_EX_H

#include <atomic>

#include "AnnotationLayerExport.h"
#include "Task.h"
#include "TaskExUser.h"

class ANNOTATIONLAYER_EXPORT CTaskEx : public CTask {
 public:
  CTaskEx() = default;
  void SetTaskUser(CTaskExUser* user) { user_.store(user, std::memory_order_relaxed); }
  CTaskExUser* GetTaskUser() const { return user_.load(std::memory_order_relaxed); }

 protected:
  void OnRunTask() override;

 private:
  std::atomic<CTaskExUser*> user_{nullptr};
};

#endif  // ANNOTATIONLAYER_TASK_EX_H
