#include "FeatureBatchImporterImpl.h"

#include <sqlite3.h>

#include <cfloat>
#include <cstdlib>
#include <typeinfo>

#include "AnnotationLayerNS.h"
#include "FeatureFieldSet.h"
#include "FeatureOption.h"
#include "FeatureStyle.h"
#include "FeatureStyleSet.h"
#include "FieldList.h"
#include "FieldValueText.h"
#include "GeometryBlob.h"
#include "IAnnotationDBObjectNotifier.h"
#include "IAnnotationFeature.h"
#include "IAnnotationGroup.h"
#include "LayerHeaderList.h"
#include "LayerOption.h"
#include "NodeCacheCalculator.h"
#include "SpatialiteDBDataModel.h"
#include "SqlText.h"
#include "StyleJson.h"
#include "TextConversion.h"
#include "ZuFieldSetObject.h"
#include "SqlStatement.h"
#include "ZuLog.h"

using AnnotationLayerInner::Utf8ToLocal;

namespace {

// The style format number the importer writes with every style row.
constexpr int kStyleFormat = 3;

}  // namespace

CFeatureBatchImporterImpl::CFeatureBatchImporterImpl(IAnnotationDBDataModel* model,
                                                     const std::string& rootUuid)
    : model_(dynamic_cast<CSpatialiteDBDataModel*>(model)), rootUuid_(rootUuid) {
  if (model_ != nullptr && model_->IsInstalled()) {
    db_ = model_->GetConnection();
    if (db_ == nullptr) {
      ZuLogError(-1) << "[CFeatureBatchImporter] " << Utf8ToLocal("建立不成功");
    } else {
      appender_.Bind(db_, model_->GetNodeCacheCalculator());
    }
  } else {
    ZuLogError(-1) << "[CFeatureBatchImporter] " << Utf8ToLocal("DBDataModel未建立");
  }
}

CFeatureBatchImporterImpl::~CFeatureBatchImporterImpl() {
  if (importing_) DiscardImport();
}

bool CFeatureBatchImporterImpl::IsOpen() const {
  return model_ != nullptr && db_ != nullptr && model_->IsInstalled();
}

void CFeatureBatchImporterImpl::ResetState() {
  groups_.clear();
  headers_.clear();
  styles_.clear();
  extents_.clear();
  appender_.Reset();
}

void CFeatureBatchImporterImpl::FinalizeStatements() {
  for (CSqlStatement* stmt : {&shapeInsert_, &shapeStatusInsert_, &shapeStyleInsert_,
                              &shapePropertyInsert_, &layerInsert_, &layerStatusInsert_}) {
    stmt->Finalize();
  }
}

bool CFeatureBatchImporterImpl::Ready(CSqlStatement& stmt, const std::string& sql,
                                      const char* tag) {
  return stmt.IsValid() || stmt.Prepare(db_, sql, tag);
}

bool CFeatureBatchImporterImpl::BeginImport() {
  if (model_ == nullptr) return false;
  if (rootUuid_.empty()) {
    ZuLogError(-1) << "[BeginImport] " << Utf8ToLocal("未设置指定的Folder/Layer作为根节点");
    return false;
  }
  if (!AnnotationLayerInner::IsSafeSqlText(rootUuid_)) {
    ZuLogError(-1) << "[BeginImport] refused root uuid " << rootUuid_;
    return false;
  }
  if (!IsOpen() || !model_->BeginTransaction()) {
    ZuLogError(-1) << "[BeginImport] " << Utf8ToLocal("启动事务失败");
    return false;
  }
  ResetState();
  appender_.Bind(db_, model_->GetNodeCacheCalculator());
  rootType_ = -1;
  const bool rootIsLayer = model_->IsLayerUUID(rootUuid_);
  if (rootIsLayer) rootType_ = model_->QueryLayerOption(rootUuid_).GetType();

  bool lastIsLayer = true;
  const std::string last = rootIsLayer ? model_->GetLastChildUUID(rootUuid_, lastIsLayer)
                                       : model_->GetLastLayerChildUUID(rootUuid_);
  if (!last.empty()) {
    CSiblingOrderAppender::Record record;
    record.stored = true;
    record.isLayer = lastIsLayer;
    record.uuid = last;
    const int order =
        model_->QueryOrderNum(lastIsLayer ? NODE_KIND_LAYER : NODE_KIND_FEATURE, last);
    record.orderNum = order < 0 ? 0 : order;
    if (lastIsLayer) {
      const CLayerOption option = model_->QueryLayerOption(last);
      record.leftIsLayer = option.IsLeftLayer();
      record.left = option.GetLeftUUID();
    } else {
      const CFeatureOption option = model_->QueryFeatureOption(last);
      record.leftIsLayer = option.IsLeftLayer();
      record.left = option.GetLeftUUID();
    }
    appender_.Seed(rootUuid_, record);
  }
  ZuLOG << "[BeginImport] " << Utf8ToLocal("使用[") << nameField_
        << Utf8ToLocal("]作为导入名称的字段 批量导入开始 >>>>>");
  stopwatch_.Restart();
  importing_ = true;
  return true;
}

