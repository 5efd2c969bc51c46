// CAnnotationFeature is the plain in-memory IAnnotationFeature that hosts and tests fill: it keeps
// exactly what it is given.
//
// Thread safety: none; one thread uses a feature at a time.
#ifndef ZU_ANNOTATION_FEATURE_H
#define ZU_ANNOTATION_FEATURE_H

#include <memory>
#include <utility>

#include "FeatureStyleSet.h"
#include "IAnnotationFeature.h"
#include "ZuExport.h"

class ZU_EXPORT CAnnotationFeature : public IAnnotationFeature {
 public:
  CAnnotationFeature();
  explicit CAnnotationFeature(E_GEOMETRY_DATA_TYPE type);
  ~CAnnotationFeature() override;
  CAnnotationFeature(const CAnnotationFeature&) = delete;
  CAnnotationFeature& operator=(const CAnnotationFeature&) = delete;

  E_GEOMETRY_DATA_TYPE GetGeometryType() const override;
  void SetGeometryType(E_GEOMETRY_DATA_TYPE type) override;
  int GetPartCount() const override;
  const CGeometryData& GetPart(int index) const override;
  void AddPart(const CGeometryData& part) override;
  void ClearParts() override;
  void SetGeometryData(const std::vector<CGeometryData>& parts) override;
  void TravelGeometryData(IGeometryDataVisitor& visitor) override;
  bool GetExtent(CVector3D& min, CVector3D& max) const override;

  std::string GetName() const override;
  void SetName(const std::string& name) override;

  int GetFieldCount() const override;
  std::string GetFieldKey(int index) const override;
  QVariant GetFieldValue(int index) const override;
  int FindField(const std::string& key) const override;
  void SetFieldValue(const std::string& key, const QVariant& value) override;
  void ClearFields() override;

  CFeatureStyleSet* GetStyleSet() override;
  const CFeatureStyleSet* GetStyleSet() const override;

  IAnnotationGroup* GetGroup() const override;
  void SetGroup(IAnnotationGroup* group) override;

 private:
  E_GEOMETRY_DATA_TYPE type_ = GEOMETRY_DATA_TYPE_UNKNOWN;
  std::vector<CGeometryData> parts_;
  std::string name_;
  std::vector<std::pair<std::string, QVariant>> fields_;
  CFeatureStyleSet styles_;
  IAnnotationGroup* group_ = nullptr;  // not owned
};

#endif  // ZU_ANNOTATION_FEATURE_H
