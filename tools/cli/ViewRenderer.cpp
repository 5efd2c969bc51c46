#include "ViewRenderer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>
#include <vector>

#include "AnnotationLayerNS.h"
#include "AnnotationRenderer.h"
#include "AnnotationScene.h"
#include "EntityEventCounter.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationDBObjectVisitor.h"
#include "IAnnotationLayerModule.h"
#include "IAnnotationSpatialEngine.h"
#include "NodeCacheCalculator.h"
#include "InterruptFlag.h"
#include "ProgressBar.h"

namespace {

using Clock = std::chrono::steady_clock;

// Events come in bursts of thousands; checking the scene after each one would cost more than the
// engine's work, so checks are at least this far apart.
constexpr auto kCheckInterval = std::chrono::milliseconds(20);

// The features the engine will take for an extent: the same walk, the same visibility, the same
// limit (the feature that goes over the limit is still taken).
class CExpectedFeatures : public IAnnotationDBObjectVisitor {
 public:
  CExpectedFeatures(CNodeCacheCalculator* calculator, int limit)
      : calculator_(calculator), limit_(limit) {}

  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel*, const std::list<std::string>&,
                             const std::string& uuid, const CFeatureOption&) override {
    if (calculator_ != nullptr && !calculator_->GetEntityAttribute(uuid).IsVisible()) {
      return HANDLE_TYPE_CONTINUE;
    }
    uuids.push_back(uuid);
    return static_cast<int>(uuids.size()) > limit_ ? HANDLE_TYPE_STOP : HANDLE_TYPE_CONTINUE;
  }
  bool IsOnlyUUID() override { return true; }

  std::vector<std::string> uuids;

 private:
  CNodeCacheCalculator* calculator_;
  int limit_;
};

// Drops the uuids that have a drawable in `scene`.
void DropDrawn(const CAnnotationScene& scene, std::vector<std::string>* uuids) {
  uuids->erase(std::remove_if(uuids->begin(), uuids->end(),
                              [&](const std::string& uuid) { return scene.Contains(uuid); }),
               uuids->end());
}

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace

CViewRenderer::CViewRenderer(IAnnotationLayerModule* module, IAnnotationDBDataModel* model,
                             int viewId)
    : module_(module),
      model_(model),
      scene_(CAnnotationRenderer::GetInstance()->GetScene(viewId)) {}

CViewRenderer::~CViewRenderer() {
  if (engine_ != nullptr) module_->DestroySpatialEngine(engine_);
  events_.reset();
}

bool CViewRenderer::Start(const std::string& name, int timeoutMs, std::string* error) {
  if (engine_ != nullptr) {
    *error = "the view has an engine already";
    return false;
  }
  CNodeCacheCalculator* calculator = model_->GetNodeCacheCalculator();
  if (calculator != nullptr && !calculator->WaitForFinished(timeoutMs)) {
    *error = "the node cache calculator did not finish its first pass in time";
    return false;
  }
  scene_->Clear();
  engine_ = module_->CreateSpatialEngine(name, model_);
  if (engine_ == nullptr) {
    *error = "the module made no spatial engine";
    return false;
  }
  engine_->SetAttachParam(scene_->GetID());
  engine_->SetCreatorPause(0);  // a picture wants every entity as soon as possible
  events_ = std::make_unique<CEntityEventCounter>(engine_->GetID());
  if (!engine_->Start()) {
    *error = "the spatial engine did not start";
    return false;
  }
  return true;
}

bool CViewRenderer::ShowExtent(const EXTENT& extent, int timeoutMs, CProgressBar* progress,
                               ViewReport* report, std::string* error) {
  *report = ViewReport();
  if (engine_ == nullptr) {
    *error = "the view has no engine";
    return false;
  }
  const Clock::time_point start = Clock::now();
  CExpectedFeatures expected(model_->GetNodeCacheCalculator(), engine_->GetMaxPerPass());
  // The same walk as the engine's pass.
  if (!model_->TravelViaExtent(&expected, AnnotationLayerNS::ExtentRing(extent), -1)) {
    *error = "the extent walk failed";
    return false;
  }
  std::vector<std::string> remaining = expected.uuids;
  report->expected = static_cast<int>(remaining.size());
  DropDrawn(*scene_, &remaining);
  report->alreadyDrawn = report->expected - static_cast<int>(remaining.size());
  // Features drawn before get their new draw order at the end of the pass, announced by 552.
  const bool waitForPass = report->alreadyDrawn > 0;

  const int entitiesBefore = events_->EntitiesBuilt();
  const int passesBefore = events_->PassesChanged();
  if (progress != nullptr) progress->Start("drawing", report->expected);
  engine_->OnUpdateRange(extent);

  const Clock::time_point deadline = start + std::chrono::milliseconds(timeoutMs);
  int seen = -1;
  for (;;) {
    DropDrawn(*scene_, &remaining);
    if (progress != nullptr) {
      progress->Update(report->expected - static_cast<int64_t>(remaining.size()));
    }
    const bool passDone = !waitForPass || events_->PassesChanged() > passesBefore;
    if (remaining.empty() && passDone) break;
    if (interrupt_ != nullptr && interrupt_->IsSet()) {
      if (progress != nullptr) progress->Finish();
      *error = "interrupted";
      return false;
    }
    const Clock::time_point now = Clock::now();
    if (now >= deadline) {
      if (progress != nullptr) progress->Finish();
      *error = "the view was not complete after " + std::to_string(timeoutMs) + " ms: " +
               std::to_string(report->expected - remaining.size()) + " of " +
               std::to_string(report->expected) + " features drawn";
      return false;
    }
    const int waitMs = static_cast<int>(std::min<int64_t>(
        100, std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now).count()));
    seen = events_->WaitForNews(seen, waitMs);
    std::this_thread::sleep_for(kCheckInterval);  // lets a burst of events settle
  }
  if (progress != nullptr) progress->Finish();
  report->entitiesBuilt = events_->EntitiesBuilt() - entitiesBefore;
  report->passesChanged = events_->PassesChanged() - passesBefore;
  report->seconds = SecondsSince(start);
  return true;
}

bool CViewRenderer::Paint(const EXTENT& extent, int level, QImage* image,
                          CScenePainter::Result* result) const {
  const QRectF area(extent.min_x, extent.min_y, extent.max_x - extent.min_x,
                    extent.max_y - extent.min_y);
  return CScenePainter::Paint(*scene_, level, area, image, result);
}

int CViewRenderer::LevelForExtent(const EXTENT& extent, int imageWidth) {
  const double width = extent.max_x - extent.min_x;
  if (width <= 0 || imageWidth <= 0) return 0;
  const double level = std::log2(imageWidth * 360.0 / (256.0 * width));
  return std::max(0, std::min(21, static_cast<int>(std::floor(level + 0.5))));
}
