#include "AnnotationEntity.h"

#include "AnnotationFeature.h"
#include "AnnotationRenderer.h"
#include "FeatureOption.h"
#include "FeatureStyleSet.h"
#include "IAnnotationDBDataModel.h"
#include "ZuCoreApplication.h"
#include "ZuLog.h"

std::atomic<int> CAnnotationEntity::liveCount_{0};

namespace {

CAnnotationScene* SceneOf(int attachParam) {
  return CAnnotationRenderer::GetInstance()->GetScene(attachParam);
}

// What Build and Update read from the data model before they take the entity's mutex.
struct FeatureParts {
  E_GEOMETRY_DATA_TYPE geometryType = GEOMETRY_DATA_TYPE_UNKNOWN;
  std::vector<CGeometryData> parts;
  CFeatureStyleSet styles;
  std::string name;
  E_ANNOTATION_TYPE type = ANNOTATION_TYPE_UNKNOWN;
};

bool ReadParts(IAnnotationDBDataModel* model, const std::string& uuid, int mask,
               FeatureParts* out) {
  if (mask & CAnnotationEntity::kUpdateGeometry) {
    CAnnotationFeature feature;
    if (!model->QueryGeometryData(uuid, &feature)) {
      ZuLogWarn << "[CAnnotationEntity]:" << "no geometry for " << uuid;
      return false;
    }
    out->geometryType = feature.GetGeometryType();
    for (int i = 0; i < feature.GetPartCount(); ++i) out->parts.push_back(feature.GetPart(i));
  }
  // A feature without a style of its own (or its layer's) is drawn with the renderer's defaults.
  if (mask & CAnnotationEntity::kUpdateStyle) model->QueryStyle(&out->styles, uuid, false);
  if (mask & CAnnotationEntity::kUpdateBase) {
    const CFeatureOption base = model->QueryFeatureBase(uuid);
    out->name = base.GetName();
    out->type = base.GetType();
  }
  return true;
}

}  // namespace

CAnnotationEntity::CAnnotationEntity() : id_(GenerateZuObjectID()) {
  drawable_.owner = id_;
  liveCount_.fetch_add(1, std::memory_order_relaxed);
}

CAnnotationEntity::~CAnnotationEntity() {
  {
    std::lock_guard<std::mutex> guard(mutex_);
    DetachLocked();
  }
  liveCount_.fetch_sub(1, std::memory_order_relaxed);
}

bool CAnnotationEntity::Build(IAnnotationDBDataModel* model, const std::string& uuid) {
  if (model == nullptr || uuid.empty()) return false;
  FeatureParts read;
  if (!ReadParts(model, uuid, kUpdateAll, &read)) return false;

  std::lock_guard<std::mutex> guard(mutex_);
  if (attachParam_ >= 0 && drawable_.key != uuid) DetachLocked();  // rebuilt for another feature
  model_ = model;
  built_ = true;
  featureType_ = read.type;
  drawable_.key = uuid;
  drawable_.kind = read.type;
  drawable_.geometryType = read.geometryType;
  drawable_.parts = std::move(read.parts);
  drawable_.styles = std::move(read.styles);
  drawable_.name = std::move(read.name);
  ApplyAttributeLocked();
  if (attachParam_ >= 0 && !SceneOf(attachParam_)->Attach(drawable_)) attachParam_ = -1;
  return true;
}

std::string CAnnotationEntity::GetUUID() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return drawable_.key;
}

std::string CAnnotationEntity::GetName() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return drawable_.name;
}

E_ANNOTATION_TYPE CAnnotationEntity::GetFeatureType() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return featureType_;
}

E_GEOMETRY_DATA_TYPE CAnnotationEntity::GetGeometryType() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return drawable_.geometryType;
}

int CAnnotationEntity::GetPartCount() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return static_cast<int>(drawable_.parts.size());
}

CSceneDrawable CAnnotationEntity::GetDrawable() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return drawable_;
}

void CAnnotationEntity::SetAttribute(const CNodeAttribute& attribute) {
  std::lock_guard<std::mutex> guard(mutex_);
  attribute_ = attribute;
  ApplyAttributeLocked();
}

CNodeAttribute CAnnotationEntity::GetAttribute() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return attribute_;
}

bool CAnnotationEntity::Update(int mask) {
  IAnnotationDBDataModel* model = nullptr;
  std::string uuid;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    if (!built_) return false;
    model = model_;
    uuid = drawable_.key;
  }
  const int shapeMask = mask & (kUpdateGeometry | kUpdateStyle | kUpdateBase);
  FeatureParts read;
  if (shapeMask != 0 && !ReadParts(model, uuid, shapeMask, &read)) return false;

  std::lock_guard<std::mutex> guard(mutex_);
  if (shapeMask & kUpdateGeometry) {
    drawable_.geometryType = read.geometryType;
    drawable_.parts = std::move(read.parts);
  }
  if (shapeMask & kUpdateStyle) drawable_.styles = std::move(read.styles);
  if (shapeMask & kUpdateBase) {
    featureType_ = read.type;
    drawable_.kind = read.type;
    drawable_.name = std::move(read.name);
  }
  ApplyAttributeLocked();
  if (attachParam_ < 0) return true;
  CAnnotationScene* scene = SceneOf(attachParam_);
  // A display change travels alone; a new shape replaces the whole drawable.
  const bool published = shapeMask != 0
                             ? scene->Attach(drawable_)
                             : scene->UpdateDisplay(drawable_.key, id_, drawable_.display);
  if (!published) attachParam_ = -1;  // a newer entity of the feature holds the slot
  return true;
}

bool CAnnotationEntity::Attach(int attachParam) {
  if (attachParam < 0) return false;
  std::lock_guard<std::mutex> guard(mutex_);
  if (retired_ || !built_) return false;
  if (attachParam_ >= 0 && attachParam_ != attachParam) DetachLocked();
  if (!SceneOf(attachParam)->Attach(drawable_)) {
    attachParam_ = -1;
    return false;
  }
  attachParam_ = attachParam;
  return true;
}

bool CAnnotationEntity::Detach() {
  std::lock_guard<std::mutex> guard(mutex_);
  return DetachLocked();
}

bool CAnnotationEntity::IsAttached() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return attachParam_ >= 0;
}

int CAnnotationEntity::GetAttachParam() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return attachParam_;
}

void CAnnotationEntity::Retire() {
  std::lock_guard<std::mutex> guard(mutex_);
  retired_ = true;
  DetachLocked();
}

bool CAnnotationEntity::IsRetired() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return retired_;
}

int CAnnotationEntity::GetLiveCount() { return liveCount_.load(std::memory_order_relaxed); }

void CAnnotationEntity::ApplyAttributeLocked() {
  CSceneDisplay& display = drawable_.display;
  display.visible = attribute_.IsVisible();
  display.zValue = attribute_.GetZValue();
  display.minLevel = static_cast<signed char>(attribute_.GetMinLevel());
  display.maxLevel = static_cast<signed char>(attribute_.GetMaxLevel());
  display.minNameLevel = static_cast<signed char>(attribute_.GetMinNameLevel());
  display.maxNameLevel = static_cast<signed char>(attribute_.GetMaxNameLevel());
}

bool CAnnotationEntity::DetachLocked() {
  if (attachParam_ < 0) return false;
  // The scene ignores the call when a newer entity of the feature has taken the slot over.
  SceneOf(attachParam_)->Detach(drawable_.key, id_);
  attachParam_ = -1;
  return true;
}
