// CFeatureOption carries one feature (a row of the table `shape`) between callers and the data
// model: its columns, creation and modification times (text, carried unchanged), its status word
// with a two-state check, its index array (status, property, user data and enclosure row ids) and
// the change mask of the groups set since it was loaded. Setters add their group's bit only when
// the value changes; the status setters always add it.
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ANNOTATIONLAYER_FEATURE_OPTION_H
#define ANNOTATIONLAYER_FEATURE_OPTION_H

#include <cstdint>
#include <string>
#include <vector>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "ChangeMask.h"

class ANNOTATIONLAYER_EXPORT CFeatureOption : public CChangeMask {
 public:
  CFeatureOption();
  explicit CFeatureOption(const std::string& uuid);
  CFeatureOption(const CFeatureOption& other);
  CFeatureOption& operator=(const CFeatureOption& other);
  ~CFeatureOption();

  const std::string& GetUUID() const { return uuid_; }
  void SetUUID(const std::string& uuid);  // adds no bit

  // The parent is always a layer.
  const std::string& GetParentUUID() const { return parentUuid_; }
  void SetParentUUID(const std::string& uuid);

  // A neighbour is a layer or a feature; the uuid and the kind are compared together.
  const std::string& GetLeftUUID() const { return leftUuid_; }
  void SetLeftUUID(const std::string& uuid, bool isLayer);
  // The stored kind of the left neighbour; true when there is none.
  bool IsLeftLayer() const;
  const std::string& GetRightUUID() const { return rightUuid_; }
  void SetRightUUID(const std::string& uuid, bool isLayer);
  bool IsRightLayer() const;
  int GetOrderNum() const { return orderNum_; }
  void SetOrderNum(int orderNum);

  const std::string& GetName() const { return name_; }
  void SetName(const std::string& name);
  E_ANNOTATION_TYPE GetType() const { return type_; }
  void SetType(E_ANNOTATION_TYPE type);

  // Times as the database writes them; add no bit.
  const std::string& GetCreateDateTime() const { return createTime_; }
  void SetCreateDateTime(const std::string& time);
  const std::string& GetModifyDateTime() const { return modifyTime_; }
  void SetModifyDateTime(const std::string& time);

  // The status word, replaced whole; see NodeStatus.h for its bits. A feature is either checked
  // or not.
  int GetStatusMask() const { return status_; }
  void ChangeMask(int status);
  bool IsNodeChecked() const;
  void SetNodeChecked(bool checked);
  bool IsRecycle() const;
  void SetRecycle(bool recycle);

  // The index array text as stored in `index_id`; see IndexArray.h. Adds no bit.
  const std::string& GetIndexArrayString() const { return indexArray_; }
  void SetIndexArrayString(const std::string& text);
  // Rebuilds the text from the row ids; an empty status list keeps the text before the other
  // parts are appended.
  void SetIndexArray(const std::vector<int64_t>& statusIds, const std::vector<int64_t>& propertyIds,
                     const std::vector<int64_t>& userdataIds,
                     const std::vector<int64_t>& enclosureIds);
  std::vector<int64_t> GetIndexStatus() const;
  std::vector<int64_t> GetIndexProperty() const;
  std::vector<int64_t> GetIndexUserdata() const;
  std::vector<int64_t> GetIndexEnclosure() const;


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
  std::string createTime_;
  std::string modifyTime_;
  bool leftLayer_ = true;
  bool rightLayer_ = true;
  E_ANNOTATION_TYPE type_ = ANNOTATION_TYPE_UNKNOWN;
  int status_ = 0;
  int orderNum_ = -1;
  std::string indexArray_;
  int result_ = 0;
};

#endif  // ANNOTATIONLAYER_FEATURE_OPTION_H
