#include "NodeTreeCopier.h"

#include <sqlite3.h>

#include <algorithm>

#include "AnnotationLayerNS.h"
#include "FeatureOption.h"
#include "FeatureRowCopier.h"
#include "FieldList.h"
#include "FolderOption.h"
#include "LayerOption.h"
#include "NodeStatus.h"
#include "SpatialiteDBDataModel.h"
#include "SqlStatement.h"
#include "SqlText.h"
#include "ZuFieldSetObject.h"
#include "ZuLog.h"

using AnnotationLayerInner::JoinIds;

namespace {

const char kTag[] = "[CopyNode]:";

// The direct children of a folder or layer in sibling order, without descending.
class ChildList : public IAnnotationDBObjectVisitor {
 public:
  struct Child {
    E_NODE_KIND kind;
    std::string uuid;
  };
  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel*, const std::list<std::string>&,
                            const std::string& uuid, const CFolderOption&) override {
    children.push_back({NODE_KIND_FOLDER, uuid});
    return HANDLE_TYPE_SKIP_CHILDREN;
  }
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel*, const std::list<std::string>&,
                           const std::string& uuid, const CLayerOption&) override {
    children.push_back({NODE_KIND_LAYER, uuid});
    return HANDLE_TYPE_SKIP_CHILDREN;
  }
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string& uuid, const CFeatureOption&) override {
    children.push_back({NODE_KIND_FEATURE, uuid});
    return HANDLE_TYPE_SKIP_CHILDREN;
  }
  bool IsOnlyUUID() override { return true; }
  std::vector<Child> children;
};

// Counts every node a walk hands out, descending into all of them.
class NodeCounter : public IAnnotationDBObjectVisitor {
 public:
  E_HANDLE_TYPE ApplyFolder(IAnnotationDBDataModel*, const std::list<std::string>&,
                            const std::string&, const CFolderOption&) override {
    ++count.folders;
    return HANDLE_TYPE_CONTINUE;
  }
  E_HANDLE_TYPE ApplyLayer(IAnnotationDBDataModel*, const std::list<std::string>&,
                           const std::string&, const CLayerOption&) override {
    ++count.layers;
    return HANDLE_TYPE_CONTINUE;
  }
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string&, const CFeatureOption&) override {
    ++count.features;
    return HANDLE_TYPE_CONTINUE;
  }
  bool IsOnlyUUID() override { return true; }
  CNodeTreeCopier::SubtreeCount count;
};

// Steps a read that yields at most one row: 1 for a row, 0 for none, -1 for a failure (logged).
int StepOptionalRow(CSqlStatement& read) {
  if (!read.IsValid()) return -1;
  const int rc = read.Step();
  if (rc == SQLITE_ROW) return 1;
  if (rc == SQLITE_DONE) return 0;
  read.LogError();
  return -1;
}

// A copy of `fields` whose every field counts as set, so that writing it inserts every row.
void MarkAllChanged(const CZuFieldSetObject& fields, CZuFieldSetObject& changed) {
  for (const CZuFieldSetObject::__tagField& field : AnnotationLayerInner::CollectFields(fields)) {
    changed.SetField(field.key, field.type, field.fieldClass, field.value);
  }
}

}  // namespace

CNodeTreeCopier::CNodeTreeCopier(CSpatialiteDBDataModel* source, CSpatialiteDBDataModel* target)
    : source_(source), target_(target) {}

CNodeTreeCopier::~CNodeTreeCopier() = default;

CNodeTreeCopier::SubtreeCount CNodeTreeCopier::CountSubtree(CSpatialiteDBDataModel* model,
                                                            const std::string& uuid) {
  NodeCounter counter;
  switch (model->QueryNodeKind(uuid)) {
    case NODE_KIND_FOLDER:
      ++counter.count.folders;
      model->TravelFolder(&counter, uuid);
      break;
    case NODE_KIND_LAYER:
      ++counter.count.layers;
      model->TravelLayerChildren(&counter, uuid);
      break;
    case NODE_KIND_FEATURE: ++counter.count.features; break;
    default: break;
  }
  return counter.count;
}

bool CNodeTreeCopier::Counted(const std::string& name) {
  ++copied_;
  if (progress_ && progress_(name, copied_)) cancelled_ = true;
  return !cancelled_;
}

