#include "FeatureStyle.h"

CFeatureStyle::~CFeatureStyle() = default;
