// CSceneDrawable is what a scene holds for one attached feature: its shape, its styles, its name,
// and how it is displayed (stacking value, display-level ranges, visibility). CSceneDisplay is the
// display part alone, which changes far more often than the shape.
//
// Each drawable carries the key it is filed under (the feature's uuid) and an owner token: the id
// of the object that attached it. Owner tokens grow with time, so a scene can tell a newer owner
// of the same key from an older one (see CAnnotationScene).
//
// Thread safety: plain values; copy freely.
#ifndef ZU_SCENE_DRAWABLE_H
#define ZU_SCENE_DRAWABLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "FeatureStyleSet.h"
#include "GeometryData.h"
#include "GeometryDataType.h"
#include "ZuExport.h"

struct ZU_EXPORT CSceneDisplay {
  int zValue = 0;         // higher values are drawn later, on top
  int minLevel = 0;       // the shape is shown at display levels minLevel..maxLevel
  int maxLevel = 21;
  int minNameLevel = 0;   // the name is shown at display levels minNameLevel..maxNameLevel
  int maxNameLevel = 21;
  bool visible = true;

  // Whether the shape is drawn at `level`; an empty level range shows nothing.
  bool IsShownAt(int level) const;
  bool IsNameShownAt(int level) const;

  bool operator==(const CSceneDisplay& other) const;
  bool operator!=(const CSceneDisplay& other) const { return !(*this == other); }
};

struct ZU_EXPORT CSceneDrawable {
  std::string key;     // the feature's uuid
  int64_t owner = 0;   // who attached it; larger is newer
  int kind = 0;        // the feature's annotation type, passed through for the view
  E_GEOMETRY_DATA_TYPE geometryType = GEOMETRY_DATA_TYPE_UNKNOWN;
  std::vector<CGeometryData> parts;
  CFeatureStyleSet styles;
  std::string name;    // local code page
  CSceneDisplay display;
};

#endif  // ZU_SCENE_DRAWABLE_H
