#include "OutputStaging.h"

#include <fcntl.h>
#include <stdio.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

namespace fs = std::filesystem;

namespace {

// Renames without replacing: fails with EEXIST when `to` exists, even if it appeared just now.
bool MoveNoReplace(const fs::path& from, const fs::path& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  // File systems without the flag: the caller checked that `to` did not exist.
  return errno == EINVAL && rename(from.c_str(), to.c_str()) == 0;
}

}  // namespace

COutputStaging::COutputStaging(const std::string& out) {
  const fs::path output(out);
  target_ = output.has_parent_path() ? output.parent_path().string() : ".";
  std::string pattern = (fs::path(target_) / ".annotationlayer-export-XXXXXX").string();
  if (mkdtemp(&pattern[0]) == nullptr) {
    error_ = "cannot create " + out + " (in " + target_ + "): " + std::strerror(errno);
    return;
  }
  directory_ = pattern;
  path_ = (fs::path(directory_) / output.filename()).string();
}

COutputStaging::~COutputStaging() {
  std::error_code ignored;
  if (IsReady()) fs::remove_all(directory_, ignored);
}

bool COutputStaging::Publish(std::string* error) {
  std::error_code ec;
  std::vector<fs::path> written;
  std::string taken;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory_, ec)) {
    written.push_back(entry.path().filename());
    // symlink_status: a dangling link is a name in use too.
    std::error_code absent;
    if (fs::exists(fs::symlink_status(fs::path(target_) / written.back(), absent))) {
      taken += (taken.empty() ? "" : ", ") + (fs::path(target_) / written.back()).string();
    }
  }
  if (ec) {
    *error = "cannot list what the export wrote: " + ec.message();
    return false;
  }
  if (!taken.empty()) {
    *error = "the export would overwrite " + taken + "; refusing, nothing was written";
    return false;
  }
  for (size_t i = 0; i < written.size(); ++i) {
    if (MoveNoReplace(fs::path(directory_) / written[i], fs::path(target_) / written[i])) continue;
    *error = "cannot move " + written[i].string() + " into " + target_ + ": " +
             std::strerror(errno) + "; nothing was written";
    // Back into the staging directory, which then takes them away.
    while (i-- > 0) {
      rename((fs::path(target_) / written[i]).c_str(), (fs::path(directory_) / written[i]).c_str());
    }
    return false;
  }
  return true;
}
