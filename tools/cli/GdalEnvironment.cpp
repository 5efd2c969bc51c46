#include "GdalEnvironment.h"

#include <cpl_error.h>
#include <gdal.h>

#include "LogCollector.h"

namespace {

void CPL_STDCALL RouteGdalError(CPLErr level, CPLErrorNum, const char* message) {
  auto* log = static_cast<CLogCollector*>(CPLGetErrorHandlerUserData());
  if (log == nullptr || message == nullptr) return;
  switch (level) {
    case CE_Failure:
    case CE_Fatal: log->AddMessage(ZuLogLevel::Error, "GDAL", message); break;
    case CE_Warning: log->AddMessage(ZuLogLevel::Warn, "GDAL", message); break;
    default: break;  // debug chatter stays out
  }
}

}  // namespace

CGdalEnvironment::CGdalEnvironment(CLogCollector* log) : log_(log) {
  GDALAllRegister();
  CPLPushErrorHandlerEx(RouteGdalError, log_);
}

CGdalEnvironment::~CGdalEnvironment() {
  CPLPopErrorHandler();
  GDALDestroyDriverManager();
}
