#include "TaskEx.h"

void CTaskEx::OnRunTask() {
  CTaskExUser* user = GetTaskUser();
  if (user != nullptr) user->OnRunTaskEx(this);
}
