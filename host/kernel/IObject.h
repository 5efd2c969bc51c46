// The base of every object the host's object creator makes.
//
// An IObject is owned by whoever asked for it; delete it (or call Release) when done.
#ifndef ZU_IOBJECT_H
#define ZU_IOBJECT_H

#include "ZuExport.h"

class ZU_EXPORT IObject {
 public:
  virtual ~IObject() = default;
  // Destroys the object; for callers that only hold the IObject interface.
  virtual void Release() { delete this; }
};

#endif  // ZU_IOBJECT_H
