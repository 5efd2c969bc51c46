// CAnnotationSpatialEngine turns reports of the visible extent into drawable entities, in draw
// order, for the features inside it. The host calls OnUpdateRange; the traversal thread walks the
// data model's features inside the extent, filters them by inherited visibility and ranks them by
// inherited order (both from the node cache calculator), and hands them to the entity pool. Eight
// creator threads build the entities of features seen for the first time and announce each one
// as a state event (1623/551, the feature's uuid).
//
// A pass accepts at most GetMaxPerPass() features; the one that goes over the limit is still
// recorded and ranked, and then the walk ends. Ranked features get draw values from the number of
// ranked features (the lowest order key) down to 1, in ascending CNodeOrder, whose comparison is
// deliberately not lexicographic: two keys that compare neither less nor greater count as equal,
// and the feature met second gets no draw value in that pass (see CPassOrder).
//
// Threading contract: the host calls the IAnnotationSpatialEngine operations from one thread. The
// engine's threads share with it: pendingFeatures (under pendingLock), excludedFeatures (under
// excludedLock), and flags and counters that are atomics read without ordering (a stale read costs
// at most one more feature visit or one more sleep). A host request that changes the view (range,
// reset, refresh) sets the abort flag, the range and the change count in one step under
// pendingLock, and a pass takes them in one step under it too, so no request is lost between the
// two. A feature is excluded before its entity is released. No engine lock is held while another
// lock is taken or while the data model, the calculator or the pool is called. passOrder,
// acceptedCount, the pass's calculator and the mapped connection belong to the traversal thread.
//
// The node cache calculator is taken from the data model at every pass (and by UpdateFeature), so
// the model may be uninstalled and installed again under a started engine, between passes; the
// model must not be uninstalled while a pass runs or entities are being built.
#ifndef ANNOTATIONLAYER_ANNOTATION_SPATIAL_ENGINE_H
#define ANNOTATIONLAYER_ANNOTATION_SPATIAL_ENGINE_H

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "IAnnotationDBDataModel.h"
#include "IAnnotationDBObjectVisitor.h"
#include "IAnnotationSpatialEngine.h"
#include "PassOrder.h"
#include "TaskExUser.h"

class CCriticalLock;
struct sqlite3;
class CEntityAssignPool;
class CNodeCacheCalculator;
class CTask;
class CTaskEx;
class IAnnotationLayerModule;

