// CInterruptFlag turns SIGINT and SIGTERM into a flag that long operations poll, so that an
// interrupted import or copy can roll its transaction back and leave the database as it was,
// instead of dying mid-way. The previous handlers come back when the object goes.
//
// Operations that cannot undo their work (a batch delete commits what it did before a cancel) do
// not install one: the signal then ends the process, and SQLite's journal rolls the open
// transaction back the next time the file is opened.
//
// Threading contract: make and destroy on the main thread, one object at a time; IsSet may be
// called from any thread.
#ifndef ANNOTATIONLAYER_CLI_INTERRUPT_FLAG_H
#define ANNOTATIONLAYER_CLI_INTERRUPT_FLAG_H

#include <signal.h>

class CInterruptFlag {
 public:
  CInterruptFlag();
  ~CInterruptFlag();
  CInterruptFlag(const CInterruptFlag&) = delete;
  CInterruptFlag& operator=(const CInterruptFlag&) = delete;

  bool IsSet() const;

 private:
  struct sigaction previousInt_;
  struct sigaction previousTerm_;
};

#endif  // ANNOTATIONLAYER_CLI_INTERRUPT_FLAG_H
