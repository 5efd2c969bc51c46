// Gives one connection a larger page cache for the scope of a batch transaction, and sets back
// the size it had. A batch tool writes far more pages in one transaction than the default cache
// holds; SQLite then spills dirty pages to the file in the middle of the transaction and reads
// them back. The size is a setting of the connection only: nothing is written to the file.
//
// Threading contract: used from the thread that owns the connection's current transaction.
#ifndef ANNOTATIONLAYER_CACHE_SIZE_SCOPE_H
#define ANNOTATIONLAYER_CACHE_SIZE_SCOPE_H

#include <cstdint>

struct sqlite3;

class CCacheSizeScope {
 public:
  // The cache of `db` holds at least `kibibytes` KiB while the scope lives (a larger cache the
  // connection has already is kept). A null connection is ignored.
  CCacheSizeScope(sqlite3* db, int64_t kibibytes);
  ~CCacheSizeScope();
  CCacheSizeScope(const CCacheSizeScope&) = delete;
  CCacheSizeScope& operator=(const CCacheSizeScope&) = delete;

  // The size used by the batch tools.
  static constexpr int64_t kBatchKibibytes = 256 * 1024;

 private:
  sqlite3* db_;
  bool changed_ = false;
  int64_t previous_ = 0;  // as PRAGMA cache_size reports it: pages, or -KiB
};

#endif  // ANNOTATIONLAYER_CACHE_SIZE_SCOPE_H
