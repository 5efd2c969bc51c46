#include "KmzArchive.h"

#include <zip.h>

#include <cstdio>
#include <memory>

namespace {

std::string ZipError(zip_t* archive) {
  const char* text = archive != nullptr ? zip_strerror(archive) : nullptr;
  return text != nullptr ? text : "unknown zip error";
}

bool EndsWithKml(const std::string& name) {
  if (name.size() < 4) return false;
  std::string suffix = name.substr(name.size() - 4);
  for (char& c : suffix) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  return suffix == ".kml";
}

// Frees a zip_file_t on every way out.
struct ZipFileCloser {
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};

}  // namespace

CKmzArchive::~CKmzArchive() {
  if (archive_ != nullptr) zip_discard(archive_);
}

bool CKmzArchive::Open(const std::string& path, std::string* error) {
  int code = 0;
  archive_ = zip_open(path.c_str(), ZIP_RDONLY | ZIP_CHECKCONS, &code);
  if (archive_ == nullptr) {
    zip_error_t reason;
    zip_error_init_with_code(&reason, code);
    *error = path + " is not a readable KMZ (zip) file: " + zip_error_strerror(&reason);
    zip_error_fini(&reason);
    return false;
  }
  return true;
}

std::string CKmzArchive::DocumentName() const {
  const zip_int64_t count = archive_ != nullptr ? zip_get_num_entries(archive_, 0) : 0;
  for (zip_int64_t i = 0; i < count; ++i) {
    const char* name = zip_get_name(archive_, static_cast<zip_uint64_t>(i), ZIP_FL_ENC_GUESS);
    if (name != nullptr && EndsWithKml(name)) return name;
  }
  return std::string();
}

bool CKmzArchive::Contains(const std::string& name) const {
  return archive_ != nullptr && !name.empty() && zip_name_locate(archive_, name.c_str(), 0) >= 0;
}

bool CKmzArchive::Read(const std::string& name, QByteArray* bytes, std::string* error) {
  zip_stat_t stat;
  zip_stat_init(&stat);
  if (archive_ == nullptr || zip_stat(archive_, name.c_str(), 0, &stat) != 0 ||
      (stat.valid & (ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_INDEX)) !=
          (ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_INDEX)) {
    *error = "the archive has no entry '" + name + "'";
    return false;
  }
  const int64_t size = static_cast<int64_t>(stat.size);
  const int64_t packed = static_cast<int64_t>(stat.comp_size);
  if (size > kMaxUnpackedBytes - unpacked_) {
    *error = "entry '" + name + "' would unpack past " + std::to_string(kMaxUnpackedBytes >> 20) +
             " MiB in all; refusing the archive";
    return false;
  }
  if (size > (int64_t(1) << 20) && size > kMaxRatio * packed) {
    *error = "entry '" + name + "' unpacks to " + std::to_string(size) + " bytes from " +
             std::to_string(packed) + " (more than " + std::to_string(kMaxRatio) +
             " times); refusing the archive";
    return false;
  }
  std::unique_ptr<zip_file_t, ZipFileCloser> file(zip_fopen_index(archive_, stat.index, 0));
  if (!file) {
    *error = "entry '" + name + "' cannot be read: " + ZipError(archive_);
    return false;
  }
  bytes->resize(static_cast<int>(size));
  // One byte more than declared: an entry that inflates past its header is caught here.
  char extra = 0;
  int64_t done = 0;
  while (done < size) {
    const zip_int64_t got =
        zip_fread(file.get(), bytes->data() + done, static_cast<zip_uint64_t>(size - done));
    if (got <= 0) break;
    done += got;
  }
  if (done != size || zip_fread(file.get(), &extra, 1) != 0) {
    *error = "entry '" + name + "' does not unpack to the size it declares; refusing the archive";
    return false;
  }
  unpacked_ += size;
  return true;
}

bool CKmzArchive::Write(const std::string& path, const QByteArray& document,
                        const std::vector<std::pair<std::string, std::string>>& files,
                        std::string* error) {
  int code = 0;
  zip_t* archive = zip_open(path.c_str(), ZIP_CREATE | ZIP_EXCL, &code);
  if (archive == nullptr) {
    *error = "cannot create " + path + " (zip error " + std::to_string(code) + ")";
    return false;
  }
  bool ok = true;
  // The document's bytes stay owned by the caller until zip_close has read them.
  zip_source_t* source = zip_source_buffer(archive, document.constData(),
                                           static_cast<zip_uint64_t>(document.size()), 0);
  if (source == nullptr || zip_file_add(archive, "doc.kml", source, ZIP_FL_ENC_UTF_8) < 0) {
    if (source != nullptr) zip_source_free(source);
    ok = false;
  }
  for (size_t i = 0; ok && i < files.size(); ++i) {
    zip_source_t* file = zip_source_file(archive, files[i].second.c_str(), 0, -1);
    if (file == nullptr ||
        zip_file_add(archive, files[i].first.c_str(), file, ZIP_FL_ENC_UTF_8) < 0) {
      if (file != nullptr) zip_source_free(file);
      ok = false;
    }
  }
  if (!ok) {
    *error = "cannot add to " + path + ": " + ZipError(archive);
    zip_discard(archive);
    std::remove(path.c_str());
    return false;
  }
  if (zip_close(archive) != 0) {
    *error = "cannot write " + path + ": " + ZipError(archive);
    zip_discard(archive);
    std::remove(path.c_str());
    return false;
  }
  return true;
}
