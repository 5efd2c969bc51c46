// An SQLite VFS that passes everything to the default one but can make writes fail: after a
// given number of successful writes (xWrite, xTruncate, xSync), every further write returns
// SQLITE_IOERR or SQLITE_FULL. The first CFaultVfs installs the shim as the default VFS for the
// rest of the process; faults are injected only while a CFaultVfs lives. For fault-injection
// tests.
#ifndef ANNOTATIONLAYER_TEST_FAULT_VFS_H
#define ANNOTATIONLAYER_TEST_FAULT_VFS_H

#include <atomic>

class CFaultVfs {
 public:
  CFaultVfs();
  ~CFaultVfs();
  CFaultVfs(const CFaultVfs&) = delete;
  CFaultVfs& operator=(const CFaultVfs&) = delete;

  // From now on, `allowed` more writes succeed and the following ones fail with SQLITE_FULL when
  // `full`, else SQLITE_IOERR_WRITE. A negative `allowed` lets every write through.
  void FailAfter(int allowed, bool full);
  int WritesSeen() const { return writes_.load(); }

  // Called by the shim for every write; true when it must fail.
  static bool ShouldFail(int* code);

 private:
  std::atomic<int> allowed_{-1};
  std::atomic<int> writes_{0};
  std::atomic<bool> full_{false};
};

#endif  // ANNOTATIONLAYER_TEST_FAULT_VFS_H
