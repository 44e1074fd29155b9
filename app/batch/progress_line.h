#ifndef TAGWRIGHT_APP_BATCH_PROGRESS_LINE_H_
#define TAGWRIGHT_APP_BATCH_PROGRESS_LINE_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iosfwd>

namespace tagwright {

// The progress of a batch on one line of standard error, redrawn at most
// ten times a second, and its summary at the end. Silent when not `shown`
// (standard error is no terminal and --progress was not given).
class ProgressLine {
 public:
  ProgressLine(std::ostream& err, bool shown, std::size_t total);

  // "1200/10000 documents, 1190 matched, 2 failed, 3480/s"
  void show(std::size_t done, int matched, int failed);
  // Clears the line before another line is written to standard error.
  void clear();
  // "10000 documents, 9990 matched, 9990 changed, 2 failed, 2.9 s, 3450/s"
  // (and the file system syncs of a rewrite, when it made any)
  void summary(int matched, int changed, int failed, std::uint64_t syncs);

 private:
  double rate(std::size_t done) const;

  std::ostream& err_;
  const bool shown_;
  const std::size_t total_;
  const std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point lastDrawn_;
  bool drawn_ = false;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_BATCH_PROGRESS_LINE_H_
