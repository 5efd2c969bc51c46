// Placed names (free-standing labels) of the host, kept in a scratch SpatiaLite database with a
// spatial index so that the host's label placement can find them by view extent.
//
// The database lives in the cache directory as name_cluster_<name>.db, one row per label in the
// table `name`, keyed by uuid, with a POINT Z geometry (SRID 4326) and an R*Tree index. Open
// recreates the file empty and begins one transaction that only Close commits: until then every
// change is provisional, and the file stays on disk after Close until the next Open of that name.
// If the object is destroyed, or the process ends, without Close, nothing is kept: the file holds
// an empty table.
//
// Uuids are spliced into statements between single quotes; a uuid holding a quote is refused with a
// log line.
//
// Copies are shallow: a copy is a second handle on the same database, sharing its connection and
// its open transaction, so Open, Close and every change through one handle are seen through all.
// The connection lives while any handle does; the last one to go closes it (without Close, rolling
// the transaction back as above).
//
// Thread safety: none. One thread uses a handle and all its copies together; the open transaction
// holds SQLite's write lock on the file from Open to Close.
#ifndef ANNOTATIONLAYER_SPATIALITE_NAME_DB_H
#define ANNOTATIONLAYER_SPATIALITE_NAME_DB_H

#include <memory>
#include <string>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "NameRecorder.h"

class ANNOTATIONLAYER_EXPORT CSpatialiteNameDB {
 public:
  // Receives the labels of a traversal, each with its uuid and position only; returns true to stop.
  class ANNOTATIONLAYER_EXPORT INameVisitor {
   public:
    virtual ~INameVisitor();
    virtual bool VisitName(const CNameRecorder& record) = 0;
  };

  CSpatialiteNameDB();
  ~CSpatialiteNameDB();
  // Shallow: both handles use one connection (see above).
  CSpatialiteNameDB(const CSpatialiteNameDB& other);
  CSpatialiteNameDB& operator=(const CSpatialiteNameDB& other);

  // Recreates <cache directory>name_cluster_<name>.db empty and begins the transaction that Close
  // commits. True at once when already open. A name that is not a plain file name is refused with a
  // log line, before any file is touched.
  bool Open(const std::string& name);
  bool IsOpened() const;
  // Commits and closes; the file stays. True, also when nothing was open.
  bool Close();

  // Visits the labels whose position overlaps `extent`, at most `limit` of them when limit > 0.
  void TravelViaExtent(const EXTENT& extent, int limit, INameVisitor& visitor);
  // Adds one row; a uuid that is already present fails.
  bool InsertName(const CNameRecorder& record);
  // Deletes the row of record.uuid, if any, and inserts the record.
  bool ModifyName(const CNameRecorder& record);
  // True when the statement ran, also when no row matched.
  bool DeleteName(const std::string& uuid);
  bool DeleteAll();
  bool IsExistName(const std::string& uuid) const;
  // The stored record. An unknown uuid gives a record holding only that uuid; a failure (or a closed
  // database) gives an empty record.
  CNameRecorder QueryNameRecorder(const std::string& uuid);

 private:
  bool CreateTable();

  struct Connection;
  std::shared_ptr<Connection> connection_;  // never null; shared by all copies
};

#endif  // ANNOTATIONLAYER_SPATIALITE_NAME_DB_H