class CAnnotationSpatialEngine : public IAnnotationSpatialEngine,
                                 public CTaskExUser,
                                 public IAnnotationDBObjectVisitor {
 public:
  static constexpr int kDefaultMaxPerPass = 7000;
  static constexpr int kEntityLimit = 21000;
  static constexpr int kCreatorCount = 8;
  static constexpr int kDefaultCreatorPauseMs = 10;

  CAnnotationSpatialEngine();
  // Stops the engine if the owner did not.
  ~CAnnotationSpatialEngine() override;
  CAnnotationSpatialEngine(const CAnnotationSpatialEngine&) = delete;
  CAnnotationSpatialEngine& operator=(const CAnnotationSpatialEngine&) = delete;

  bool Initialize(const std::string& name, IAnnotationDBDataModel* model) override;
  bool Uninitialize() override;
  std::string GetName() override;
  int GetID() override;
  IAnnotationDBDataModel* GetDataModel() override;
  void SetAttachParam(int param) override;
  int GetAttachParam() override;
  void SetKeyedList(int key, const std::vector<std::pair<int, std::string>>& list) override;
  std::vector<std::pair<int, std::string>> GetKeyedList(int key) override;
  void SetMaxPerPass(int count) override;
  int GetMaxPerPass() override;
  void SetListener(IAnnotationSpatialEngineListener* listener) override;
  IAnnotationSpatialEngineListener* GetListener() override;
  bool Start() override;
  bool Stop() override;
  bool IsStarted() override;
  void ResetAll() override;
  void Refresh() override;
  void ReattachAll() override;
  void OnUpdateRange(const EXTENT& range) override;
  EXTENT GetRange() override;
  void UpdateFeature(const std::string& uuid) override;
  bool SetFeatureExcluded(const std::string& uuid, bool excluded) override;
  bool IsFeatureExcluded(const std::string& uuid) override;
  void SetCreatorPause(int milliseconds) override;
  int GetCreatorPause() override;

  // For diagnostics and tests, on the host's thread: the pool (null while stopped), the number of
  // queued features, the engine's tasks (traversal first) and the number of passes run.
  CEntityAssignPool* GetPool() { return pool_.get(); }
  int GetPendingCount();
  std::vector<const CTask*> GetTasks() const;
  int GetPassCount() const { return passCount_.load(std::memory_order_acquire); }

 protected:
  // The body of all nine threads; the traversal thread is told apart by its task.
  void OnRunTaskEx(CTaskEx* task) override;
  // The feature visit of a pass, for walks that hand no link. Answers 2 (stop the walk) once the
  // pass is to end.
  E_HANDLE_TYPE ApplyFeature(IAnnotationDBDataModel* model, const std::list<std::string>& path,
                             const std::string& uuid, const CFeatureOption& option) override;
  bool IsOnlyUUID() override { return true; }
  // Ends a running walk between features when the pass is cut short or the engine stops.
  bool IsAborted() override;

 private:
  class CPassLinkVisitor;
  // The feature visit of a pass; `link` is the feature's as the walk read it, or null when the
  // walk read none (the calculator then reads it).
  E_HANDLE_TYPE VisitPassFeature(const std::string& uuid,
                                 const IAnnotationDBDataModel::FeatureLink* link);
  // One pass over the current range; false when none was due.
  bool RunTraversalStep();
  // Clears the abort flag, takes the pending changes and the range to walk; false when a reset
  // took the changes away.
  bool BeginPass(EXTENT* range);
  // Lets the data model's connection read the database file through memory mapping.
  void MapConnectionForReading();
  // Builds the entity of the next queued feature; false when the queue was empty.
  bool RunCreationStep();
  void ApplyDrawOrder(const std::string& uuid, int z);
  // Drops every entity and queued feature; `keepRange` decides between Refresh and ResetAll.
  void DropAll(bool keepRange);
  void StoreRange(const EXTENT& range);
  EXTENT LoadRange() const;
  void SendEntityEvent(const std::string& uuid);

  std::atomic<int> id_{-1};
  std::string name_;
  IAnnotationLayerModule* module_ = nullptr;      // not owned
  IAnnotationDBDataModel* dataModel_ = nullptr;   // not owned
  std::atomic<int> attachParam_{1};
  std::map<int, std::vector<std::pair<int, std::string>>> keyedLists_;
  std::atomic<int> maxPerPass_{kDefaultMaxPerPass};
  std::unique_ptr<CEntityAssignPool> pool_;
  IAnnotationSpatialEngineListener* listener_ = nullptr;  // not owned
  std::atomic<bool> started_{false};
  std::atomic<int> changeCount_{0};
  std::atomic<bool> abortPass_{false};
  std::atomic<double> range_[4];
  std::unique_ptr<CTaskEx> mainTask_;
  // The traversal task as its threads see it; compared, never dereferenced.
  std::atomic<CTaskEx*> mainTaskId_{nullptr};
  std::atomic<int> acceptedCount_{0};
  CNodeCacheCalculator* passCalculator_ = nullptr;  // the running pass's; not owned
  sqlite3* mappedConnection_ = nullptr;  // only compared
  CPassOrder passOrder_;
  std::vector<std::unique_ptr<CTaskEx>> creatorTasks_;
  std::unique_ptr<CCriticalLock> pendingLock_;
  std::list<std::string> pendingFeatures_;
  std::unique_ptr<CCriticalLock> excludedLock_;
  std::set<std::string> excludedFeatures_;
  std::atomic<int> passCount_{0};
  std::atomic<int> creatorPauseMs_{kDefaultCreatorPauseMs};
};

#endif  // ANNOTATIONLAYER_ANNOTATION_SPATIAL_ENGINE_H
