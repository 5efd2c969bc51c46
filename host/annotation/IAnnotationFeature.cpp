#include "IAnnotationFeature.h"

// Out of line so that the type information of the interfaces lives in this library only.
IAnnotationFeature::IGeometryDataVisitor::~IGeometryDataVisitor() = default;

IAnnotationFeature::~IAnnotationFeature() = default;
