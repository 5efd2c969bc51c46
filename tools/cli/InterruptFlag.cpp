#include "InterruptFlag.h"

#include <atomic>

namespace {

// Signal handlers may only touch lock-free atomics.
std::atomic<bool> g_interrupted(false);
static_assert(std::atomic<bool>::is_always_lock_free, "the flag is set from a signal handler");

void OnSignal(int) { g_interrupted.store(true); }

}  // namespace

CInterruptFlag::CInterruptFlag() {
  g_interrupted.store(false);
  struct sigaction action {};
  action.sa_handler = OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESETHAND;
  sigaction(SIGINT, &action, &previousInt_);
  sigaction(SIGTERM, &action, &previousTerm_);
}

CInterruptFlag::~CInterruptFlag() {
  sigaction(SIGINT, &previousInt_, nullptr);
  sigaction(SIGTERM, &previousTerm_, nullptr);
}

bool CInterruptFlag::IsSet() const { return g_interrupted.load(); }
