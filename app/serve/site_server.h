#ifndef TAGWRIGHT_APP_SERVE_SITE_SERVER_H_
#define TAGWRIGHT_APP_SERVE_SITE_SERVER_H_

#include <ctime>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "distinct_draws.h"
#include "serve/checked_context.h"
#include "serve/confinement.h"
#include "serve/serve_command.h"
#include "tagwright/tagwright.h"

namespace httplib {
struct Request;
struct Response;
}  // namespace httplib

namespace tagwright {

// The HTTP page host of one site folder: its files as a static server gives
// them, the four operations as an API, and the editor page. Each request
// leases an instance of the component from a pool, so reads run in
// parallel; rewrites of one document take its write lock.
class BoundedServer;

class SiteServer {
 public:
  // REQUIRES: `resolvedRoot` is the real path of an existing folder, `token`
  // is not empty. One access line per request goes to `log`.
  SiteServer(const ServeOptions& options, std::string resolvedRoot, std::string token,
             std::ostream& log);
  ~SiteServer();

  // Creates the first instance from the administrator's settings; returns
  // why it cannot be created, or the empty text.
  std::string start();
  // Binds to `address`; port 0 takes a free one. Returns the port, or -1.
  int bind(const std::string& address, int port);
  // Serves until stop(); false when it could not serve at all.
  bool run();
  // Ends run(), also one that has not begun yet.
  void stop();

 private:
  using Handler = void (SiteServer::*)(const httplib::Request&, httplib::Response&);

  // An instance of the component with its own page context.
  struct Pooled {
    std::unique_ptr<Tagwright> instance;
    std::shared_ptr<CheckedContext> context;
  };

  // An instance of the component for one request, back in the pool when the
  // lease ends.
  class Lease {
   public:
    explicit Lease(SiteServer& server);
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    Tagwright* operator->() const { return pooled_.instance.get(); }
    // Checks a name of this request, which the instance then maps no more.
    Confinement::Verdict checked(const std::string& name) const {
      return server_.confinement_.name(name, *pooled_.context);
    }

   private:
    SiteServer& server_;
    Pooled pooled_;
  };

  void route();
  // The handler of a request without a body to the fixed paths, found
  // without httplib's patterns; null for any other request.
  Handler directHandler(const httplib::Request& request) const;
  bool authorized(const httplib::Request& request, bool write) const;
  void readOperation(const httplib::Request& request, httplib::Response& response);
  void metaOperation(const httplib::Request& request, httplib::Response& response);
  void listOperation(const httplib::Request& request, httplib::Response& response);
  void writeOperation(const httplib::Request& request, httplib::Response& response);
  void writeOnlyByPost(const httplib::Request& request, httplib::Response& response);
  void refuseBody(const httplib::Request& request, httplib::Response& response);
  void siteFile(const httplib::Request& request, httplib::Response& response);
  void editorFile(const httplib::Request& request, httplib::Response& response);
  void logRequest(const httplib::Request& request, const httplib::Response& response);
  // One access line; `method` and `path` as the client sent them.
  void logLine(const std::string& ip, int port, const std::string& method, const std::string& path,
               int status, std::size_t bytes, std::string_view milliseconds);
  // Writes out the access lines gathered so far.
  void flushLog();

  ServeOptions options_;
  Confinement confinement_;
  std::string token_;
  std::ostream& log_;
  std::mutex logMutex_;
  // "2026-01-02T03:04:05Z" of the second of the last line logged.
  static constexpr std::size_t kLoggedTimeBytes = 20;
  std::time_t loggedSecond_ = -1;
  char loggedTime_[kLoggedTimeBytes + 1] = {};
  // Lines not yet written: under load they leave in blocks, not one write
  // per request, and never later than the server's next tick.
  std::string pendingLog_;
  // Rewrites run at once here, each on its own instance: their temporary
  // names come from distinct draws.
  const std::shared_ptr<Platform> platform_ = withDistinctDraws(Tagwright::systemPlatform());
  std::mutex poolMutex_;
  std::vector<Pooled> idle_;
  std::unique_ptr<BoundedServer> http_;
};

}  // namespace tagwright

#endif  // TAGWRIGHT_APP_SERVE_SITE_SERVER_H_
