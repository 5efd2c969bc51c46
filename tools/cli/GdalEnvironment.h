// CGdalEnvironment is GDAL/OGR set up for the tool's lifetime: every driver registered, and GDAL's
// error reporting routed into the tool's log collector instead of standard error, so that a
// failing command prints one line that names GDAL's reason. The drivers are released again when
// the object goes.
//
// Threading contract: make one, on the main thread, before any GDAL call and destroy it after the
// last; the error handler it installs belongs to that thread.
#ifndef ANNOTATIONLAYER_CLI_GDAL_ENVIRONMENT_H
#define ANNOTATIONLAYER_CLI_GDAL_ENVIRONMENT_H

class CLogCollector;

class CGdalEnvironment {
 public:
  // `log` is not owned and must outlive the object.
  explicit CGdalEnvironment(CLogCollector* log);
  ~CGdalEnvironment();
  CGdalEnvironment(const CGdalEnvironment&) = delete;
  CGdalEnvironment& operator=(const CGdalEnvironment&) = delete;

 private:
  CLogCollector* log_;
};

#endif  // ANNOTATIONLAYER_CLI_GDAL_ENVIRONMENT_H