bool CNodeTreeCopier::Copy(const std::string& sourceUuid, const std::string& targetParent,
                           std::string* copyUuid) {
  if (source_ == nullptr || target_ == nullptr || !source_->IsInstalled() ||
      !target_->IsInstalled()) {
    return false;
  }
  if (!AnnotationLayerInner::IsSafeSqlText(sourceUuid) ||
      !AnnotationLayerInner::IsSafeSqlText(targetParent)) {
    ZuLogError(-1) << kTag << "refused uuid";
    return false;
  }
  const E_NODE_KIND kind = source_->QueryNodeKind(sourceUuid);
  const E_NODE_KIND parentKind = target_->QueryNodeKind(targetParent);
  const bool allowed = (kind == NODE_KIND_FOLDER && parentKind == NODE_KIND_FOLDER) ||
                       (kind == NODE_KIND_LAYER && parentKind != NODE_KIND_NONE &&
                        parentKind != NODE_KIND_FEATURE) ||
                       (kind == NODE_KIND_FEATURE && parentKind == NODE_KIND_LAYER);
  if (!allowed) {
    ZuLogError(-1) << kTag << "cannot place " << sourceUuid << " under " << targetParent;
    return false;
  }
  if (source_ == target_) {
    std::list<std::string> ancestors;
    target_->QueryParentUUIDList(ancestors, targetParent);
    ancestors.push_back(targetParent);
    if (std::find(ancestors.begin(), ancestors.end(), sourceUuid) != ancestors.end()) {
      ZuLogError(-1) << kTag << sourceUuid << " cannot go into its own subtree";
      return false;
    }
  }

  // The copy goes after the parent's current last child.
  std::string last;
  bool lastIsLayer = true;
  E_NODE_KIND lastKind = NODE_KIND_NONE;
  if (kind == NODE_KIND_FOLDER) {
    last = target_->GetLastFolderChildUUID(targetParent);
    lastKind = NODE_KIND_FOLDER;
  } else if (parentKind == NODE_KIND_FOLDER) {
    last = target_->GetLastLayerChildUUID(targetParent);
    lastKind = NODE_KIND_LAYER;
  } else {
    last = target_->GetLastChildUUID(targetParent, lastIsLayer);
    lastKind = lastIsLayer ? NODE_KIND_LAYER : NODE_KIND_FEATURE;
  }
  const int order = last.empty() ? 0 : std::max(0, target_->QueryOrderNum(lastKind, last) + 1);

  std::string copy;
  switch (kind) {
    case NODE_KIND_FOLDER: copy = CopyFolder(sourceUuid, targetParent, last, order); break;
    case NODE_KIND_LAYER:
      copy = CopyLayer(sourceUuid, targetParent, parentKind == NODE_KIND_LAYER, last,
                       lastIsLayer, order);
      break;
    default: copy = CopyFeature(sourceUuid, targetParent, last, lastIsLayer, order); break;
  }
  if (copy.empty()) return false;
  if (!last.empty() && !LinkRight(lastKind, last, copy, kind == NODE_KIND_LAYER)) return false;
  if (copyUuid != nullptr) *copyUuid = copy;
  return !cancelled_;
}

std::string CNodeTreeCopier::CopyFolder(const std::string& uuid, const std::string& parent,
                                        const std::string& left, int order) {
  const CFolderOption original = source_->QueryFolderOption(uuid);
  CFolderOption copy;
  copy.SetParentUUID(parent);
  copy.SetName(original.GetName());
  copy.SetType(original.GetType());
  copy.ChangeMask(original.GetStatusMask());
  copy.SetLeftUUID(left);
  copy.SetOrderNum(order);
  written_ = true;
  if (!target_->InsertFolder(copy)) return std::string();
  if (!Counted(original.GetName())) return copy.GetUUID();
  if (!CopyChildrenOfFolder(uuid, copy.GetUUID()) && !cancelled_) return std::string();
  return copy.GetUUID();
}

std::string CNodeTreeCopier::CopyLayer(const std::string& uuid, const std::string& parent,
                                       bool parentIsLayer, const std::string& left,
                                       bool leftIsLayer, int order) {
  const CLayerOption original = source_->QueryLayerOption(uuid);
  CLayerOption copy;
  copy.SetParentUUID(parent, parentIsLayer);
  copy.SetName(original.GetName());
  copy.SetType(original.GetType());
  copy.ChangeMask(original.GetStatusMask());
  copy.SetChildNodeMaxCount(original.GetChildNodeMaxCount());
  copy.SetLevel(original.GetMinLevel(), original.GetMaxLevel());
  copy.SetNameLevel(original.GetMinNameLevel(), original.GetMaxNameLevel());
  copy.SetExtent(original.GetExtent());
  copy.SetWkt(original.GetWkt());
  copy.SetPropertyHeader(original.GetPropertyHeader());
  copy.SetLeftUUID(left, leftIsLayer);
  copy.SetOrderNum(order);
  written_ = true;
  if (!target_->InsertLayer(copy) || !CopyStyle(uuid, copy.GetUUID(), true) ||
      !CopyFields(uuid, copy.GetUUID(), true)) {
    return std::string();
  }
  if (!Counted(original.GetName())) return copy.GetUUID();
  if (!CopyChildrenOfLayer(uuid, copy.GetUUID()) && !cancelled_) return std::string();
  return copy.GetUUID();
}

