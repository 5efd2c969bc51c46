// A point in three dimensions: x (longitude), y (latitude), z (height). A plain value.
#ifndef ZU_VECTOR3D_H
#define ZU_VECTOR3D_H

#include "ZuExport.h"

class ZU_EXPORT CVector3D {
 public:
  CVector3D() = default;
  CVector3D(double x, double y, double z) : x_(x), y_(y), z_(z) {}

  double X() const { return x_; }
  double Y() const { return y_; }
  double Z() const { return z_; }
  void SetX(double x) { x_ = x; }
  void SetY(double y) { y_ = y; }
  void SetZ(double z) { z_ = z; }

  bool operator==(const CVector3D& other) const {
    return x_ == other.x_ && y_ == other.y_ && z_ == other.z_;
  }
  bool operator!=(const CVector3D& other) const { return !(*this == other); }

 private:
  double x_ = 0.0;
  double y_ = 0.0;
  double z_ = 0.0;
};

#endif  // ZU_VECTOR3D_H
