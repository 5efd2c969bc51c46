#include "StatementCache.h"

CCachedStatement CStatementCache::Get(sqlite3* db, const std::string& sql, const std::string& tag) {
  CSqlStatement* statement = nullptr;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    std::unique_ptr<CSqlStatement>& slot = statements_[{std::this_thread::get_id(), sql}];
    if (!slot || !slot->IsValid()) {
      slot.reset(new CSqlStatement);
      if (!slot->Prepare(db, sql, tag)) return CCachedStatement(nullptr);
    }
    statement = slot.get();
  }
  statement->Reset();
  return CCachedStatement(statement);
}

void CStatementCache::Clear() {
  std::lock_guard<std::mutex> guard(mutex_);
  statements_.clear();
}
