// CLogRoute sends the host's log (and so the module's) to one sink for its lifetime, and gives the
// previous sink back when it goes.
//
// Threading contract: make and destroy on one thread; the log itself may be written from any.
#ifndef ANNOTATIONLAYER_CLI_LOG_ROUTE_H
#define ANNOTATIONLAYER_CLI_LOG_ROUTE_H

#include <memory>
#include <utility>

#include "ZuLog.h"

class CLogRoute {
 public:
  explicit CLogRoute(std::shared_ptr<IZuLogSink> sink) : previous_(CZuLog::SetSink(std::move(sink))) {}
  ~CLogRoute() { CZuLog::SetSink(previous_); }
  CLogRoute(const CLogRoute&) = delete;
  CLogRoute& operator=(const CLogRoute&) = delete;

 private:
  std::shared_ptr<IZuLogSink> previous_;
};

#endif  // ANNOTATIONLAYER_CLI_LOG_ROUTE_H