std::string CNodeTreeCopier::CopyFeature(const std::string& uuid, const std::string& parent,
                                         const std::string& left, bool leftIsLayer, int order) {
  // A layer's features come one after another: their rows go through statements prepared once.
  if (!rows_) {
    rows_.reset(new CFeatureRowCopier(source_->GetConnection(), target_->GetConnection()));
  }
  const std::string copy = AnnotationLayerNS::ZuGenerateUUID();
  written_ = true;
  CFeatureRowCopier::Original original;
  if (!rows_->InsertOrder(copy, left, leftIsLayer, order) ||
      !rows_->CopyRows(uuid, copy, parent, &original) ||
      (original.hasEnclosures && !CopyEnclosures(uuid, copy))) {
    return std::string();
  }
  Counted(original.localName);
  return copy;
}

bool CNodeTreeCopier::CopyChildrenOfFolder(const std::string& uuid, const std::string& copy) {
  ChildList list;
  source_->TravelFolder(&list, uuid);
  std::string lastFolder, lastLayer;
  int folderOrder = 0, layerOrder = 0;
  for (const ChildList::Child& child : list.children) {
    if (cancelled_) return false;
    if (child.kind == NODE_KIND_FOLDER) {
      const std::string copied = CopyFolder(child.uuid, copy, lastFolder, folderOrder++);
      if (copied.empty()) return false;
      if (!lastFolder.empty() && !LinkRight(NODE_KIND_FOLDER, lastFolder, copied, false)) {
        return false;
      }
      lastFolder = copied;
    } else if (child.kind == NODE_KIND_LAYER) {
      const std::string copied = CopyLayer(child.uuid, copy, false, lastLayer, true, layerOrder++);
      if (copied.empty()) return false;
      if (!lastLayer.empty() && !LinkRight(NODE_KIND_LAYER, lastLayer, copied, true)) {
        return false;
      }
      lastLayer = copied;
    }
  }
  return true;
}

bool CNodeTreeCopier::CopyChildrenOfLayer(const std::string& uuid, const std::string& copy) {
  ChildList list;
  source_->TravelLayerChildren(&list, uuid);
  std::string last;
  bool lastIsLayer = true;
  int order = 0;
  for (const ChildList::Child& child : list.children) {
    if (cancelled_) return false;
    const bool isLayer = child.kind == NODE_KIND_LAYER;
    const std::string copied =
        isLayer ? CopyLayer(child.uuid, copy, true, last, lastIsLayer, order)
                : CopyFeature(child.uuid, copy, last, lastIsLayer, order);
    ++order;
    if (copied.empty()) return false;
    if (!last.empty() &&
        !LinkRight(lastIsLayer ? NODE_KIND_LAYER : NODE_KIND_FEATURE, last, copied, isLayer)) {
      return false;
    }
    last = copied;
    lastIsLayer = isLayer;
  }
  return true;
}

bool CNodeTreeCopier::LinkRight(E_NODE_KIND kind, const std::string& node,
                                const std::string& right, bool rightIsLayer) {
  if (kind == NODE_KIND_FOLDER) {
    CFolderOption option = target_->QueryFolderOption(node);
    option.SetRightUUID(right);
    return target_->ModifyFolderOption(option);
  }
  if (kind == NODE_KIND_LAYER) {
    CLayerOption option = target_->QueryLayerOption(node);
    option.SetRightUUID(right, rightIsLayer);
    return target_->ModifyLayerOption(option);
  }
  if (!rows_) {
    rows_.reset(new CFeatureRowCopier(source_->GetConnection(), target_->GetConnection()));
  }
  return rows_->LinkRight(node, right, rightIsLayer);
}

// Style rows are copied as stored (format and JSON text), not decoded and encoded again.
bool CNodeTreeCopier::CopyStyle(const std::string& uuid, const std::string& copy, bool isLayer) {
  const std::string table = isLayer ? "layer_style" : "shape_style";
  CSqlStatement read(source_->GetConnection(),
                     "SELECT format, content FROM " + table + " WHERE puuid = '" + uuid + "'",
                     kTag);
  const int row = StepOptionalRow(read);
  if (row <= 0) return row == 0;
  CSqlStatement write(target_->GetConnection(),
                      "INSERT INTO 'main'.'" + table +
                          "' ( 'puuid', 'format', 'content') VALUES ( ?, ?, ?)",
                      kTag);
  if (!write.IsValid()) return false;
  write.BindText(1, copy, false);
  write.BindInt(2, read.ColumnInt(0));
  write.BindText(3, read.ColumnText(1, false), false);
  return write.StepDone();
}

