// CViewRenderer shows an annotation database in one view of the host's renderer, the way the host
// does: a spatial engine of the module is told the visible extent and builds entities, which
// attach their drawables to the view's scene; the renderer then draws the scene into an image.
//
// ShowExtent knows when the view is complete without polling the engine's internals: before it
// reports the extent it walks the same features the engine will walk (the data model's extent
// walk, filtered by the node cache calculator's visibility and cut at the engine's per-pass
// limit), and then waits, on the engine's 551/552 events, until every one of them has a drawable
// in the scene. When some of them were drawn before (a view that moved), it also waits for the
// pass's 552 event, which says their draw order has been renewed.
//
// Ownership: the module and the data model are borrowed and must outlive the renderer. The engine
// is the renderer's: made by Start, stopped and destroyed with the renderer.
//
// Threading contract: one thread (the host's) calls every operation; the engine works on its own
// threads meanwhile.
#ifndef ANNOTATIONLAYER_CLI_VIEW_RENDERER_H
#define ANNOTATIONLAYER_CLI_VIEW_RENDERER_H

#include <QImage>

#include <memory>
#include <string>

#include "AnnotationLayerTypes.h"
#include "ScenePainter.h"

class CAnnotationScene;
class CEntityEventCounter;
class CInterruptFlag;
class CProgressBar;
class IAnnotationDBDataModel;
class IAnnotationLayerModule;
class IAnnotationSpatialEngine;

class CViewRenderer {
 public:
  // What one ShowExtent saw.
  struct ViewReport {
    int expected = 0;        // visible features the engine takes for the extent
    int alreadyDrawn = 0;    // of those, the ones with a drawable before the extent was reported
    int entitiesBuilt = 0;   // 551 events while waiting
    int passesChanged = 0;   // 552 events while waiting
    double seconds = 0;
  };

  // `viewId` names the view's scene in the host's renderer; the scene is cleared by Start.
  CViewRenderer(IAnnotationLayerModule* module, IAnnotationDBDataModel* model, int viewId);
  ~CViewRenderer();
  CViewRenderer(const CViewRenderer&) = delete;
  CViewRenderer& operator=(const CViewRenderer&) = delete;

  // Makes and starts an engine named `name` on the model, once the node cache calculator's first
  // pass is done (waiting at most `timeoutMs`). False with a reason.
  bool Start(const std::string& name, int timeoutMs, std::string* error);
  // An interrupt (not owned; null for none) that ends the waits of ShowExtent early.
  void SetInterrupt(const CInterruptFlag* interrupt) { interrupt_ = interrupt; }
  // Reports `extent` and waits, at most `timeoutMs`, until the view shows it (see above).
  // `progress` (may be null) counts the features drawn. False with a reason on a time-out or an
  // interrupt.
  bool ShowExtent(const EXTENT& extent, int timeoutMs, CProgressBar* progress, ViewReport* report,
                  std::string* error);
  // Draws the scene at display level `level` onto `image`, `extent` covering the whole image.
  bool Paint(const EXTENT& extent, int level, QImage* image, CScenePainter::Result* result) const;

  // The display level at which a map `imageWidth` pixels wide shows `extent`: 0 shows the whole
  // world on 256 pixels, each level doubles the scale; clamped to 0..21.
  static int LevelForExtent(const EXTENT& extent, int imageWidth);

  // Null before Start.
  IAnnotationSpatialEngine* Engine() const { return engine_; }
  const CEntityEventCounter* Events() const { return events_.get(); }
  CAnnotationScene* Scene() const { return scene_; }

 private:
  IAnnotationLayerModule* module_;
  IAnnotationDBDataModel* model_;
  CAnnotationScene* scene_;
  IAnnotationSpatialEngine* engine_ = nullptr;  // the module's object, destroyed through it
  std::unique_ptr<CEntityEventCounter> events_;
  const CInterruptFlag* interrupt_ = nullptr;
};

#endif  // ANNOTATIONLAYER_CLI_VIEW_RENDERER_H
