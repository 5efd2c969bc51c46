#include "CriticalLock.h"

#include <new>

CCriticalLock::CCriticalLock() : section_(new (std::nothrow) std::recursive_mutex) {}

CCriticalLock::~CCriticalLock() = default;

bool CCriticalLock::Lock() {
  if (section_) section_->lock();
  return true;
}

bool CCriticalLock::Unlock() {
  if (section_) section_->unlock();
  return true;
}
