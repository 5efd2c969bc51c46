// CInterruptFlag turns SIGINT and SIGTERM into a flag that long operations poll, so that an
// interrupted import, export, delete, renumbering or render can roll its transaction back (or
// drop its output) and leave everything as it was, instead of dying mid-way. The previous
// handlers come back when the object goes.
//
// Only the first signal is caught: a second one ends the process at once, for the person whose
// operation cannot stop before its current step (a renumbering runs to its end). SQLite's journal
// then rolls the open transaction back the next time the file is opened.
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
