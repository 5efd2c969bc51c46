#include "CacheDirScope.h"

#include <filesystem>
#include <system_error>

#include "ZuCoreApplication.h"

CCacheDirScope::CCacheDirScope()
    : cacheDir_(dir_.Path() + "layer_cache/"),
      savedDataDir_(CZuCoreApplication::GetInstance()->GetDataDir()) {
  std::error_code ec;
  std::filesystem::create_directory(cacheDir_, ec);
  CZuCoreApplication::GetInstance()->SetDataDir(dir_.Path());
}

CCacheDirScope::~CCacheDirScope() { CZuCoreApplication::GetInstance()->SetDataDir(savedDataDir_); }
