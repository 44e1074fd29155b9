// `tagwright serve` through real HTTP on loopback: every operation, every
// refusal, escape attempts out of the site root, concurrent rewrites of one
// document, the idle timeout and the access log.
#include "serve/site_server.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "support/temp_folder.h"

namespace tagwright {
namespace {

constexpr const char* kToken = "t0ken-Secret";
constexpr const char* kPage =
    "<html><head><meta name=\"author\" content=\"Ann\"></head>\r\n"
    "<body><p class=\"news\">One</p><p class=\"news\">Two</p></body></html>\r\n";

struct Answer {
  int status = 0;
  std::string head, body;
  std::vector<int> statuses;  // of every answer, when requests went together
};

// A site folder beside a folder outside it, links from one to the other,
// and the server on a free loopback port until the end of the scope.
class ServedSite {
 public:
  explicit ServedSite(bool publicRead = false, int idleSeconds = 5, int requestSeconds = 5,
                      int threads = 6, std::size_t loops = 0) {
    folder_.write("site/page.htm", kPage);
    folder_.write("site/images/a.png", "A");
    folder_.write("site/images/b.png", "B");
    folder_.write("site/sub/index.html", "<p>index</p>");
    folder_.write("out/secret.htm", "<p>TOPSECRET</p>\r\n");
    std::filesystem::create_symlink("../out/secret.htm", folder_.host("site/link.htm"));
    std::filesystem::create_symlink("../out", folder_.host("site/linkdir"));
    char root[PATH_MAX];
    EXPECT_NE(::realpath(folder_.host("site").c_str(), root), nullptr);
    ServeOptions options;
    options.publicRead = publicRead;
    options.threads = threads;
    options.maxBodyBytes = 4096;
    options.timeoutSeconds = idleSeconds;
    options.requestTimeoutSeconds = requestSeconds;
    options.loops = loops;
    server_ = std::make_unique<SiteServer>(options, root, kToken, log_);
    EXPECT_EQ(server_->start(), "");
    port_ = server_->bind("127.0.0.1", 0);
    EXPECT_GT(port_, 0);
    thread_ = std::thread([this] { server_->run(); });
  }
  ~ServedSite() { stop(); }
  void stop() {
    if (!thread_.joinable()) return;
    server_->stop();
    thread_.join();
  }

  // Sends `request` as it is on a new connection, the bytes from `pauseAt`
  // a tenth of a second later, and reads to its end.
  Answer send(const std::string& request, std::size_t pauseAt = std::string::npos) const {
    int fd = connected();
    const std::size_t first = std::min(pauseAt, request.size());
    ::send(fd, request.data(), first, MSG_NOSIGNAL);
    if (first < request.size()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      ::send(fd, request.data() + first, request.size() - first, MSG_NOSIGNAL);
    }
    std::string bytes;
    char buffer[4096];
    for (ssize_t n; (n = ::recv(fd, buffer, sizeof buffer, 0)) > 0;) {
      bytes.append(buffer, static_cast<std::size_t>(n));
    }
    ::close(fd);
    Answer answer;
    std::size_t split = bytes.find("\r\n\r\n");
    answer.head = bytes.substr(0, split);
    answer.body = split == std::string::npos ? "" : bytes.substr(split + 4);
    if (bytes.size() > 12) answer.status = std::atoi(bytes.c_str() + 9);
    for (std::size_t at = 0; (at = bytes.find("HTTP/1.1 ", at)) != std::string::npos; at += 9) {
      answer.statuses.push_back(std::atoi(bytes.c_str() + at + 9));
    }
    return answer;
  }
  Answer call(const std::string& method, const std::string& target, const std::string& body = "",
              const std::string& token = kToken) const {
    std::string request = method + " " + target + " HTTP/1.1\r\nHost: x\r\nConnection: close\r\n";
    if (!token.empty()) request += "Authorization: Bearer " + token + "\r\n";
    if (!body.empty()) request += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    return send(request + "\r\n" + body);
  }
  int connected() const {
    int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port_));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    return fd;
  }
  const TempFolder& folder() const { return folder_; }
  // The access log, once the server has stopped and written all of it.
  std::string log() {
    stop();
    return log_.str();
  }

