#include "IAnnotationGroup.h"

// Out of line so that the interface's type information lives in this library only.
IAnnotationGroup::~IAnnotationGroup() = default;
