#include "SceneDrawable.h"

bool CSceneDisplay::IsShownAt(int level) const {
  return visible && minLevel <= level && level <= maxLevel;
}

bool CSceneDisplay::IsNameShownAt(int level) const {
  return IsShownAt(level) && minNameLevel <= level && level <= maxNameLevel;
}

bool CSceneDisplay::operator==(const CSceneDisplay& other) const {
  return zValue == other.zValue && minLevel == other.minLevel && maxLevel == other.maxLevel &&
         minNameLevel == other.minNameLevel && maxNameLevel == other.maxNameLevel &&
         visible == other.visible;
}
