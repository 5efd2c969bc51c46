// The key points (vertices) of one feature under edit, kept in a scratch SpatiaLite database so
// that the host's geometry editor can find them by extent, pick the one under the cursor, snap to
// the nearest, step through a part, and insert, move and delete points with spatial-index support
// before writing them all back into the feature.
//
// The database lives in the cache directory as <name>_kpt.db. Open recreates it empty and fills it
// from the feature's parts; Close deletes it. Each point is a row of the table `keypoint`: its id
// (assigned at insertion, never reused while the file is open), the index of its part, its
// position within the part and a POINT Z geometry (SRID 4326) with an R*Tree index.
//
// Positions within a part only grow by insertion: removing a point leaves a gap, and only their
// order matters. Moving a point (ReviseKeyPoint) gives it a new id.
//
// Copies are shallow: a copy is a second handle on the same database, sharing its connection and
// cached statements, so Open, Close and every edit through one handle are seen through all.
//
// Lifetime: the connection lives while any handle does. Destroying the last handle of an open
// database releases the connection but neither closes the editing run nor deletes the file;
// owners call Close (through any handle).
// Thread safety: none. One editing run on one thread: a handle and all its copies together are
// used by one thread at a time, since they share the connection and the cached statements.
#ifndef ANNOTATIONLAYER_SPATIALITE_EDITOR_DB_H
#define ANNOTATIONLAYER_SPATIALITE_EDITOR_DB_H

#include <memory>
#include <string>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "IAnnotationFeature.h"
#include "Vector3D.h"

class ANNOTATIONLAYER_EXPORT CSpatialiteEditorDB : public IAnnotationFeature::IGeometryDataVisitor {
 public:
  // Receives key points of a traversal; returns true to stop it.
  class ANNOTATIONLAYER_EXPORT IKeyPointVisitor {
   public:
    virtual ~IKeyPointVisitor();
    virtual bool VisitKeyPoint(int id, const CVector3D& point) = 0;
  };

  CSpatialiteEditorDB();
  ~CSpatialiteEditorDB() override;
  // Shallow: both handles use one connection (see above).
  CSpatialiteEditorDB(const CSpatialiteEditorDB& other);
  CSpatialiteEditorDB& operator=(const CSpatialiteEditorDB& other);

  // Recreates <cache directory><name>_kpt.db and fills it with the points of every part of
  // `feature` (a null feature or one without geometry gives an empty database). True at once when
  // already open, keeping the first file. A name that is not a plain file name is refused with a
  // log line, before any file is touched.
  bool Open(const std::string& name, IAnnotationFeature* feature);
  bool IsOpened() const;
  // Deletes the file. True, also when nothing was open.
  bool Close();

  // Inserts `point` right after the point `afterId`, in the same part; the later points of the
  // part move up by one. The new id, or -1.
  int InsertKeyPoint(int afterId, const CVector3D& point);
  // Deletes one point; the others keep their positions.
  bool RemoveKeyPoint(int id);
  // Moves one point, keeping its part and position. The point gets a new id.
  bool ReviseKeyPoint(int id, const CVector3D& point);

  // Visits the points strictly inside `extent`, at most `limit` of them when limit > 0.
  void TravelViaExtent(const EXTENT& extent, int limit, IKeyPointVisitor& visitor);
  // The point strictly inside the square of half side `tolerance` around `pick` (z ignored); when
  // several are, the last row SQLite returns. Its id, with `out` set, or -1.
  int QueryPickedKeyPoint(CVector3D& out, const CVector3D& pick, double tolerance) const;
  // The point strictly inside `extent` nearest to `position` in the plane, as the spatial index's
  // single-precision box sees it. Its id, with `out` set, or -1.
  int QueryClosestKeyPoint(CVector3D& out, const EXTENT& extent, const CVector3D& position) const;
  // The next (or previous) existing point of the same part as `id`, stepping over gaps. No
  // wrap-around: false past either end.
  bool QuerySiblingKeyPoint(CVector3D& out, int id, bool next) const;

  // Replaces the feature's parts with the points, grouped by part in part and position order.
  // Parts left without points disappear, so later parts close up. The feature's kind stays.
  bool CombineToData(IAnnotationFeature* feature) const;

 protected:
  // Stores the points of one part while the feature is read in.
  void ApplyGeometryData(IAnnotationFeature* feature, int partIndex,
                         const CGeometryData& data) override;

 private:
  bool CreateTable();
  void BuildKeyPoint(IAnnotationFeature* feature);
  bool InsertKeyPointInner(int polygonIndex, int kptIndex, const CVector3D& point);
  void ModifyBatchOffsetKeyPoint(int polygonIndex, int fromKptIndex);
  bool ModifyKeyPointInner(int id, int kptIndex);
  // The part and position of a point; false, logged under `tag`, when it cannot be read.
  bool QueryKeyPointPlace(int id, const std::string& tag, int& polygonIndex, int& kptIndex) const;
  // Runs a statement of (id, geom) rows; every row sets `id` and, when its geometry decodes, `out`.
  int QueryLastKeyPoint(const std::string& sql, CVector3D& out) const;

  struct Connection;
  std::shared_ptr<Connection> connection_;  // never null; shared by all copies
};

#endif  // ANNOTATIONLAYER_SPATIALITE_EDITOR_DB_H
