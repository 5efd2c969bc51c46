// One placed name (label) of the name database: a uuid, the label text, free host data, the style
// JSON of its label style and its 3D position. A plain value; copy freely.
//
// Texts are bytes in the local code page, except the uuid and the style JSON, which are ASCII.
//
// Thread safety: none beyond that of a value; one thread uses one record at a time.
#ifndef ANNOTATIONLAYER_NAME_RECORDER_H
#define ANNOTATIONLAYER_NAME_RECORDER_H

#include <string>

#include "AnnotationLayerExport.h"
#include "Vector3D.h"

class CFeatureStyleSet;

class ANNOTATIONLAYER_EXPORT CNameRecorder {
 public:
  CNameRecorder();
  CNameRecorder(const CNameRecorder& other);
  CNameRecorder& operator=(const CNameRecorder& other);
  ~CNameRecorder();

  // Compares uuid, name, data and style byte for byte, then the positions, stopping at the first
  // difference.
  bool operator==(const CNameRecorder& other) const;
  bool operator!=(const CNameRecorder& other) const { return !(*this == other); }

  // Fills `styles` from the style JSON; the result of AnnotationLayerNS::FromJsonStyle.
  bool ConvertToStyle(CFeatureStyleSet* styles) const;

  std::string uuid;
  std::string name;
  std::string data;
  std::string style;  // style JSON
  CVector3D position;
};

#endif  // ANNOTATIONLAYER_NAME_RECORDER_H
