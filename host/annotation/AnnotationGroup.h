// CAnnotationGroup is the plain in-memory IAnnotationGroup that hosts and tests fill.
//
// Thread safety: none; one thread uses a group tree at a time.
#ifndef ZU_ANNOTATION_GROUP_H
#define ZU_ANNOTATION_GROUP_H

#include <memory>
#include <string>
#include <vector>

#include "IAnnotationGroup.h"
#include "ZuExport.h"

class ZU_EXPORT CAnnotationGroup : public IAnnotationGroup {
 public:
  CAnnotationGroup();
  explicit CAnnotationGroup(const std::string& name);
  ~CAnnotationGroup() override;
  CAnnotationGroup(const CAnnotationGroup&) = delete;
  CAnnotationGroup& operator=(const CAnnotationGroup&) = delete;

  std::string GetName() const override;
  void SetName(const std::string& name) override;
  IAnnotationGroup* GetParentGroup() const override;
  void SetParentGroup(IAnnotationGroup* parent) override;

  int GetFeatureCount() const override;
  IAnnotationFeature* GetFeature(int index) const override;
  IAnnotationFeature* AddFeature(std::unique_ptr<IAnnotationFeature> feature) override;
  int GetGroupCount() const override;
  IAnnotationGroup* GetGroup(int index) const override;
  IAnnotationGroup* AddGroup(std::unique_ptr<IAnnotationGroup> group) override;
  void Clear() override;

 private:
  std::string name_;
  IAnnotationGroup* parent_ = nullptr;  // not owned
  std::vector<std::unique_ptr<IAnnotationFeature>> features_;
  std::vector<std::unique_ptr<IAnnotationGroup>> groups_;
};

#endif  // ZU_ANNOTATION_GROUP_H
