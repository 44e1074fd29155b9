#include "batch/progress_line.h"

#include <cstdio>
#include <ostream>

namespace tagwright {

ProgressLine::ProgressLine(std::ostream& err, bool shown, std::size_t total)
    : err_(err), shown_(shown), total_(total), start_(std::chrono::steady_clock::now()) {}

double ProgressLine::rate(std::size_t done) const {
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
  return elapsed.count() > 0 ? static_cast<double>(done) / elapsed.count() : 0.0;
}

void ProgressLine::show(std::size_t done, int matched, int failed) {
  if (!shown_) return;
  const auto now = std::chrono::steady_clock::now();
  if (drawn_ && now - lastDrawn_ < std::chrono::milliseconds(100) && done < total_) return;
  lastDrawn_ = now;
  drawn_ = true;
  char line[160];
  std::snprintf(line, sizeof line, "\r%zu/%zu documents, %d matched, %d failed, %.0f/s\x1b[K", done,
                total_, matched, failed, rate(done));
  err_ << line << std::flush;
}

void ProgressLine::clear() {
  if (!shown_ || !drawn_) return;
  err_ << "\r\x1b[K";
  drawn_ = false;
}

void ProgressLine::summary(int matched, int changed, int failed, std::uint64_t syncs) {
  if (!shown_) return;
  clear();
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
  char line[200];
  std::snprintf(line, sizeof line,
                "%zu documents, %d matched, %d changed, %d failed, %.1f s, %.0f/s", total_, matched,
                changed, failed, elapsed.count(), rate(total_));
  err_ << line;
  if (syncs > 0) err_ << ", " << syncs << " file system syncs";
  err_ << "\n" << std::flush;
}

}  // namespace tagwright
