// The interface every module that the host loads implements.
//
// The host calls Start once after loading the module and Stop once before unloading it, both on
// its main thread.
#ifndef ZU_IZUMODULE_H
#define ZU_IZUMODULE_H

#include <string>

#include "ZuExport.h"

class ZU_EXPORT IZuModule {
 public:
  virtual ~IZuModule() = default;
  virtual std::string GetModuleName() = 0;
  virtual std::string GetModuleGUID() = 0;
  virtual bool Start() = 0;
  virtual bool Stop() = 0;
  virtual int GetModuleID() = 0;
};

#endif  // ZU_IZUMODULE_H
