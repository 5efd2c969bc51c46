// CLayerOption carries one layer of the annotation tree between callers and the data model: its
// columns (parent, neighbours with their kinds, levels, extent, outline WKT, property header), its
// status word, its child node max count, its index array (status and user data row ids) and the
// change mask of the groups set since it was loaded. Setters add their group's bit only when the
// value changes; the status setters and SetPropertyHeader always add it.
//
// A neighbour or parent may be a layer or a feature/folder, so each of those setters takes the
// kind as well; the uuid and the kind are compared together.
//
// Thread safety: a plain value; callers synchronise access to one object themselves.
#ifndef ANNOTATIONLAYER_LAYER_OPTION_H
#define ANNOTATIONLAYER_LAYER_OPTION_H

#include <cstdint>
#include <string>
#include <vector>

#include "AnnotationLayerExport.h"
#include "AnnotationLayerTypes.h"
#include "ChangeMask.h"

class ANNOTATIONLAYER_EXPORT CLayerOption : public CChangeMask {
 public:
  CLayerOption();
  explicit CLayerOption(const std::string& uuid);
  CLayerOption(const CLayerOption& other);
  CLayerOption& operator=(const CLayerOption& other);
  ~CLayerOption();

  const std::string& GetUUID() const { return uuid_; }
  void SetUUID(const std::string& uuid);  // adds no bit

  const std::string& GetParentUUID() const { return parentUuid_; }
  // `isLayerParent`: the parent is a layer (column layer_puuid) rather than a folder.
  void SetParentUUID(const std::string& uuid, bool isLayerParent);
  bool IsLayerParent() const { return layerParent_; }

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
  E_LAYER_TYPE GetType() const { return type_; }
  void SetType(E_LAYER_TYPE type);

  // Outline of the layer as WKT.
  const std::string& GetWkt() const { return wkt_; }
  void SetWkt(const std::string& wkt);
  // The layer's field header text (see LayerHeaderListToString).
  const std::string& GetPropertyHeader() const { return propertyHeader_; }
  void SetPropertyHeader(const std::string& header);

  int GetMinLevel() const { return minLevel_; }
  int GetMaxLevel() const { return maxLevel_; }
  void SetLevel(int minLevel, int maxLevel);
  int GetMinNameLevel() const { return minNameLevel_; }
  int GetMaxNameLevel() const { return maxNameLevel_; }
  void SetNameLevel(int minLevel, int maxLevel);

  const EXTENT& GetExtent() const { return extent_; }
  void SetExtent(const EXTENT& extent);

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
  // -1 means no limit.
  int GetChildNodeMaxCount() const { return childNodeMaxCount_; }
  void SetChildNodeMaxCount(int count);

  // The index array text as stored in `index_id`; see IndexArray.h. Adds no bit.
  const std::string& GetIndexArrayString() const { return indexArray_; }
  void SetIndexArrayString(const std::string& text);
  // Rebuilds the text from the row ids; an empty status list keeps the text before the user data
  // part is appended.
  void SetIndexArray(const std::vector<int64_t>& statusIds, const std::vector<int64_t>& userdataIds);
  std::vector<int64_t> GetIndexStatus() const;
  std::vector<int64_t> GetIndexUserdata() const;


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
  std::string wkt_;
  std::string propertyHeader_;
  bool layerParent_ = false;
  bool leftLayer_ = true;
  bool rightLayer_ = true;
  E_LAYER_TYPE type_ = LAYER_TYPE_UNKNOWN;
  int status_ = 0;
  int childNodeMaxCount_ = -1;
  int maxLevel_ = 21;
  int minLevel_ = 0;
  int minNameLevel_ = 0;
  int maxNameLevel_ = 21;
  EXTENT extent_;
  int orderNum_ = -1;
  std::string indexArray_;
  int result_ = 0;
};

#endif  // ANNOTATIONLAYER_LAYER_OPTION_H