 private:
  TempFolder folder_;
  std::ostringstream log_;
  std::unique_ptr<SiteServer> server_;
  int port_ = 0;
  std::thread thread_;
};

TEST(SiteServer, OperationsAndRefusals) {
  ServedSite site;
  const std::string api = "/_tagwright/api/";
  const std::string write = api + "write";
  const struct {
    std::string method, target, body;
    int status;
    std::string want;  // the whole body, or for a refusal a part of its error text
    std::string token = kToken;
  } cases[] = {
      {"GET",
       api + "read?doc=/page.htm&element-name=p&attribute-name=class&attribute-value=news"
             "&start-instance=2&content-type=innerText",
       "", 200, R"({"result":"Two","matchesFound":1})"},
      {"GET", api + "read?doc=page.htm&element-name=P&separator=%7C", "", 200,
       R"({"result":"One|Two","matchesFound":2})"},
      {"GET", api + "meta?doc=/page.htm&meta-name=author&equals=%3D", "", 200,
       R"({"result":"author=Ann","matchesFound":1})"},
      {"GET", api + "list?folder=/images&pattern=*.png&separator=,", "", 200,
       R"({"result":"a.png,b.png","matchesFound":2})"},
      {"GET", api + "read?doc=/page.htm&start-instance=0", "", 200,
       R"({"result":"ERROR: The start element instance number must be greater than zero.","matchesFound":-1})"},
      {"POST", write,
       R"({"doc":"/page.htm","element-name":"p","start-instance":2,"new-content":"2"})", 200,
       R"({"result":1,"errorResult":"Two"})"},
      {"HEAD", "/page.htm", "", 200, ""},
      {"GET", "/sub/", "", 200, "<p>index</p>"},
      {"GET", "/sub", "", 301, ""},
      {"GET", "/nothing.htm", "", 404, "not found"},
      {"GET", "/_tagwright/api/nothing", "", 404, "not found"},
      {"GET", api + "read?doc=/page.htm", "", 401, "token", ""},
      {"GET", "/page.htm", "", 401, "token", "wrong"},
      {"POST", write, R"({"doc":"/page.htm","new-content":"x"})", 401, "token",
       kToken + std::string("x")},
      {"GET", api + "read?doc=/page.htm&start-instance=abc", "", 400, "whole number"},
      {"GET", api + "read?doc=/page.htm&count-instances=32768", "", 400, "whole number"},
      {"GET", api + "read?doc=/page.htm&new-content=x", "", 400, "unknown parameter"},
      {"GET", api + "read?doc=/a&doc=/b", "", 400, "given twice"},
      {"GET", api + "meta?meta-name=x", "", 400, "\\\"doc\\\" is required"},
      {"POST", write, R"({"doc":"/page.htm"})", 400, "\\\"new-content\\\" is required"},
      {"POST", write, R"(["/page.htm"])", 400, "JSON object"},
      {"POST", write, R"({"doc":"/page.htm","new-content":1})", 400, "must be a text"},
      {"POST", write, R"({"doc":"/page.htm","new-content":")" + std::string(5000, 'x') + "\"}", 413,
       "too large"},
      {"GET", write, "", 405, "allowed: POST"},
      {"POST", api + "read?doc=/page.htm", "{}", 405, "allowed: GET"},
      {"DELETE", "/page.htm", "", 405, "allowed: GET"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.method + " " + c.target);
    Answer answer = site.call(c.method, c.target, c.body, c.token);
    EXPECT_EQ(answer.status, c.status) << answer.body;
    if (c.status == 200) {
      EXPECT_EQ(answer.body, c.want + (c.target.starts_with(api) ? "\n" : ""));
    } else {
      EXPECT_NE(answer.body.find(c.want), std::string::npos) << answer.body;
    }
  }
  std::string page = site.folder().read("site/page.htm").value_or("");
  EXPECT_NE(page.find("<p class=\"news\">2</p>"), std::string::npos) << page;
  EXPECT_EQ(site.folder().read("site/page.bak"), kPage);
  std::string log = site.log();
  EXPECT_NE(log.find(" 127.0.0.1:"), std::string::npos) << log;
  EXPECT_NE(log.find(" POST /_tagwright/api/write 200 "), std::string::npos) << log;
  EXPECT_NE(log.find(" DELETE /page.htm 405 "), std::string::npos) << log;
  EXPECT_EQ(log.find(kToken), std::string::npos) << log;
}

