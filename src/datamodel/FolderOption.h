// CFolderOption carries one folder of the annotation tree between callers and the data model: its
// columns, its status word, its index array (status row ids only) and the change mask of the
// groups set since it was loaded. Setters add their group's bit only when the value changes,
// except the status setters, which always add it.
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ANNOTATIONLAYER_FOLDER_OPTION_H
#define ANNOTATIONLAYER_FOLDER_OPTION_H

#include <cstdint>
#include <string>
#include <vector>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "ChangeMask.h"

class ANNOTATIONLAYER_EXPORT CFolderOption : public CChangeMask {
 public:
  CFolderOption();
  explicit CFolderOption(const std::string& uuid);
  CFolderOption(const CFolderOption& other);
  CFolderOption& operator=(const CFolderOption& other);
  ~CFolderOption();

  const std::string& GetUUID() const { return uuid_; }
  void SetUUID(const std::string& uuid);  // adds no bit

  const std::string& GetParentUUID() const { return parentUuid_; }
  void SetParentUUID(const std::string& uuid);
  const std::string& GetLeftUUID() const { return leftUuid_; }
  void SetLeftUUID(const std::string& uuid);
  const std::string& GetRightUUID() const { return rightUuid_; }
  void SetRightUUID(const std::string& uuid);
  int GetOrderNum() const { return orderNum_; }
  void SetOrderNum(int orderNum);

  const std::string& GetName() const { return name_; }
  void SetName(const std::string& name);
  E_FOLDER_TYPE GetType() const { return type_; }
  void SetType(E_FOLDER_TYPE type);

  // The status word, replaced whole; see NodeStatus.h for its bits.
  int GetStatusMask() const { return status_; }
  void ChangeMask(int status);
  int GetNodeCheckState() const;
  void SetNodeCheckState(int checkState);
  bool IsCheckedState() const;
  bool IsNodeExpand() const;
  void SetNodeExpand(bool expand);
  bool IsRecycle() const;
  void SetRecycle(bool recycle);

  // The index array text as stored in `index_id`; see IndexArray.h. Adds no bit.
  const std::string& GetIndexArrayString() const { return indexArray_; }
  void SetIndexArrayString(const std::string& text);
  // Rebuilds the text from the status row ids; an empty list keeps the text as it was.
  void SetIndexArray(const std::vector<int64_t>& statusIds);
  std::vector<int64_t> GetIndexStatus() const;


  // Result marks of the last insert of this record: 0, or bit 2 when the order row and bit 16 when
  // the status rows could not be written; -1 when the node row itself failed.
  int GetResult() const { return result_; }
  void SetResult(int result) { result_ = result; }
 private:
  std::string uuid_;
  std::string parentUuid_;
  std::string leftUuid_;
  std::string rightUuid_;
  std::string name_;
  E_FOLDER_TYPE type_ = FOLDER_TYPE_UNKNOWN;
  int status_ = 0;
  int orderNum_ = -1;
  std::string indexArray_;
  int result_ = 0;
};

#endif  // ANNOTATIONLAYER_FOLDER_OPTION_H
