// Copies the rows of single features from one annotation database connection to another (or to
// the same one) with statements prepared once: the shape row with its geometry, the status,
// attribute field, user data and style rows, and the feature's sibling order row. Rows are copied
// as stored (texts and blobs byte for byte), and the copy's index array lists its new row ids.
// Enclosures are left to the caller. Internal to the module; used by the node tree copier, which
// copies the features of a layer one after another.
//
// Threading contract: used from one thread, inside a transaction of the target connection that
// the caller holds; both connections must outlive the copier.
#ifndef ANNOTATIONLAYER_FEATURE_ROW_COPIER_H
#define ANNOTATIONLAYER_FEATURE_ROW_COPIER_H

#include <cstdint>
#include <string>
#include <vector>

#include "SqlStatement.h"

struct sqlite3;

class CFeatureRowCopier {
 public:
  CFeatureRowCopier(sqlite3* source, sqlite3* target);
  CFeatureRowCopier(const CFeatureRowCopier&) = delete;
  CFeatureRowCopier& operator=(const CFeatureRowCopier&) = delete;

  // What CopyRows read of the original.
  struct Original {
    std::string localName;  // in the local code page, for progress reports
    bool hasEnclosures = false;
  };

  // Writes the feature `uuid` of the source as `copy` below `parent`: its status row (the
  // original's status word, or checked for a feature without a status row of its own, as GIS
  // layers store them), its field, user data and style rows and its shape row. False when the
  // original cannot be read or a row cannot be written (logged).
  bool CopyRows(const std::string& uuid, const std::string& copy, const std::string& parent,
                Original* original);
  // The order row of `copy`, after `left` (a layer when `leftIsLayer`, none when empty).
  bool InsertOrder(const std::string& copy, const std::string& left, bool leftIsLayer, int order);
  // Points the right neighbour of the copied feature `feature` at `right`.
  bool LinkRight(const std::string& feature, const std::string& right, bool rightIsLayer);

 private:
  // Prepares `stmt` on its first use.
  bool Ready(CSqlStatement* stmt, sqlite3* db, const char* sql);
  // Copies the rows of `table` (status-like satellite tables keyed by id) listed in `ids`, in
  // ascending id order, through `read` and `write`; the new ids go to `copied`.
  bool CopySatellites(const std::vector<int64_t>& ids, CSqlStatement* read, CSqlStatement* write,
                      int columns, const std::string& copy, std::vector<int64_t>* copied);

  sqlite3* source_;
  sqlite3* target_;
  CSqlStatement readShape_, readStatus_, readProperty_, readUserData_, readStyle_;
  CSqlStatement writeStatus_, writeProperty_, writeUserData_, writeStyle_, writeShape_;
  CSqlStatement writeGeometry_;
  CSqlStatement writeOrder_, linkRight_;
};

#endif  // ANNOTATIONLAYER_FEATURE_ROW_COPIER_H
