// Chains new children at the end of their parents' child lists during a bulk write. For each
// parent it keeps the current last child as a pending order record; appending a child writes the
// pending record with its right neighbour filled in and makes the child the new pending record.
// Flush writes what is still pending. Used by the feature importer and the layer copier.
//
// Rows go to layer_order (layer children) or shape_order (feature children); each neighbour goes
// to its `_layer_` or `_shape_` column by its kind and the other column of the pair gets ''.
//
// Threading contract: used from the thread that owns the connection's current transaction.
#ifndef ANNOTATIONLAYER_SIBLING_ORDER_APPENDER_H
#define ANNOTATIONLAYER_SIBLING_ORDER_APPENDER_H

#include <map>
#include <string>

#include "SqlStatement.h"

struct sqlite3;
class CNodeCacheCalculator;

class CSiblingOrderAppender {
 public:
  struct Record {
    bool stored = false;  // the row exists already: update it rather than insert it
    int orderNum = 0;
    bool isLayer = true;
    std::string uuid;
    bool leftIsLayer = true;
    std::string left;
    bool rightIsLayer = true;
    std::string right;
  };

  CSiblingOrderAppender() = default;
  CSiblingOrderAppender(const CSiblingOrderAppender&) = delete;
  CSiblingOrderAppender& operator=(const CSiblingOrderAppender&) = delete;

  // Binds the appender to a connection and to the calculator it keeps informed (may be null).
  void Bind(sqlite3* db, CNodeCacheCalculator* calculator);
  // Makes `record` the pending last child of `parent` (a child that exists already).
  void Seed(const std::string& parent, const Record& record);
  // Appends `child` after the parent's pending last child. False when writing that child's row
  // failed (logged); the new child is pending in any case.
  bool Append(const std::string& parent, const std::string& child, bool isLayer);
  // Writes every pending record and forgets them; finalizes the statements.
  bool Flush();
  // Forgets every pending record without writing it; finalizes the statements.
  void Reset();

 private:
  bool Write(const Record& record);

  sqlite3* db_ = nullptr;
  CNodeCacheCalculator* calculator_ = nullptr;
  std::map<std::string, Record> pending_;  // by parent uuid
  CSqlStatement insertLayer_, insertShape_, updateLayer_, updateShape_;
};

#endif  // ANNOTATIONLAYER_SIBLING_ORDER_APPENDER_H
