// CLocalText converts between UTF-8 (the tool's command line, GDAL and the terminal) and the
// local code page that the module expects for paths, names and field keys (code page 936, GBK).
// Characters that the local code page cannot hold become '?', as they do inside the module.
//
// Threading contract: call Prepare on the main thread before other threads start; after that every
// member is safe from any thread (Qt's codecs are shared and immutable).
#ifndef ANNOTATIONLAYER_CLI_LOCAL_TEXT_H
#define ANNOTATIONLAYER_CLI_LOCAL_TEXT_H

#include <string>

class CLocalText {
 public:
  CLocalText() = delete;

  // Looks the codec up once. Qt's codec registry guards itself with a lock that thread checkers
  // cannot see, and the module's threads look codecs up too: the first lookup must come before
  // them.
  static void Prepare();
  static std::string FromUtf8(const std::string& utf8);
  static std::string ToUtf8(const std::string& local);
};

#endif  // ANNOTATIONLAYER_CLI_LOCAL_TEXT_H
