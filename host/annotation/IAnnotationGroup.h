// IAnnotationGroup is a named container of features and child groups, as the host organises
// annotations (an imported group becomes a layer). A group owns its children: adding hands them
// over, and they are deleted with the group. Each child knows the group it was added to.
//
// Thread safety: none; one thread uses a group tree at a time.
#ifndef ZU_IANNOTATION_GROUP_H
#define ZU_IANNOTATION_GROUP_H

#include <memory>
#include <string>

#include "IAnnotationFeature.h"
#include "ZuExport.h"

class ZU_EXPORT IAnnotationGroup {
 public:
  virtual ~IAnnotationGroup();

  // Local code page bytes.
  virtual std::string GetName() const = 0;
  virtual void SetName(const std::string& name) = 0;

  // The group this one was added to, or null for a top group. Set by that group.
  virtual IAnnotationGroup* GetParentGroup() const = 0;
  virtual void SetParentGroup(IAnnotationGroup* parent) = 0;

  virtual int GetFeatureCount() const = 0;
  // The feature at `index`, or null when out of range. The group keeps ownership.
  virtual IAnnotationFeature* GetFeature(int index) const = 0;
  // Takes ownership and makes this group the feature's group; returns the feature (null for null).
  virtual IAnnotationFeature* AddFeature(std::unique_ptr<IAnnotationFeature> feature) = 0;

  virtual int GetGroupCount() const = 0;
  virtual IAnnotationGroup* GetGroup(int index) const = 0;
  // Takes ownership and makes this group the child's parent; returns the child (null for null).
  virtual IAnnotationGroup* AddGroup(std::unique_ptr<IAnnotationGroup> group) = 0;

  // Deletes all features and child groups.
  virtual void Clear() = 0;
};

#endif  // ZU_IANNOTATION_GROUP_H
