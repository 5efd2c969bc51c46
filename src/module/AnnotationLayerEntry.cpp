// The module's exported entry points.
#include <mutex>

#include "AnnotationLayerModule.h"
#include "AnnotationSchema.h"

namespace {

// The one module object of the process. The mutex only makes concurrent first calls safe; the
// host normally calls these on its main thread.
std::mutex g_moduleMutex;
CAnnotationLayerModule* g_module = nullptr;

}  // namespace

extern "C" IAnnotationLayerModule* GetOrCreateAnnotationLayerModule() {
  std::lock_guard<std::mutex> guard(g_moduleMutex);
  if (g_module == nullptr) g_module = new CAnnotationLayerModule;
  return g_module;
}

extern "C" void DestroyAnnotationLayerModule() {
  std::lock_guard<std::mutex> guard(g_moduleMutex);
  if (g_module == nullptr) return;
  IAnnotationLayerModule* module = g_module;
  module->Stop();
  delete module;
  g_module = nullptr;
}

extern "C" bool AnnotationLayerCreateDatabase(const char* path) {
  return path != nullptr && AnnotationLayerNS::CreateAnnotationDatabase(path);
}
