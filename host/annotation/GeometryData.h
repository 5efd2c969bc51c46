// One part of a geometry: an ordered list of vertices (a point run, a line string or a ring).
// A plain value; copy freely.
#ifndef ZU_GEOMETRY_DATA_H
#define ZU_GEOMETRY_DATA_H

#include <cstddef>
#include <vector>

#include "Vector3D.h"
#include "ZuExport.h"

class ZU_EXPORT CGeometryData {
 public:
  CGeometryData() = default;
  explicit CGeometryData(std::vector<CVector3D> vertices) : vertices_(std::move(vertices)) {}

  int GetSize() const { return static_cast<int>(vertices_.size()); }
  // Requires 0 <= index < GetSize().
  const CVector3D& At(int index) const { return vertices_[static_cast<size_t>(index)]; }
  CVector3D& At(int index) { return vertices_[static_cast<size_t>(index)]; }
  void PushBack(const CVector3D& vertex) { vertices_.push_back(vertex); }
  void Clear() { vertices_.clear(); }
  const std::vector<CVector3D>& Vertices() const { return vertices_; }

  bool operator==(const CGeometryData& other) const { return vertices_ == other.vertices_; }
  bool operator!=(const CGeometryData& other) const { return !(*this == other); }

 private:
  std::vector<CVector3D> vertices_;
};

#endif  // ZU_GEOMETRY_DATA_H
