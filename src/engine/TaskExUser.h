// The callback interface a CTaskEx calls from its thread. One object can drive several tasks: the
// argument says which task is calling.
//
// Threading contract: OnRunTaskEx runs on the task's thread; the implementation guards whatever it
// shares with other threads.
#ifndef ANNOTATIONLAYER_TASK_EX_USER_H
#define ANNOTATIONLAYER_TASK_EX_USER_H

#include "AnnotationLayerExport.h"

class CTaskEx;

class ANNOTATIONLAYER_EXPORT CTaskExUser {
 public:
  virtual ~CTaskExUser() = default;
  // The body of `task`'s thread. Does nothing by default.
  virtual void OnRunTaskEx(CTaskEx* task) {}
};

#endif  // ANNOTATIONLAYER_TASK_EX_USER_H
