// A fresh directory under the system temporary directory, removed with its contents when the
// object dies. For tests that need real files.
#ifndef ANNOTATIONLAYER_TEST_TEMP_DIR_H
#define ANNOTATIONLAYER_TEST_TEMP_DIR_H

#include <string>

class CTempDir {
 public:
  CTempDir();
  ~CTempDir();
  CTempDir(const CTempDir&) = delete;
  CTempDir& operator=(const CTempDir&) = delete;

  // The directory, ending in '/'.
  const std::string& Path() const { return path_; }
  // Path() + name.
  std::string File(const std::string& name) const { return path_ + name; }

 private:
  std::string path_;
};

bool FileExists(const std::string& path);
// The whole content of a file, or empty when it cannot be read.
std::string ReadFileBytes(const std::string& path);
bool WriteFileBytes(const std::string& path, const std::string& bytes);

#endif  // ANNOTATIONLAYER_TEST_TEMP_DIR_H
