// CKmzArchive reads and writes KMZ files: zip archives whose first KML entry is the document
// ("doc.kml" when we write one) and whose other entries are files the document refers to by
// relative path (icons).
//
// Reading guards against archives that would unpack to far more than they hold: every entry is
// checked against a cap on the total bytes unpacked (kMaxUnpackedBytes) and, above 1 MiB, against
// a cap on its compression ratio; an entry that inflates past the size its header declares is
// refused as well. Refusals name the entry and the limit.
//
// Threading contract: one thread uses an archive.
#ifndef ANNOTATIONLAYER_CLI_KMZ_ARCHIVE_H
#define ANNOTATIONLAYER_CLI_KMZ_ARCHIVE_H

#include <QByteArray>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

struct zip;

class CKmzArchive {
 public:
  static constexpr int64_t kMaxUnpackedBytes = int64_t(256) << 20;
  static constexpr int64_t kMaxRatio = 100;

  CKmzArchive() = default;
  ~CKmzArchive();
  CKmzArchive(const CKmzArchive&) = delete;
  CKmzArchive& operator=(const CKmzArchive&) = delete;

  // Opens `path` for reading. False with a reason.
  bool Open(const std::string& path, std::string* error);
  // The archive's name of its document: its first entry ending in ".kml"; empty when none.
  std::string DocumentName() const;
  bool Contains(const std::string& name) const;
  // The bytes of entry `name`, within the caps (which count everything read from this archive).
  bool Read(const std::string& name, QByteArray* bytes, std::string* error);

  // Writes a new archive at `path`: `document` as "doc.kml" first, then each (archive name,
  // local file) pair. False with a reason; a half-written archive is removed.
  static bool Write(const std::string& path, const QByteArray& document,
                    const std::vector<std::pair<std::string, std::string>>& files,
                    std::string* error);

 private:
  zip* archive_ = nullptr;
  int64_t unpacked_ = 0;
};

#endif  // ANNOTATIONLAYER_CLI_KMZ_ARCHIVE_H
