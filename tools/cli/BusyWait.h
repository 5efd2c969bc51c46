// CBusyWait makes every SQLite connection the process opens while it lives (the tool's own, the
// module's and GDAL's) wait for a lock held by another process instead of failing at once with
// "database is locked": a busy handler retries for up to kWaitMs. The first time any connection
// has to wait, one notice says so on standard error when that is a terminal, so that a person
// knows why the tool pauses; scripts keep the one-line failure.
//
// SQLite calls a busy handler only where waiting cannot deadlock: not when a connection that has
// read inside a transaction wants to write. Writing commands therefore wait for the write lock
// up front (CDatabaseSession::OPEN_FOR_WRITING) before their model begins its transaction.
//
// Threading contract: make and destroy on the main thread, one object at a time, before and
// after every connection; the handler runs on whichever thread a connection waits on.
#ifndef ANNOTATIONLAYER_CLI_BUSY_WAIT_H
#define ANNOTATIONLAYER_CLI_BUSY_WAIT_H

class CBusyWait {
 public:
  static constexpr int kWaitMs = 5000;

  CBusyWait();
  ~CBusyWait();
  CBusyWait(const CBusyWait&) = delete;
  CBusyWait& operator=(const CBusyWait&) = delete;
};

#endif  // ANNOTATIONLAYER_CLI_BUSY_WAIT_H
