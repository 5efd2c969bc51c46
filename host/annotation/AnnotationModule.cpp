#include "AnnotationModule.h"

#include "AnnotationFeature.h"
#include "AnnotationGroup.h"

IAnnotationModule::~IAnnotationModule() = default;

CAnnotationModule::CAnnotationModule() = default;

CAnnotationModule::~CAnnotationModule() = default;

std::unique_ptr<IAnnotationFeature> CAnnotationModule::CreateFeature() {
  return std::make_unique<CAnnotationFeature>();
}

std::unique_ptr<IAnnotationGroup> CAnnotationModule::CreateGroup() {
  return std::make_unique<CAnnotationGroup>();
}

IAnnotationModule* GetOrCreateAnnotationModule() {
  // Constructed on first use (thread-safe) and kept until exit.
  static CAnnotationModule module;
  return &module;
}
