// A recursive critical section held on the heap, for owners that guard short queue or map
// operations. The owning thread may take it again while holding it.
//
// Thread safety: Lock and Unlock may be called from any thread; each Lock must be matched by an
// Unlock on the same thread.
#ifndef ANNOTATIONLAYER_CRITICAL_LOCK_H
#define ANNOTATIONLAYER_CRITICAL_LOCK_H

#include <memory>
#include <mutex>

#include "AnnotationLayerExport.h"

class ANNOTATIONLAYER_EXPORT CCriticalLock {
 public:
  CCriticalLock();
  ~CCriticalLock();
  CCriticalLock(const CCriticalLock&) = delete;
  CCriticalLock& operator=(const CCriticalLock&) = delete;

  bool Lock();    // always true
  bool Unlock();  // always true

 private:
  std::unique_ptr<std::recursive_mutex> section_;
};

// Holds a CCriticalLock for a scope. A null lock is ignored.
class CCriticalLockGuard {
 public:
  explicit CCriticalLockGuard(CCriticalLock* lock) : lock_(lock) {
    if (lock_ != nullptr) lock_->Lock();
  }
  ~CCriticalLockGuard() {
    if (lock_ != nullptr) lock_->Unlock();
  }
  CCriticalLockGuard(const CCriticalLockGuard&) = delete;
  CCriticalLockGuard& operator=(const CCriticalLockGuard&) = delete;

 private:
  CCriticalLock* lock_;
};

#endif  // ANNOTATIONLAYER_CRITICAL_LOCK_H
