// The module's exported entry points.
#include <mutex>

#include "AnnotationLayerModule.h"
#include "AnnotationSchema.h"

namespace {

// The one module object of the process. The mutex guards the pointer only: it is not held while
// the module stops, because stopping joins engine threads whose host observers may ask for the
// module (and get it, until it is gone).
std::mutex g_moduleMutex;
CAnnotationLayerModule* g_module = nullptr;
bool g_destroying = false;

}  // namespace

extern "C" IAnnotationLayerModule* GetOrCreateAnnotationLayerModule() {
  std::lock_guard<std::mutex> guard(g_moduleMutex);
  if (g_module == nullptr) g_module = new CAnnotationLayerModule;
  return g_module;
}

extern "C" void DestroyAnnotationLayerModule() {
  CAnnotationLayerModule* module = nullptr;
  {
    std::lock_guard<std::mutex> guard(g_moduleMutex);
    if (g_module == nullptr || g_destroying) return;
    g_destroying = true;
    module = g_module;
  }
  static_cast<IAnnotationLayerModule*>(module)->Stop();
  {
    std::lock_guard<std::mutex> guard(g_moduleMutex);
    g_module = nullptr;
    g_destroying = false;
  }
  delete module;
}

extern "C" bool AnnotationLayerCreateDatabase(const char* path) {
  return path != nullptr && AnnotationLayerNS::CreateAnnotationDatabase(path);
}