bool CNodeTreeCopier::CopyFields(const std::string& uuid, const std::string& copy,
                                 bool userData) {
  CZuFieldSetObject fields;
  const bool read = userData ? source_->QueryUserData(uuid, fields) : source_->QueryField(uuid, fields);
  // A node without rows reads as an empty set; a failed read has been logged by the model.
  if (!read) return false;
  if (fields.IsEmpty()) return true;
  CZuFieldSetObject changed;
  MarkAllChanged(fields, changed);
  return userData ? target_->ModifyOrInsertUserData(copy, changed)
                  : target_->ModifyOrInsertField(copy, changed);
}

// The blob is copied byte for byte: it is SpatiaLite's own form in both databases.
bool CNodeTreeCopier::CopyGeometry(const std::string& uuid, const std::string& copy) {
  CSqlStatement read(source_->GetConnection(),
                     "SELECT geom FROM shape WHERE uuid = '" + uuid + "' AND geom IS NOT NULL",
                     kTag);
  const int row = StepOptionalRow(read);
  if (row <= 0) return row == 0;
  CSqlStatement write(target_->GetConnection(),
                      "UPDATE 'main'.'shape' SET 'geom'=? WHERE uuid = '" + copy + "'", kTag);
  if (!write.IsValid()) return false;
  write.BindBlob(1, read.ColumnBlob(0), read.ColumnBytes(0));
  return write.StepDone();
}

bool CNodeTreeCopier::CopyEnclosures(const std::string& uuid, const std::string& copy) {
  std::string indexText;
  {
    CSqlStatement index(source_->GetConnection(),
                        "SELECT index_id FROM shape WHERE uuid = '" + uuid + "'", kTag);
    const int row = StepOptionalRow(index);
    if (row <= 0) return row == 0;
    indexText = index.ColumnText(0, false);
  }
  CFeatureOption original;
  original.SetIndexArrayString(indexText);
  const std::vector<int64_t> ids = original.GetIndexEnclosure();
  if (ids.empty()) return true;
  sqlite3* target = target_->GetConnection();
  CSqlStatement read(source_->GetConnection(),
                     "SELECT type, description, local_path, url, content FROM shape_enclosure "
                     "WHERE id in(" + JoinIds(ids) + ") ORDER BY id",
                     kTag);
  CSqlStatement write(target,
                      "INSERT INTO 'main'.'shape_enclosure' ( 'puuid', 'type', 'description', "
                      "'local_path', 'url', 'content') VALUES ( ?, ?, ?, ?, ?, ?)",
                      kTag);
  if (!read.IsValid() || !write.IsValid()) return false;
  std::vector<int64_t> copiedIds;
  int rc;
  while ((rc = read.Step()) == SQLITE_ROW) {
    write.BindText(1, copy, false);
    write.BindInt(2, read.ColumnInt(0));
    for (int column = 1; column <= 3; ++column) {
      write.BindText(column + 2, read.ColumnText(column, false), false);
    }
    if (read.ColumnIsNull(4)) {
      write.BindNull(6);
    } else {
      write.BindBlob(6, read.ColumnBlob(4), read.ColumnBytes(4));
    }
    if (!write.StepDone()) return false;
    copiedIds.push_back(sqlite3_last_insert_rowid(target));
    write.Reset();
  }
  if (rc != SQLITE_DONE) {
    read.LogError();
    return false;
  }
  std::string copyIndex;
  {
    CSqlStatement index(target, "SELECT index_id FROM shape WHERE uuid = '" + copy + "'", kTag);
    if (!index.StepRow()) return false;
    copyIndex = index.ColumnText(0, false);
  }
  CFeatureOption withEnclosures;
  withEnclosures.SetIndexArrayString(copyIndex);
  CFeatureOption rebuilt;
  rebuilt.SetIndexArray(withEnclosures.GetIndexStatus(), withEnclosures.GetIndexProperty(),
                        withEnclosures.GetIndexUserdata(), copiedIds);
  CSqlStatement update(target,
                       std::string("UPDATE 'main'.'shape' SET") + " 'index_id'=? WHERE uuid = '" +
                           copy + "'",
                       kTag);
  if (!update.IsValid()) return false;
  update.BindText(1, rebuilt.GetIndexArrayString(), false);
  return update.StepDone();
}
