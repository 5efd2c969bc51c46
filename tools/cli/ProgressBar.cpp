#include "ProgressBar.h"

#include <unistd.h>

namespace {

constexpr int kBarWidth = 30;
// Enough for a smooth bar without letting terminal output slow the work down.
constexpr std::chrono::milliseconds kRedrawInterval(100);

}  // namespace

CProgressBar::CProgressBar(std::FILE* out, bool enabled)
    : out_(out), enabled_(enabled && out != nullptr) {}

CProgressBar::~CProgressBar() { Finish(); }

bool CProgressBar::StderrIsTerminal() { return isatty(STDERR_FILENO) == 1; }

void CProgressBar::Start(const std::string& label, int64_t total) {
  label_ = label;
  total_ = total < 0 ? 0 : total;
  done_ = 0;
  if (!enabled_) return;
  Draw();
}

void CProgressBar::SetTotal(int64_t total) { total_ = total < 0 ? 0 : total; }

void CProgressBar::Update(int64_t done) {
  done_ = done;
  if (!enabled_) return;
  const auto now = std::chrono::steady_clock::now();
  const bool complete = total_ > 0 && done_ >= total_;
  if (!complete && shown_ && now - lastDraw_ < kRedrawInterval) return;
  Draw();
}

void CProgressBar::Draw() {
  std::string line = "\r" + label_;
  if (total_ > 0) {
    const int64_t done = done_ > total_ ? total_ : done_;
    const int filled = static_cast<int>(done * kBarWidth / total_);
    line += " [" + std::string(static_cast<size_t>(filled), '#') +
            std::string(static_cast<size_t>(kBarWidth - filled), '-') + "] ";
    const int percent = static_cast<int>(done * 100 / total_);
    char numbers[64];
    std::snprintf(numbers, sizeof numbers, "%3d%%  %lld/%lld", percent,
                  static_cast<long long>(done_), static_cast<long long>(total_));
    line += numbers;
  } else {
    line += "  " + std::to_string(done_);
  }
  line += "\033[K";  // erase what a longer previous line left behind
  std::fputs(line.c_str(), out_);
  std::fflush(out_);
  shown_ = true;
  lastDraw_ = std::chrono::steady_clock::now();
}

void CProgressBar::Finish() {
  if (!enabled_ || !shown_) return;
  std::fputs("\r\033[K", out_);
  std::fflush(out_);
  shown_ = false;
}
