// Helpers for tests that need a real annotation database file.
#ifndef ANNOTATIONLAYER_TEST_DATABASE_H
#define ANNOTATIONLAYER_TEST_DATABASE_H

#include <string>

#include "TempDir.h"

// A new annotation database in its own temporary directory.
class CTestDatabase {
 public:
  explicit CTestDatabase(const std::string& name = "annotation.db");
  CTestDatabase(const CTestDatabase&) = delete;
  CTestDatabase& operator=(const CTestDatabase&) = delete;

  bool IsValid() const { return valid_; }
  const std::string& Path() const { return path_; }
  const std::string& RootUUID() const { return rootUuid_; }
  const CTempDir& Dir() const { return dir_; }

 private:
  CTempDir dir_;
  std::string path_;
  std::string rootUuid_;
  bool valid_ = false;
};

// Runs one query on a separate plain SQLite connection and returns the first column of the first
// row as text ("" when there is none). For checking what the module wrote.
std::string QueryScalar(const std::string& path, const std::string& sql);

#endif  // ANNOTATIONLAYER_TEST_DATABASE_H