// A stop that comes before the server runs still ends it.
TEST(SiteServer, StopBeforeRunEndsIt) {
  TempFolder folder;
  folder.write("site/page.htm", kPage);
  char root[PATH_MAX];
  ASSERT_NE(::realpath(folder.host("site").c_str(), root), nullptr);
  std::ostringstream log;
  SiteServer server(ServeOptions{}, root, kToken, log);
  ASSERT_GT(server.bind("127.0.0.1", 0), 0);
  server.stop();
  auto ran = std::async(std::launch::async, [&server] { return server.run(); });
  if (ran.wait_for(std::chrono::seconds(5)) != std::future_status::ready) {
    server.stop();
    FAIL() << "run() went on after stop()";
  }
  EXPECT_TRUE(ran.get());
}

// Each target tries to reach out/secret.htm (or a system file) from the
// site; none may answer with a byte of it, and none may change it.
TEST(SiteServer, EveryEscapeIsRefused) {
  ServedSite site;
  const char* writeDocs[] = {"/../out/secret.htm",    "/link.htm",
                             "/linkdir/secret.htm",   "C:\\out\\secret.htm",
                             "\\..\\out\\secret.htm", "/sub/../../out/secret.htm"};
  // Each query by the endpoint that takes it, and static targets by "".
  const std::pair<std::string, std::vector<std::string>> queries[] = {
      {"/_tagwright/api/read?element-name=p&doc=",
       {"/../out/secret.htm", "../out/secret.htm", "/sub/../../out/secret.htm",
        "/%2e%2e/out/secret.htm", "%2e%2e%2fout%2fsecret.htm", "/..%5cout%5csecret.htm",
        "\\..\\out\\secret.htm", "C:\\etc\\passwd", "c:/etc/passwd", "/etc/passwd:", "/link.htm",
        "/linkdir/secret.htm", "/linkdir/../linkdir/secret.htm",
        "/page.htm%00/../../out/secret.htm", "//../out/secret.htm"}},
      {"/_tagwright/api/meta?doc=",
       {"/link.htm", "/../out/secret.htm", "\\\\host\\share\\secret.htm"}},
      {"/_tagwright/api/list?folder=",
       {"/..", "/linkdir", "/linkdir/", "C:\\", "/images&pattern=../../out/*",
        "/&pattern=linkdir/*", "/&pattern=..%5c*", "/&pattern=*%00"}},
      {"",
       {"/../out/secret.htm", "/%2e%2e/out/secret.htm", "/%2E%2E%2Fout%2Fsecret.htm",
        "/..%5cout%5csecret.htm", "/link.htm", "/linkdir/secret.htm", "/linkdir/",
        "/sub/..%2f..%2fout/secret.htm", "/C:/etc/passwd", "/page.htm%00.png"}},
  };
  std::vector<std::pair<std::string, std::string>> attempts;  // target and body
  for (const auto& [endpoint, paths] : queries) {
    for (const std::string& path : paths) attempts.emplace_back(endpoint + path, "");
  }
  for (const char* doc : writeDocs) {
    nlohmann::json body = {{"doc", doc}, {"element-name", "p"}, {"new-content", "owned"}};
    attempts.emplace_back("/_tagwright/api/write", body.dump());
  }
  for (const auto& [target, body] : attempts) {
    SCOPED_TRACE(target + " " + body);
    Answer answer = site.call(body.empty() ? "GET" : "POST", target, body);
    EXPECT_TRUE(answer.status == 400 || answer.status == 403) << answer.status << answer.body;
    EXPECT_EQ(answer.body.find("TOPSECRET"), std::string::npos);
    EXPECT_EQ(answer.body.find("root:"), std::string::npos);
  }
  EXPECT_EQ(site.folder().read("out/secret.htm"), "<p>TOPSECRET</p>\r\n");
  EXPECT_EQ(site.folder().names("out"), std::set<std::string>{"secret.htm"});
}

