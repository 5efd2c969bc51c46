// ZuGenerateUUID and GetDefaultCacheDir.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <sstream>

#include <sys/syscall.h>
#include <unistd.h>

#include "AnnotationLayerNS.h"
#include "XEncoder.h"
#include "ZuCoreApplication.h"

namespace AnnotationLayerNS {
namespace {

// Microseconds between 1601-01-01 (the FILETIME epoch) and 1970-01-01.
constexpr int64_t kMicrosFrom1601To1970 = 11644473600LL * 1000000LL;

// Uniqueness across threads rests on the thread id and the time being hashed too; the counter only
// separates calls of one thread within one microsecond, so relaxed ordering is enough.
std::atomic<int64_t> g_uuidCounter{0};

int64_t MicrosecondsSince1601() {
  auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count() +
         kMicrosFrom1601To1970;
}

int CurrentThreadId() { return static_cast<int>(syscall(SYS_gettid)); }

}  // namespace

std::string ZuGenerateUUID() {
  const int threadId = CurrentThreadId();
  const std::string cpuId = CZuCoreApplication::GetInstance()->GetCpuID();
  const int64_t micros = MicrosecondsSince1601();
  const int64_t counter = g_uuidCounter.fetch_add(1, std::memory_order_relaxed);

  std::ostringstream text;
  text << micros << cpuId << threadId << counter;
  std::string bytes = text.str();
  return XEncoder::md5Encode(&bytes[0], static_cast<int>(bytes.size()));
}

std::string GetDefaultCacheDir() {
  return CZuCoreApplication::GetInstance()->GetDataDir() + "layer_cache" + "/";
}

}  // namespace AnnotationLayerNS