bool CFeatureBatchImporterImpl::InsertLayer(IAnnotationGroup* group, E_LAYER_TYPE type) {
  if (group == nullptr || !IsOpen() || groups_.count(group) > 0) return false;
  LayerRef parent{rootUuid_, rootType_};
  auto found = groups_.find(group->GetParentGroup());
  if (group->GetParentGroup() != nullptr && found != groups_.end()) parent = found->second;
  if (parent.uuid.empty()) return false;

  CLayerOption option;
  option.SetName(group->GetName());
  option.SetUUID(AnnotationLayerNS::ZuGenerateUUID());
  option.SetType(type);
  option.SetParentUUID(parent.uuid, parent.type != -1);
  option.SetNodeCheckState(2);
  const std::string& uuid = option.GetUUID();

  std::vector<int64_t> statusIds;
  if (Ready(layerStatusInsert_,
            "INSERT INTO 'main'.'layer_status'('puuid', 'type', 'value', 'data') "
            "VALUES(?, ?, ?, NULL)",
            "[InsertLayerStatus]:")) {
    const int values[2][2] = {{1, option.GetStatusMask()}, {2, option.GetChildNodeMaxCount()}};
    for (const auto& row : values) {
      layerStatusInsert_.BindText(1, uuid, false);
      layerStatusInsert_.BindInt(2, row[0]);
      layerStatusInsert_.BindInt(3, row[1]);
      if (layerStatusInsert_.StepDone()) statusIds.push_back(sqlite3_last_insert_rowid(db_));
      layerStatusInsert_.Reset();
    }
  }
  if (statusIds.empty()) ZuLogWarn << "[InsertLayerStatus] Failed " << uuid;
  option.SetIndexArray(statusIds, {});

  if (!Ready(layerInsert_,
             std::string("INSERT INTO 'main'.'layer'(") +
                 " 'uuid', 'folder_puuid', 'layer_puuid', 'type', 'name'," +
                 " 'min_level', 'max_level', 'min_name_level', 'max_name_level'," +
                 " 'min_x', 'min_y', 'max_x', 'max_y', 'wkt', 'index_id') VALUES(" +
                 " ?, ?, ?, ?, ?, ?, ?, ?, ?, 0, 0, 0, 0, ?, ?)",
             "[InsertLayerInner]:")) {
    return false;
  }
  layerInsert_.BindText(1, uuid, false);
  layerInsert_.BindText(2, option.IsLayerParent() ? std::string() : parent.uuid, false);
  layerInsert_.BindText(3, option.IsLayerParent() ? parent.uuid : std::string(), false);
  layerInsert_.BindInt(4, type);
  layerInsert_.BindText(5, option.GetName(), true);
  layerInsert_.BindInt(6, option.GetMinLevel());
  layerInsert_.BindInt(7, option.GetMaxLevel());
  layerInsert_.BindInt(8, option.GetMinNameLevel());
  layerInsert_.BindInt(9, option.GetMaxNameLevel());
  layerInsert_.BindText(10, option.GetWkt(), false);
  layerInsert_.BindText(11, option.GetIndexArrayString(), false);
  const bool inserted = layerInsert_.StepDone();
  layerInsert_.Reset();
  if (!inserted) return false;

  extents_[uuid] = Extent();
  groups_[group] = LayerRef{uuid, type};
  appender_.Append(parent.uuid, uuid, true);
  if (IAnnotationDBObjectNotifier* notifier = model_->GetNotifier()) {
    notifier->OnLayerInserted(model_, uuid, parent.uuid);
  }
  return true;
}

