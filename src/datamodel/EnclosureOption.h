// CEnclosureOption carries one attachment of a feature (a row of `shape_enclosure`) between
// callers and the data model: its row id, kind, owning feature, description and where its content
// lives, plus the change mask of the groups set since it was loaded.
//
// The local path and the url exclude each other: setting one (to a non-empty text) empties the
// other. Setters add their group's bit only when the value changes; ClearPath always adds it.
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ANNOTATIONLAYER_ENCLOSURE_OPTION_H
#define ANNOTATIONLAYER_ENCLOSURE_OPTION_H

#include <string>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "ChangeMask.h"

class ANNOTATIONLAYER_EXPORT CEnclosureOption : public CChangeMask {
 public:
  CEnclosureOption();
  CEnclosureOption(int id, E_ENCLOSURE_TYPE type);
  CEnclosureOption(const CEnclosureOption& other);
  CEnclosureOption& operator=(const CEnclosureOption& other);
  ~CEnclosureOption();

  // The row id in `shape_enclosure`; -1 for a record not stored yet. Adds no bit.
  int GetID() const { return id_; }
  void SetID(int id);
  E_ENCLOSURE_TYPE GetEnclosureType() const { return type_; }
  void SetEnclosureType(E_ENCLOSURE_TYPE type);  // adds no bit

  // The feature the enclosure belongs to.
  const std::string& GetParentUUID() const { return parentUuid_; }
  void SetParentUUID(const std::string& uuid);
  const std::string& GetDescription() const { return description_; }
  void SetDescription(const std::string& description);

  const std::string& GetLocalPath() const { return localPath_; }
  // An empty path is ignored; otherwise the url is emptied.
  void SetLocalPath(const std::string& path);
  const std::string& GetUrl() const { return url_; }
  // An empty url is ignored; otherwise the local path is emptied.
  void SetUrl(const std::string& url);
  void ClearPath();
  bool IsPathValid() const;
  // The local path when there is one, else the url.
  const std::string& GetPath() const;

 private:
  int id_ = -1;
  E_ENCLOSURE_TYPE type_ = ENCLOSURE_TYPE_FILE;
  std::string parentUuid_;
  std::string description_;
  std::string localPath_;
  std::string url_;
};

#endif  // ANNOTATIONLAYER_ENCLOSURE_OPTION_H
