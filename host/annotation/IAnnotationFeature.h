// IAnnotationFeature is one annotation as the host keeps it in memory: its geometry (a kind and a
// list of parts), its name, its attribute fields (an ordered key -> value list with unique keys)
// and its style set, which the feature owns. Features live in groups; the group a feature was
// added to is its group.
//
// Texts (name, keys) are bytes in the local code page.
//
// Thread safety: none; one thread uses a feature at a time.
#ifndef ZU_IANNOTATION_FEATURE_H
#define ZU_IANNOTATION_FEATURE_H

#include <QVariant>

#include <string>
#include <vector>

#include "GeometryData.h"
#include "GeometryDataType.h"
#include "Vector3D.h"
#include "ZuExport.h"

class CFeatureStyleSet;
class IAnnotationGroup;

class ZU_EXPORT IAnnotationFeature {
 public:
  // Receives the parts of a feature in order (TravelGeometryData).
  class ZU_EXPORT IGeometryDataVisitor {
   public:
    virtual ~IGeometryDataVisitor();
    virtual void ApplyGeometryData(IAnnotationFeature* feature, int partIndex,
                                   const CGeometryData& data) = 0;
  };

  virtual ~IAnnotationFeature();

  virtual E_GEOMETRY_DATA_TYPE GetGeometryType() const = 0;
  virtual void SetGeometryType(E_GEOMETRY_DATA_TYPE type) = 0;
  virtual int GetPartCount() const = 0;
  // The part at `index`; an empty part when `index` is out of range.
  virtual const CGeometryData& GetPart(int index) const = 0;
  virtual void AddPart(const CGeometryData& part) = 0;
  virtual void ClearParts() = 0;
  // Replaces all parts; the geometry kind stays.
  virtual void SetGeometryData(const std::vector<CGeometryData>& parts) = 0;
  // Calls the visitor once per part, in order.
  virtual void TravelGeometryData(IGeometryDataVisitor& visitor) = 0;
  // The bounding box of all vertices; false (and both corners untouched) when there is none.
  virtual bool GetExtent(CVector3D& min, CVector3D& max) const = 0;

  virtual std::string GetName() const = 0;
  virtual void SetName(const std::string& name) = 0;

  virtual int GetFieldCount() const = 0;
  // The key at `index`, or empty when out of range.
  virtual std::string GetFieldKey(int index) const = 0;
  // The value at `index`, or an invalid QVariant when out of range.
  virtual QVariant GetFieldValue(int index) const = 0;
  // The index of `key`, or -1.
  virtual int FindField(const std::string& key) const = 0;
  // Replaces the value of `key` in place, or appends the field.
  virtual void SetFieldValue(const std::string& key, const QVariant& value) = 0;
  virtual void ClearFields() = 0;

  // Never null; owned by the feature.
  virtual CFeatureStyleSet* GetStyleSet() = 0;
  virtual const CFeatureStyleSet* GetStyleSet() const = 0;

  // The group holding the feature, or null. Set by the group when the feature is added.
  virtual IAnnotationGroup* GetGroup() const = 0;
  virtual void SetGroup(IAnnotationGroup* group) = 0;
};

#endif  // ZU_IANNOTATION_FEATURE_H