// Writers replace one element of one document while a reader watches the
// document and its backup: each is always whole, and every write's former
// text is the text of one write before it, so none was lost or torn.
TEST(SiteServer, ConcurrentWritesToOneDocumentTakeTurns) {
  ServedSite site;
  const auto whole = [](const std::string& page) {
    return page.starts_with("<html><head>") && page.ends_with("</p></body></html>\r\n");
  };
  std::atomic<bool> writing = true;
  std::atomic<int> torn = 0;
  std::thread reader([&] {
    while (writing) {
      for (const char* name : {"site/page.htm", "site/page.bak"}) {
        std::optional<std::string> page = site.folder().read(name);
        if (page && !whole(*page)) ++torn;
      }
    }
  });
  std::mutex lock;
  std::multiset<std::string> former, written = {"One"};
  std::vector<std::thread> writers;
  for (int w = 0; w < 4; ++w) {
    writers.emplace_back([&, w] {
      for (int i = 0; i < 6; ++i) {
        const std::string text = "w" + std::to_string(w) + "-" + std::to_string(i);
        nlohmann::json body = {{"doc", "/page.htm"}, {"element-name", "p"}, {"new-content", text}};
        Answer answer = site.call("POST", "/_tagwright/api/write", body.dump());
        std::lock_guard held(lock);
        former.insert(nlohmann::json::parse(answer.body)["errorResult"].get<std::string>());
        written.insert(text);
      }
    });
  }
  for (std::thread& writer : writers) writer.join();
  writing = false;
  reader.join();
  EXPECT_EQ(torn, 0);
  std::string page = *site.folder().read("site/page.htm");
  std::size_t open = page.find("news\">") + 6;
  written.erase(written.find(page.substr(open, page.find('<', open) - open)));
  EXPECT_EQ(former, written);
  EXPECT_TRUE(whole(*site.folder().read("site/page.bak")));
}

