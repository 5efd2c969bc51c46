// IAnnotationModule is the host annotation library's factory: it makes empty features and groups
// for code that knows only the interfaces. GetOrCreateAnnotationModule returns the one module of
// the process; it lives until the process ends and must not be deleted.
//
// Thread safety: every function may be called from any thread; the objects it makes belong to
// the caller.
#ifndef ZU_IANNOTATION_MODULE_H
#define ZU_IANNOTATION_MODULE_H

#include <memory>

#include "IAnnotationFeature.h"
#include "IAnnotationGroup.h"
#include "ZuExport.h"

class ZU_EXPORT IAnnotationModule {
 public:
  virtual ~IAnnotationModule();

  // A feature of unknown kind with no parts, name, fields or styles.
  virtual std::unique_ptr<IAnnotationFeature> CreateFeature() = 0;
  // An unnamed group without children.
  virtual std::unique_ptr<IAnnotationGroup> CreateGroup() = 0;
};

ZU_EXPORT IAnnotationModule* GetOrCreateAnnotationModule();

#endif  // ZU_IANNOTATION_MODULE_H
