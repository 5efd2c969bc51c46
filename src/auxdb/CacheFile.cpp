#include "CacheFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "TextConversion.h"

namespace AnnotationLayerInner {

bool IsPlainCacheName(const std::string& name) {
  return !name.empty() && name.find_first_of(std::string("/\\\0", 3)) == std::string::npos;
}

bool CacheFileExists(const std::string& localPath) {
  struct stat info;
  return lstat(LocalToUtf8(localPath).c_str(), &info) == 0;
}

bool RemoveCacheFile(const std::string& localPath) {
  const std::string fsPath = LocalToUtf8(localPath);
  // unlink, not remove: a directory of that name is not ours to delete, and opening it fails later.
  return unlink(fsPath.c_str()) == 0 || errno == ENOENT;
}

}  // namespace AnnotationLayerInner