// A client that stays silent is dropped after the idle bound; one that
// sends a byte now and then, each long before the idle bound, is dropped
// when the whole request has not arrived within the request bound.
TEST(SiteServer, DropsSlowAndIdleClients) {
  using Clock = std::chrono::steady_clock;
  const struct {
    const char* name;
    int idleSeconds, requestSeconds;
    std::string start;
    bool drip;
  } cases[] = {
      {"silent", 1, 30, "", false},
      {"silent after the request line", 30, 1, "GET /page.htm HTTP/1.1\r\n", false},
      {"dripping a header", 30, 1, "GET /page.htm HTTP/1.1\r\nX-Drip: ", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    ServedSite site(false, c.idleSeconds, c.requestSeconds);
    Clock::time_point begin = Clock::now();
    int fd = site.connected();
    ::send(fd, c.start.data(), c.start.size(), MSG_NOSIGNAL);
    bool closed = false;
    while (!closed && Clock::now() - begin < std::chrono::seconds(10)) {
      pollfd watched{fd, POLLIN, 0};
      if (::poll(&watched, 1, 150) > 0) {
        char buffer[512];
        closed = ::recv(fd, buffer, sizeof buffer, 0) <= 0;
      } else if (c.drip) {
        ::send(fd, "a", 1, MSG_NOSIGNAL);
      }
    }
    std::chrono::duration<double> spent = Clock::now() - begin;
    EXPECT_TRUE(closed);
    EXPECT_GT(spent.count(), 0.8);
    EXPECT_LT(spent.count(), 3.0);
    ::close(fd);
  }
}

// With as many connections open as its one worker and its waiting line
// hold, the server turns the next client away at once instead of queuing it.
TEST(SiteServer, TurnsAwayClientsBeyondTheWaitingLine) {
  ServedSite site(/*publicRead=*/true, 5, 5, /*threads=*/1);
  int kept = site.connected();
  const std::string request = "GET /page.htm HTTP/1.1\r\nHost: x\r\n\r\n";
  ::send(kept, request.data(), request.size(), MSG_NOSIGNAL);
  char buffer[4096];
  ASSERT_GT(::recv(kept, buffer, sizeof buffer, 0), 0);  // the worker now waits on it
  int waiting = site.connected();
  Answer turnedAway = site.call("GET", "/page.htm");
  EXPECT_EQ(turnedAway.status, 503) << turnedAway.head;
  EXPECT_NE(turnedAway.body.find("too busy"), std::string::npos);
  ::close(kept);
  ::close(waiting);
  const std::string log = site.log();
  const std::size_t at = log.find(" - - 503 35 0ms\n");
  ASSERT_NE(at, std::string::npos) << log;
  const std::size_t lineStart = log.rfind('\n', at) + 1;  // npos + 1 is 0
  EXPECT_NE(log.substr(lineStart, at - lineStart).find("Z 127.0.0.1:"), std::string::npos) << log;
}

// Requests sent together on one kept-alive connection are answered in turn;
// reading without a token leaves writes guarded.
TEST(SiteServer, PublicReadAnswersInTurnAndGuardsWrites) {
  ServedSite site(/*publicRead=*/true);
  EXPECT_EQ(
      site.call("POST", "/_tagwright/api/write", R"({"doc":"/page.htm","new-content":"x"})", "")
          .status,
      401);
  EXPECT_EQ(site.folder().read("site/page.htm"), kPage);
  const std::string read =
      "GET /_tagwright/api/read?doc=/page.htm&element-name=p HTTP/1.1\r\nHost: x\r\n\r\n";
  Answer answer =
      site.send(read + read + "GET /page.htm HTTP/1.1\r\nHost: x\r\nConnection: close\r\n\r\n");
  EXPECT_EQ(answer.statuses, (std::vector<int>{200, 200, 200})) << answer.body;
  EXPECT_TRUE(answer.body.ends_with(kPage)) << answer.body;
}

// httplib reads no body of a GET: a GET that announces one is refused and
// its connection ends, so that the body is never taken for more requests,
// whether the head came at once (an event loop serves it) or in pieces (a
// worker waits for the rest of it).
TEST(SiteServer, GetWithBodyIsRefusedAndEndsTheConnection) {
  ServedSite site(/*publicRead=*/true);
  const std::string chunked =
      "GET /page.htm HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n"
      "5\r\nhello\r\n0\r\n\r\n";
  const std::string get = "GET /page.htm HTTP/1.1\r\nHost: x\r\n";
  const struct {
    const char* name;
    std::string request;
    std::size_t pauseAt;  // the bytes sent before a pause
    std::vector<int> statuses;
  } cases[] = {
      {"chunked", chunked, std::string::npos, {400}},
      {"chunked, head in pieces", chunked, 20, {400}},
      {"with a length", get + "Content-Length: 5\r\n\r\nGET /", std::string::npos, {400}},
      {"length 0, then another",
       get + "Content-Length: 0\r\n\r\n" + get + "Connection: close\r\n\r\n",
       std::string::npos,
       {200, 200}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Answer answer = site.send(c.request, c.pauseAt);
    EXPECT_EQ(answer.statuses, c.statuses) << answer.body;
  }
}

// Clients that ask for a large answer and do not read it hold up no one:
// what the socket does not take leaves with a worker, not with the loop
// that serves the other connections.
TEST(SiteServer, UnreadLargeAnswersHoldUpNoOneElse) {
  constexpr std::size_t kLoops = 2;
  ServedSite site(/*publicRead=*/true, /*idleSeconds=*/30, 5, 6, kLoops);
  // Larger than a loopback socket takes from a client that does not read.
  std::string big;
  for (int i = 0; big.size() < (8u << 20); ++i) big += std::to_string(i) + ' ';
  std::ofstream(site.folder().host("site/big.htm"), std::ios::binary) << big;
  // The loops take connections in turn: each gets a stalled one.
  std::vector<int> stalled;
  for (std::size_t i = 0; i < kLoops; ++i) {
    stalled.push_back(site.connected());
    const std::string request = "GET /big.htm HTTP/1.1\r\nHost: x\r\n\r\n";
    ::send(stalled.back(), request.data(), request.size(), MSG_NOSIGNAL);
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  auto answer = std::async(std::launch::async, [&] { return site.call("GET", "/page.htm"); });
  // A loop held by a stalled client would answer only after the 30 s bound.
  ASSERT_EQ(answer.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  EXPECT_EQ(answer.get().body, kPage);
  // A client that reads gets a large answer whole, however much the loop
  // sent before a worker took it on.
  Answer whole = site.call("GET", "/big.htm");
  EXPECT_TRUE(whole.body == big) << whole.head << " " << whole.body.size() << " " << big.size();
  for (int fd : stalled) ::close(fd);
}

}  // namespace
}  // namespace tagwright