std::string CFeatureBatchImporterImpl::FeatureName(IAnnotationFeature* feature) const {
  auto fieldText = [feature](const std::string& key) {
    const int index = key.empty() ? -1 : feature->FindField(key);
    if (index < 0) return std::string();
    const QVariant value = feature->GetFieldValue(index);
    if (value.type() == QVariant::ByteArray) return value.toByteArray().toStdString();
    return Utf8ToLocal(value.toString().toUtf8().toStdString());
  };
  std::string name = fieldText(nameField_);
  if (name.empty()) name = feature->GetName();
  if (name.empty()) name = fieldText("name");
  return name;
}

void CFeatureBatchImporterImpl::MergeExtent(const std::string& layer,
                                            IAnnotationFeature* feature) {
  CVector3D min, max;
  if (!feature->GetExtent(min, max)) return;
  Extent& extent = extents_[layer];
  if (!extent.valid) {
    extent.box.min_x = min.X();
    extent.box.min_y = min.Y();
    extent.box.max_x = max.X();
    extent.box.max_y = max.Y();
    extent.valid = true;
    return;
  }
  extent.box.min_x = std::min(extent.box.min_x, min.X());
  extent.box.min_y = std::min(extent.box.min_y, min.Y());
  extent.box.max_x = std::max(extent.box.max_x, max.X());
  extent.box.max_y = std::max(extent.box.max_y, max.Y());
}

// The layer's style set takes the first style of each kind that its features bring.
void CFeatureBatchImporterImpl::CollectStyles(const std::string& layer,
                                              const CFeatureStyleSet* styles) {
  if (styles == nullptr || styles->IsEmpty()) return;
  std::unique_ptr<CFeatureStyleSet>& collected = styles_[layer];
  if (!collected) collected.reset(new CFeatureStyleSet);
  for (int i = 0; i < styles->GetCount(); ++i) {
    const CFeatureStyle* style = styles->At(i);
    if (style == nullptr) continue;
    bool present = false;
    for (int j = 0; j < collected->GetCount() && !present; ++j) {
      present = typeid(*collected->At(j)) == typeid(*style);
    }
    if (!present) collected->PushBack(style->Clone());
  }
}

