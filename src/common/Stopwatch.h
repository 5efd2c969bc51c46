// A millisecond stopwatch on the monotonic clock, for the timings that long operations log.
//
// Threading contract: a plain value; no internal synchronisation.
#ifndef ANNOTATIONLAYER_STOPWATCH_H
#define ANNOTATIONLAYER_STOPWATCH_H

#include <chrono>

class CStopwatch {
 public:
  CStopwatch() : start_(std::chrono::steady_clock::now()) {}
  void Restart() { start_ = std::chrono::steady_clock::now(); }
  double ElapsedMs() const {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_)
        .count();
  }

 private:
  std::chrono::steady_clock::time_point start_;
};

#endif  // ANNOTATIONLAYER_STOPWATCH_H
