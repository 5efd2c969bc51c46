// Prepared statements kept for reuse on one connection, one set per calling thread: the read paths
// that run once per feature in the background passes prepare their statement once and then only
// reset, bind and step it. Several threads read through one connection at a time (the host, the
// node cache pass, the spatial engine), and a statement must never be stepped by two threads, so
// each thread gets its own.
//
// Threading contract: Get may be called from any thread; the statement it returns belongs to the
// calling thread until that thread calls Get again for the same text. Clear finalizes everything
// and may only be called when no thread uses a statement of the cache (before the connection is
// closed).
#ifndef ANNOTATIONLAYER_STATEMENT_CACHE_H
#define ANNOTATIONLAYER_STATEMENT_CACHE_H

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "SqlStatement.h"

// A statement of the cache lent to the calling thread; it is reset when the lease ends, so that a
// stepped statement never keeps the connection's read transaction open (which would hold off the
// writers of other connections).
class CCachedStatement {
 public:
  explicit CCachedStatement(CSqlStatement* statement) : statement_(statement) {}
  ~CCachedStatement() {
    if (statement_ != nullptr) statement_->Reset();
  }
  CCachedStatement(CCachedStatement&& other) noexcept : statement_(other.statement_) {
    other.statement_ = nullptr;
  }
  CCachedStatement(const CCachedStatement&) = delete;
  CCachedStatement& operator=(const CCachedStatement&) = delete;
  CCachedStatement& operator=(CCachedStatement&&) = delete;

  explicit operator bool() const { return statement_ != nullptr; }
  CSqlStatement* operator->() const { return statement_; }
  CSqlStatement& operator*() const { return *statement_; }

 private:
  CSqlStatement* statement_;
};

class CStatementCache {
 public:
  CStatementCache() = default;
  CStatementCache(const CStatementCache&) = delete;
  CStatementCache& operator=(const CStatementCache&) = delete;

  // The calling thread's statement for `sql` on `db`, reset and with its bindings cleared; empty
  // when it cannot be prepared (logged with `tag`). Owned by the cache.
  CCachedStatement Get(sqlite3* db, const std::string& sql, const std::string& tag);
  void Clear();

 private:
  std::mutex mutex_;
  std::map<std::pair<std::thread::id, std::string>, std::unique_ptr<CSqlStatement>> statements_;
};

#endif  // ANNOTATIONLAYER_STATEMENT_CACHE_H