bool CFeatureBatchImporterImpl::InsertFeature(IAnnotationFeature* feature) {
  if (feature == nullptr || !IsOpen()) return false;
  LayerRef layer{rootUuid_, rootType_};
  auto found = groups_.find(feature->GetGroup());
  if (feature->GetGroup() != nullptr && found != groups_.end()) layer = found->second;
  if (layer.uuid.empty()) return false;
  MergeExtent(layer.uuid, feature);

  CFeatureOption option;
  option.SetName(FeatureName(feature));
  option.SetUUID(AnnotationLayerNS::ZuGenerateUUID());
  option.SetType(AnnotationLayerNS::MappingAnnotationType(feature->GetGeometryType()));
  option.SetParentUUID(layer.uuid);
  option.SetNodeChecked(true);
  const std::string& uuid = option.GetUUID();
  const bool gisLayer = AnnotationLayerNS::IsGISLayer(static_cast<E_LAYER_TYPE>(layer.type));

  if (!gisLayer) {
    std::vector<int64_t> statusIds, propertyIds;
    if (Ready(shapeStatusInsert_,
              "INSERT INTO 'main'.'shape_status'('puuid', 'type', 'value', 'data') "
              "VALUES(?, 1, ?, NULL)",
              "[InsertShapeStatus]:")) {
      shapeStatusInsert_.BindText(1, uuid, false);
      shapeStatusInsert_.BindInt(2, option.GetStatusMask());
      if (shapeStatusInsert_.StepDone()) statusIds.push_back(sqlite3_last_insert_rowid(db_));
      shapeStatusInsert_.Reset();
    }
    if (statusIds.empty()) ZuLogWarn << "[InsertShapeStatus] Failed " << uuid;

    CZuFieldSetObject fields;
    AnnotationLayerNS::FillFieldSetFromFeature(fields, feature);
    const std::vector<CZuFieldSetObject::__tagField> list = AnnotationLayerInner::CollectFields(fields);
    if (!list.empty() &&
        Ready(shapePropertyInsert_,
              "INSERT INTO 'main'.'shape_property'('puuid', 'field_type', 'field_class', "
              "'field_name', 'value') VALUES (?, ?, ?, ?, ?)",
              "[InsertShapeProperty]:")) {
      std::unique_ptr<CZuFieldSetObject>& header = headers_[layer.uuid];
      if (!header) header.reset(new CZuFieldSetObject);
      for (const CZuFieldSetObject::__tagField& field : list) {
        if (field.key.empty()) continue;
        shapePropertyInsert_.BindText(1, uuid, false);
        shapePropertyInsert_.BindInt(2, field.type);
        shapePropertyInsert_.BindText(3, field.fieldClass, true);
        shapePropertyInsert_.BindText(4, field.key, true);
        shapePropertyInsert_.BindText(
            5, AnnotationLayerInner::FieldValueToColumn(field.type, field.value), false);
        if (shapePropertyInsert_.StepDone()) {
          propertyIds.push_back(sqlite3_last_insert_rowid(db_));
        }
        shapePropertyInsert_.Reset();
        if (header->GetFieldType(field.key) == FIELD_OFST_TYPE_NONE) {
          header->SetField(field.key, field.type, field.fieldClass, QVariant());
        }
      }
    }
    option.SetIndexArray(statusIds, propertyIds, {}, {});

    const CFeatureStyleSet* styles = feature->GetStyleSet();
    CollectStyles(layer.uuid, styles);
    const std::string json = AnnotationLayerNS::ToJsonStyle(styles);
    if (!json.empty() &&
        Ready(shapeStyleInsert_,
              "INSERT INTO 'main'.'shape_style' ('puuid', 'format', 'content') VALUES (?, ?, ?)",
              "[InsertShapeStyle]:")) {
      shapeStyleInsert_.BindText(1, uuid, false);
      shapeStyleInsert_.BindInt(2, kStyleFormat);
      shapeStyleInsert_.BindText(3, json, true);
      if (!shapeStyleInsert_.StepDone()) ZuLogWarn << "[InsertShapeStyle] Failed " << uuid;
      shapeStyleInsert_.Reset();
    }
  }

  if (!Ready(shapeInsert_,
             "INSERT INTO 'main'.'shape'('uuid', 'puuid', 'type', 'name', 'index_id', 'geom') "
             "VALUES(?, ?, ?, ?, ?, ?)",
             "[InsertShapeInner] WithData:")) {
    return false;
  }
  shapeInsert_.BindText(1, uuid, false);
  shapeInsert_.BindText(2, layer.uuid, false);
  shapeInsert_.BindInt(3, option.GetType());
  shapeInsert_.BindText(4, option.GetName(), true);
  shapeInsert_.BindText(5, option.GetIndexArrayString(), false);
  int size = 0;
  unsigned char* blob = AnnotationLayerNS::ConvertFeatureToWkbGeom(size, feature);
  if (blob != nullptr) {
    sqlite3_bind_blob(shapeInsert_.Get(), 6, blob, size, free);  // SQLite owns the blob now
  } else {
    shapeInsert_.BindNull(6);
  }
  const bool inserted = shapeInsert_.Step() == SQLITE_DONE;
  if (!inserted) {
    ZuLogError(-1) << "[InsertShapeInner] Failed-Geom:" << uuid << " " << AnnotationLayerInner::ErrorMessage(db_);
  }
  shapeInsert_.Reset();
  if (!inserted) return false;

  if (!gisLayer) appender_.Append(layer.uuid, uuid, false);
  if (IAnnotationDBObjectNotifier* notifier = model_->GetNotifier()) {
    notifier->OnFeatureInserted(model_, uuid, layer.uuid);
  }
  return true;
}

