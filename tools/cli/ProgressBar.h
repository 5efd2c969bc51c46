// CProgressBar draws one self-overwriting line of progress ("label [#####-----]  45%  9000/20000")
// for long operations. It draws only when enabled, which the tool decides once: on when standard
// error is a terminal, off otherwise, so that logs and pipes never see carriage returns. Redraws
// are throttled to a few per second, so calling Update once per item costs next to nothing.
//
// With an unknown total (0) the line shows the count alone.
//
// Threading contract: none; one thread drives a bar.
#ifndef ANNOTATIONLAYER_CLI_PROGRESS_BAR_H
#define ANNOTATIONLAYER_CLI_PROGRESS_BAR_H

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

class CProgressBar {
 public:
  // Draws on `out` (not owned) when `enabled`.
  CProgressBar(std::FILE* out, bool enabled);
  // Clears a line still shown.
  ~CProgressBar();
  CProgressBar(const CProgressBar&) = delete;
  CProgressBar& operator=(const CProgressBar&) = delete;

  // Whether standard error is a terminal: the usual value of `enabled`.
  static bool StderrIsTerminal();

  bool IsEnabled() const { return enabled_; }
  // Starts a new phase: a label, a total (0 when unknown) and a count of zero.
  void Start(const std::string& label, int64_t total);
  void SetTotal(int64_t total);
  void Update(int64_t done);
  void Advance(int64_t count = 1) { Update(done_ + count); }
  int64_t Done() const { return done_; }
  // Clears the line, so that what is printed next starts on a clean line.
  void Finish();

 private:
  void Draw();

  std::FILE* out_;
  bool enabled_;
  bool shown_ = false;
  std::string label_;
  int64_t total_ = 0;
  int64_t done_ = 0;
  std::chrono::steady_clock::time_point lastDraw_;
};

#endif  // ANNOTATIONLAYER_CLI_PROGRESS_BAR_H
