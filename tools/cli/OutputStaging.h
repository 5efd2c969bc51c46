// COutputStaging lets an export write into a private directory beside its output and moves what
// was written into place only at the end, so that the export never replaces a file it was not
// named to write. Which files a format makes is GDAL's business: a shapefile's .shx, .dbf, .prj
// and .cpg, a CSV's .csvt and .prj, a GML's .xsd, or one more file per layer beside the first.
// Looking at what GDAL actually wrote is the one list that is always right, and a refusal then
// leaves the output's directory exactly as it was.
//
// The staging directory and all in it go with the object, so a failed or interrupted export
// leaves nothing behind (a killed one leaves a hidden ".annotationlayer-export-*" directory).
//
// Threading contract: one thread.
#ifndef ANNOTATIONLAYER_CLI_OUTPUT_STAGING_H
#define ANNOTATIONLAYER_CLI_OUTPUT_STAGING_H

#include <string>

class COutputStaging {
 public:
  // Makes the staging directory in the directory of `out`; see IsReady.
  explicit COutputStaging(const std::string& out);
  ~COutputStaging();
  COutputStaging(const COutputStaging&) = delete;
  COutputStaging& operator=(const COutputStaging&) = delete;

  // False (with the reason in Error) when the staging directory could not be made.
  bool IsReady() const { return !directory_.empty(); }
  const std::string& Error() const { return error_; }
  // Where the export writes: the output's name inside the staging directory.
  const std::string& Path() const { return path_; }

  // Moves every file and directory written into the output's directory. False with a reason,
  // and nothing moved, when any of them exists there already.
  bool Publish(std::string* error);

 private:
  std::string target_;     // the output's directory
  std::string directory_;  // the staging directory; empty when it could not be made
  std::string path_;
  std::string error_;
};

#endif  // ANNOTATIONLAYER_CLI_OUTPUT_STAGING_H
