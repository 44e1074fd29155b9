#ifndef TAGWRIGHT_APP_SERVE_WRITE_LOCKS_H_
#define TAGWRIGHT_APP_SERVE_WRITE_LOCKS_H_

#include <map>
#include <memory>
#include <mutex>
#include <string>

namespace tagwright {

// Serialises rewrites of one document: the component takes no lock, and two
// rewrites at once can tear the backup rotation. Inside the process a mutex
// per resolved path; across processes an advisory lock (flock) on the
// document as it stands under its name, taken again when a rewrite that ran
// meanwhile has replaced the file.
class WriteLocks {
 public:
  class Held {
   public:
    Held(std::unique_lock<std::mutex> inProcess, int fileLock)
        : inProcess_(std::move(inProcess)), fileLock_(fileLock) {}
    Held(Held&& other) noexcept;
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    Held& operator=(Held&&) = delete;
    ~Held();

   private:
    std::unique_lock<std::mutex> inProcess_;
    int fileLock_;  // -1 when the document could not be opened
  };

  // Waits until no other rewrite of `resolvedPath` runs, and holds it until
  // the result is dropped.
  Held lock(const std::string& resolvedPath);

 private:
  std::mutex mapMutex_;
  // Entries stay: one per document ever written, a bounded set in a site.
  std::map<std::string, std::unique_ptr<std::mutex>> documents_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_WRITE_LOCKS_H_
