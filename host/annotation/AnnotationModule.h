// CAnnotationModule is the library's IAnnotationModule; it makes the plain CAnnotationFeature and
// CAnnotationGroup objects. Stateless.
//
// Thread safety: safe from any thread.
#ifndef ZU_ANNOTATION_MODULE_H
#define ZU_ANNOTATION_MODULE_H

#include "IAnnotationModule.h"
#include "ZuExport.h"

class ZU_EXPORT CAnnotationModule : public IAnnotationModule {
 public:
  CAnnotationModule();
  ~CAnnotationModule() override;
  CAnnotationModule(const CAnnotationModule&) = delete;
  CAnnotationModule& operator=(const CAnnotationModule&) = delete;

  std::unique_ptr<IAnnotationFeature> CreateFeature() override;
  std::unique_ptr<IAnnotationGroup> CreateGroup() override;
};

#endif  // ZU_ANNOTATION_MODULE_H
