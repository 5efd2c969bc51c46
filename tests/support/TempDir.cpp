#include "TempDir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

CTempDir::CTempDir() {
  std::string pattern = (fs::temp_directory_path() / "altest-XXXXXX").string();
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) != nullptr) path_ = std::string(buffer.data()) + "/";
}

CTempDir::~CTempDir() {
  if (path_.empty()) return;
  std::error_code ec;
  // Read-only files inside (tests make some) must not block the removal.
  fs::permissions(path_, fs::perms::owner_all, fs::perm_options::add, ec);
  fs::remove_all(path_, ec);
}

bool FileExists(const std::string& path) {
  std::error_code ec;
  return fs::exists(path, ec);
}

std::string ReadFileBytes(const std::string& path) {
  std::error_code ec;
  if (!fs::is_regular_file(path, ec)) return std::string();
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::string();
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool WriteFileBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) return false;
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(out);
}