bool CFeatureBatchImporterImpl::WriteLayerStyles() {
  if (styles_.empty()) return true;
  CSqlStatement insert(db_,
                       "INSERT INTO 'main'.'layer_style' ('puuid', 'format', 'content') VALUES "
                       "(?, ?, ?)",
                       "[InsertAllLayerStyle]:");
  if (!insert.IsValid()) return false;
  bool ok = true;
  for (const auto& entry : styles_) {
    const std::string json = AnnotationLayerNS::ToJsonStyle(entry.second.get());
    if (json.empty()) continue;
    insert.BindText(1, entry.first, false);
    insert.BindInt(2, kStyleFormat);
    insert.BindText(3, json, true);
    if (insert.Step() != SQLITE_DONE) {
      ZuLogWarn << "[InsertAllLayerStyle]: " << entry.first << " " << AnnotationLayerInner::ErrorMessage(db_);
      ok = false;
    }
    insert.Reset();
  }
  return ok;
}

// Layers without a property header keep the extent columns at 0.
bool CFeatureBatchImporterImpl::WriteLayerBases() {
  if (headers_.empty()) return true;
  CSqlStatement update(db_,
                       std::string("UPDATE 'main'.'layer' SET ") + "'property_header'=?," +
                           "'min_x'=?," + "'min_y'=?," + "'max_x'=?," + "'max_y'=?" +
                           " WHERE uuid = ?",
                       "[ModifyAllLayerBase]:");
  if (!update.IsValid()) return false;
  bool ok = true;
  for (const auto& entry : headers_) {
    const Extent& extent = extents_[entry.first];
    const EXTENT box = extent.valid ? extent.box : EXTENT();
    update.BindText(1, AnnotationLayerInner::LayerHeaderListToString(*entry.second), true);
    update.BindDouble(2, box.min_x);
    update.BindDouble(3, box.min_y);
    update.BindDouble(4, box.max_x);
    update.BindDouble(5, box.max_y);
    update.BindText(6, entry.first, false);
    if (update.Step() != SQLITE_DONE) {
      ZuLogError(-1) << "[ModifyAllLayerBase]: " << AnnotationLayerInner::ErrorMessage(db_);
      ok = false;
    }
    update.Reset();
  }
  return ok;
}

bool CFeatureBatchImporterImpl::EndImport() {
  if (model_ == nullptr) return false;
  if (IsOpen()) {
    WriteLayerStyles();
    WriteLayerBases();
    appender_.Flush();
  }
  FinalizeStatements();
  const bool committed = model_->CommitTransaction();
  if (!committed) ZuLogError(-1) << "[EndImport] " << Utf8ToLocal("提交事务失败");
  importing_ = false;
  ResetState();
  ZuLOG << "[EndImport] " << Utf8ToLocal("提交批量导入数据完成 ") << stopwatch_.ElapsedMs()
        << " ms <<<<<";
  return committed;
}

bool CFeatureBatchImporterImpl::DiscardImport() {
  if (model_ == nullptr) return false;
  FinalizeStatements();
  const bool rolledBack = model_->RollBackTransaction();
  if (!rolledBack) ZuLogError(-1) << "[DiscardImport] " << Utf8ToLocal("回滚事务失败");
  importing_ = false;
  ResetState();
  ZuLOG << "[DiscardImport] " << Utf8ToLocal("回滚批量导入数据完成 ") << stopwatch_.ElapsedMs()
        << " ms <<<<<";
  return rolledBack;
}
