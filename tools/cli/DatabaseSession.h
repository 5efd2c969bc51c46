// CDatabaseSession is one annotation database opened for a command, the way a host opens it: the
// module is created and started, a "CSpatialiteDBDataModel" is made through it and installed on
// the file. Before that the file is checked with a plain read-only SQLite connection, so that a
// missing file, a directory, a file that is not SQLite and an SQLite file without the annotation
// tables each give a clear reason instead of a half-working model. Everything is released, in
// order, when the session goes.
//
// A writer killed in the middle of a transaction leaves a hot journal (or a WAL) beside the file,
// which only a read-write connection may roll back: when one is there the check connects
// read-write, and SQLite restores the file before anything reads it. A session opened for writing
// also waits there (CBusyWait) until no other process holds the write lock, since the model's
// transactions start deferred and SQLite does not wait for a lock that a reading transaction
// wants to upgrade.
//
// Node uuids given on the command line pass Resolve, which refuses malformed text (nothing
// unexpected reaches SQL) and uuids that name no node.
//
// Threading contract: one thread uses a session. The module is a process-wide object: one session
// at a time.
#ifndef ANNOTATIONLAYER_CLI_DATABASE_SESSION_H
#define ANNOTATIONLAYER_CLI_DATABASE_SESSION_H

#include <memory>
#include <string>

#include "AnnotationLayerTypes.h"

class IAnnotationDBDataModel;
class IAnnotationLayerModule;

class CDatabaseSession {
 public:
  CDatabaseSession();
  ~CDatabaseSession();
  CDatabaseSession(const CDatabaseSession&) = delete;
  CDatabaseSession& operator=(const CDatabaseSession&) = delete;

  enum E_ACCESS { OPEN_FOR_READING = 0, OPEN_FOR_WRITING = 1 };

  // Opens the database at `path` (UTF-8). False with a one-line reason.
  bool Open(const std::string& path, std::string* error, E_ACCESS access = OPEN_FOR_READING);
  // The installed model; null before a successful Open.
  IAnnotationDBDataModel* Model() const { return model_.get(); }
  const std::string& RootUuid() const { return rootUuid_; }

  // The kind of the node `uuid`; false with a reason when the text is no uuid or names no node.
  bool Resolve(const std::string& uuid, E_NODE_KIND* kind, std::string* error) const;
  // Letters, digits, '-', '_', '{' and '}', 1 to 64 of them: every uuid the module makes, and
  // nothing that could break out of an SQL literal.
  static bool IsWellFormedUuid(const std::string& uuid);

 private:
  struct ModelDeleter {
    void operator()(IAnnotationDBDataModel* model) const;
  };

  bool Probe(const std::string& path, E_ACCESS access, std::string* error) const;

  bool moduleStarted_ = false;
  std::unique_ptr<IAnnotationDBDataModel, ModelDeleter> model_;
  std::string rootUuid_;
};

#endif  // ANNOTATIONLAYER_CLI_DATABASE_SESSION_H
