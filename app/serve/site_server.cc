#include "serve/site_server.h"

#include <httplib.h>
#include <sys/stat.h>

#include <charconv>
#include <chrono>
#include <ctime>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ostream>

#include "json_answer.h"
#include "serve/api_parameters.h"
#include "serve/bounded_server.h"
#include "serve/content_types.h"

namespace tagwright {
namespace {

#include "editor_files.inc"

constexpr const char* kApi = "/_tagwright/api/";
constexpr const char* kTimingHeader = "Server-Timing";
constexpr int kTemporaryNameDraws = 3;
constexpr std::size_t kLogBlockBytes = 4096;
constexpr std::string_view kTemporaryFileFailure =
    "ERROR: Cannot open output file to write new content.";

using Clock = std::chrono::steady_clock;

// The body is moved in: httplib's set_content would copy it.
void answerWith(httplib::Response& response, std::string&& body, std::string contentType) {
  response.body = std::move(body);
  response.set_header("Content-Type", std::move(contentType));
}

void answerJson(httplib::Response& response, std::string json) {
  json += '\n';
  answerWith(response, std::move(json), "application/json");
}

void refuse(httplib::Response& response, int status, const std::string& message) {
  response.status = status;
  nlohmann::ordered_json object;
  object["error"] = message;
  answerJson(response, object.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

void refuseMethod(httplib::Response& response, const char* allowed) {
  response.set_header("Allow", allowed);
  refuse(response, 405, std::string("method not allowed here; allowed: ") + allowed);
}

std::string reasonOf(int status) {
  switch (status) {
    case 400:
      return "bad request";
    case 404:
      return "not found";
    case 413:
      return "the request body is too large";
    case 414:
      return "the request line is too long";
    case 431:
      return "the request headers are too large";
    default:
      return "request refused (" + std::to_string(status) + ")";
  }
}

// The same time for every token of the same length as the expected one, so
// that the answer gives away no prefix of it.
bool sameToken(std::string_view given, std::string_view expected) {
  unsigned char difference = given.size() == expected.size() ? 0 : 1;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    unsigned char other = i < given.size() ? static_cast<unsigned char>(given[i]) : 0;
    difference |= static_cast<unsigned char>(other ^ static_cast<unsigned char>(expected[i]));
  }
  return difference == 0;
}

// A path as the log shows it: bytes outside printable ASCII as %XX, so a
// request cannot forge or break log lines.
void appendLoggedPath(std::string& out, const std::string& path) {
  for (char raw : path) {
    auto c = static_cast<unsigned char>(raw);
    if (c < 0x21 || c > 0x7e || c == '%') {
      static constexpr char kHex[] = "0123456789ABCDEF";
      out += '%';
      out += kHex[c >> 4];
      out += kHex[c & 15];
    } else {
      out += static_cast<char>(c);
    }
  }
}

std::optional<std::string> fileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  try {
    return std::string(std::istreambuf_iterator<char>(in), {});
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

SiteServer::SiteServer(const ServeOptions& options, std::string resolvedRoot, std::string token,
                       std::ostream& log)
    : options_(options),
      confinement_(std::move(resolvedRoot)),
      token_(std::move(token)),
      log_(log) {
  BoundedServer::Bounds bounds;
  bounds.request = std::chrono::seconds(options_.requestTimeoutSeconds);
  bounds.idle = std::chrono::seconds(options_.timeoutSeconds);
  bounds.workers = static_cast<std::size_t>(options_.threads);
  bounds.waiting = static_cast<std::size_t>(options_.threads);
  bounds.loops = options_.loops;
  http_ = std::make_unique<BoundedServer>(bounds);
  route();
}

SiteServer::~SiteServer() = default;

std::string SiteServer::start() {
  try {
    Lease first(*this);
  } catch (const std::exception& error) {
    return std::string("cannot start: ") + error.what();
  }
  return "";
}

int SiteServer::bind(const std::string& address, int port) {
  if (port == 0) return http_->bind_to_any_port(address);
  return http_->bind_to_port(address, port) ? port : -1;
}

bool SiteServer::run() { return http_->serve(); }

void SiteServer::stop() { http_->halt(); }

SiteServer::Lease::Lease(SiteServer& server) : server_(server) {
  {
    std::lock_guard<std::mutex> guard(server_.poolMutex_);
    if (!server_.idle_.empty()) {
      pooled_ = std::move(server_.idle_.back());
      server_.idle_.pop_back();
      return;
    }
  }
  pooled_.context = std::make_shared<CheckedContext>(server_.confinement_.context());
  pooled_.instance = std::make_unique<Tagwright>(*server_.platform_);
  pooled_.instance->OnStartPage(pooled_.context);
}

SiteServer::Lease::~Lease() {
  pooled_.context->forget();
  std::lock_guard<std::mutex> guard(server_.poolMutex_);
  server_.idle_.push_back(std::move(pooled_));
}

void SiteServer::route() {
  BoundedServer& http = *http_;
  http.set_payload_max_length(options_.maxBodyBytes);
  http.set_keep_alive_max_count(100000);

  auto timed = [this](Handler handler) {
    return [this, handler](const httplib::Request& request, httplib::Response& response) {
      Clock::time_point begin = Clock::now();
      (this->*handler)(request, response);
      std::chrono::duration<double, std::milli> spent = Clock::now() - begin;
      char timing[48] = "app;dur=";
      constexpr std::size_t kPrefix = sizeof "app;dur=" - 1;
      auto end = std::to_chars(timing + kPrefix, timing + sizeof timing, spent.count(),
                               std::chars_format::fixed, 3)
                     .ptr;
      response.set_header(kTimingHeader, std::string(timing, end));
    };
  };
  const std::string api = kApi;
  auto notAllowed = [api](const httplib::Request& request, httplib::Response& response) {
    if (request.path == api + "write") {
      refuseMethod(response, "POST");
    } else {
      refuseMethod(response, "GET, HEAD");
    }
  };
  http.set_pre_routing_handler(
      [this, timed](const httplib::Request& request, httplib::Response& response) {
        Handler handler = directHandler(request);
        if (handler == nullptr) return httplib::Server::HandlerResponse::Unhandled;
        timed(handler)(request, response);
        return httplib::Server::HandlerResponse::Handled;
      });
  // The patterns serve what the direct dispatch leaves: requests with a body.
  http.Get(api + "read", timed(&SiteServer::readOperation));
  http.Get(api + "meta", timed(&SiteServer::metaOperation));
  http.Get(api + "list", timed(&SiteServer::listOperation));
  http.Post(api + "write", timed(&SiteServer::writeOperation));
  http.Get(api + "write", notAllowed);
  http.Get("/_tagwright/.*", timed(&SiteServer::editorFile));
  http.Get(".*", timed(&SiteServer::siteFile));

  http.Post(".*", notAllowed);
  http.Put(".*", notAllowed);
  http.Patch(".*", notAllowed);
  http.Delete(".*", notAllowed);
  http.Options(".*", notAllowed);

  http.set_error_handler([](const httplib::Request&, httplib::Response& response) {
    if (response.body.empty()) {
      refuse(response, response.status, reasonOf(response.status));
    }
  });
  http.set_exception_handler(
      [](const httplib::Request&, httplib::Response& response, std::exception_ptr) {
        refuse(response, 500, "the request failed inside the host");
      });
  http.set_logger([this](const httplib::Request& request, const httplib::Response& response) {
    logRequest(request, response);
  });
  http.everyTick([this] { flushLog(); });
  // A connection turned away had no request read: "-" stands for its
  // method and path.
  http.whenTurnedAway([this](const std::string& ip, int port, std::size_t bodyBytes) {
    logLine(ip, port, "-", "-", 503, bodyBytes, "0");
  });
}

SiteServer::Handler SiteServer::directHandler(const httplib::Request& request) const {
  if (request.method != "GET" && request.method != "HEAD") return nullptr;
  // httplib reads no body of a GET or a HEAD; the connection ends after
  // this answer, so that the body is not taken for further requests.
  if (request.has_header("Transfer-Encoding") ||
      (request.has_header("Content-Length") && request.get_header_value("Content-Length") != "0")) {
    return &SiteServer::refuseBody;
  }
  constexpr std::string_view kEditor = "/_tagwright/";
  std::string_view path = request.path;
  if (!path.starts_with(kEditor)) return &SiteServer::siteFile;
  if (!path.starts_with(kApi)) return &SiteServer::editorFile;
  std::string_view operation = path.substr(std::string_view(kApi).size());
  if (operation == "read") return &SiteServer::readOperation;
  if (operation == "meta") return &SiteServer::metaOperation;
  if (operation == "list") return &SiteServer::listOperation;
  if (operation == "write") return &SiteServer::writeOnlyByPost;
  return &SiteServer::editorFile;
}

void SiteServer::writeOnlyByPost(const httplib::Request&, httplib::Response& response) {
  refuseMethod(response, "POST");
}

void SiteServer::refuseBody(const httplib::Request&, httplib::Response& response) {
  refuse(response, 400, "a GET or HEAD request may not have a body");
}

bool SiteServer::authorized(const httplib::Request& request, bool write) const {
  if (!write && options_.publicRead) return true;
  const std::string& header = request.get_header_value("Authorization");
  constexpr std::string_view kBearer = "Bearer ";
  if (!header.starts_with(kBearer)) return false;
  return sameToken(std::string_view(header).substr(kBearer.size()), token_);
}

namespace {

bool refusedUnauthorized(bool authorized, httplib::Response& response) {
  if (authorized) return false;
  response.set_header("WWW-Authenticate", "Bearer");
  refuse(response, 401, "a valid 'Authorization: Bearer' token is required");
  return true;
}

bool refusedName(const Confinement::Verdict& verdict, httplib::Response& response) {
  if (verdict.passed()) return false;
  refuse(response, verdict.status, verdict.refusal);
  return true;
}

}  // namespace

void SiteServer::readOperation(const httplib::Request& request, httplib::Response& response) {
  if (refusedUnauthorized(authorized(request, false), response)) return;
  std::string refusal;
  auto parameters = ApiParameters::from(
      request.params,
      {"doc", "element-name", "attribute-name", "attribute-value", "start-instance",
       "count-instances", "content-type", "span-function", "string-function", "separator"},
      {"doc"}, refusal);
  if (!parameters) return refuse(response, 400, refusal);
  const std::string doc = parameters->text("doc", "");
  Lease instance(*this);
  if (refusedName(instance.checked(doc), response)) return;
  int matches = 0;
  std::string result = instance->readXPointer(
      doc, parameters->text("element-name", "#element"), parameters->text("attribute-name", "*"),
      parameters->text("attribute-value", "*"), parameters->number("start-instance", 1),
      parameters->number("count-instances", 0), parameters->text("content-type", "innerMarkup"),
      parameters->text("span-function", ""), parameters->text("string-function", ""),
      parameters->text("separator", ""), &matches);
  answerJson(response, textAnswerJson(result, matches));
}

void SiteServer::metaOperation(const httplib::Request& request, httplib::Response& response) {
  if (refusedUnauthorized(authorized(request, false), response)) return;
  std::string refusal;
  auto parameters = ApiParameters::from(
      request.params,
      {"doc", "meta-name", "start-instance", "count-instances", "equals", "separator"}, {"doc"},
      refusal);
  if (!parameters) return refuse(response, 400, refusal);
  const std::string doc = parameters->text("doc", "");
  Lease instance(*this);
  if (refusedName(instance.checked(doc), response)) return;
  int matches = 0;
  std::string result = instance->readMetaContent(
      doc, parameters->text("meta-name", "*"), parameters->number("start-instance", 1),
      parameters->number("count-instances", 0), parameters->text("equals", "$eq$"),
      parameters->text("separator", ""), &matches);
  answerJson(response, textAnswerJson(result, matches));
}

void SiteServer::listOperation(const httplib::Request& request, httplib::Response& response) {
  if (refusedUnauthorized(authorized(request, false), response)) return;
  std::string refusal;
  auto parameters =
      ApiParameters::from(request.params, {"folder", "pattern", "separator"}, {"folder"}, refusal);
  if (!parameters) return refuse(response, 400, refusal);
  const std::string folder = parameters->text("folder", "");
  const std::string pattern = parameters->text("pattern", "*.*");
  if (refusedName(Confinement::pattern(pattern), response)) return;
  Lease instance(*this);
  if (refusedName(instance.checked(folder), response)) return;
  int matches = 0;
  std::string result =
      instance->fileListing(folder, pattern, parameters->text("separator", ""), &matches);
  answerJson(response, textAnswerJson(result, matches));
}

void SiteServer::writeOperation(const httplib::Request& request, httplib::Response& response) {
  if (refusedUnauthorized(authorized(request, true), response)) return;
  std::string refusal;
  auto parameters = ApiParameters::fromJson(
      request.body,
      {"doc", "new-content", "element-name", "attribute-name", "attribute-value", "start-instance",
       "count-instances", "content-type", "span-function", "separator"},
      {"doc", "new-content"}, refusal);
  if (!parameters) return refuse(response, 400, refusal);
  const std::string doc = parameters->text("doc", "");
  Lease instance(*this);
  if (refusedName(instance.checked(doc), response)) return;
  std::string errorResult;
  int count = -1;
  {
    // Serialises this rewrite with every other of the document, in this
    // process or another: the component takes no lock of its own.
    std::unique_ptr<FileLock> lock = instance->lockForRewrite(doc);
    // Another process rewriting in the same folder may draw the same
    // temporary name in the same second (this one's own draws never meet):
    // the rewrite that finds its name taken has changed nothing yet, and a
    // new draw is all but sure to be free. Where the folder cannot take a new
    // file at all, every attempt fails alike.
    for (int attempt = 0; attempt < kTemporaryNameDraws; ++attempt) {
      errorResult.clear();
      count = instance->writeXPointer(
          parameters->text("new-content", ""), doc, parameters->text("element-name", "#element"),
          parameters->text("attribute-name", "*"), parameters->text("attribute-value", "*"),
          parameters->number("start-instance", 1), parameters->number("count-instances", 1),
          parameters->text("content-type", "innermarkup"), parameters->text("span-function", ""),
          parameters->text("separator", ""), &errorResult);
      if (count != -1 || errorResult != kTemporaryFileFailure) break;
    }
  }
  answerJson(response, writeAnswerJson(count, errorResult));
}

void SiteServer::siteFile(const httplib::Request& request, httplib::Response& response) {
  if (refusedUnauthorized(authorized(request, false), response)) return;
  Confinement::Verdict verdict = confinement_.urlPath(request.path);
  if (refusedName(verdict, response)) return;
  std::string file = verdict.mapped;
  struct stat status {};
  if (::stat(file.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
    if (!request.path.ends_with("/")) {
      std::string target = request.target.substr(0, request.target.find('?'));
      response.set_redirect(target + "/", 301);
      return;
    }
    for (const char* index : {"index.htm", "index.html"}) {
      Confinement::Verdict page = confinement_.urlPath(request.path + index);
      if (page.passed() && ::stat(page.mapped.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
        file = page.mapped;
        break;
      }
      if (!page.passed()) return void(refusedName(page, response));
    }
  }
  std::optional<std::string> bytes;
  if (::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode)) bytes = fileBytes(file);
  if (!bytes) return refuse(response, 404, "not found");
  answerWith(response, std::move(*bytes), std::string(contentTypeOf(file)));
}

void SiteServer::editorFile(const httplib::Request& request, httplib::Response& response) {
  std::string_view name =
      std::string_view(request.path).substr(std::string_view("/_tagwright/").size());
  if (name.empty()) name = "index.html";
  for (const auto& [known, bytes] : kEmbeddedFiles) {
    if (name == known) {
      response.set_content(std::string(bytes), std::string(contentTypeOf(known)));
      return;
    }
  }
  refuse(response, 404, "not found");
}

void SiteServer::logRequest(const httplib::Request& request, const httplib::Response& response) {
  std::string_view milliseconds = "0";
  const std::string& timing = response.get_header_value(kTimingHeader);
  if (std::size_t at = timing.find("dur="); at != std::string::npos) {
    milliseconds = std::string_view(timing).substr(at + 4);
  }
  logLine(request.remote_addr, request.remote_port, request.method, request.path, response.status,
          response.body.size(), milliseconds);
}

void SiteServer::logLine(const std::string& ip, int port, const std::string& method,
                         const std::string& path, int status, std::size_t bytes,
                         std::string_view milliseconds) {
  std::string line;
  line.reserve(64 + path.size() + ip.size());
  line.append(kLoggedTimeBytes, ' ');
  line += ' ';
  line += ip;
  line += ':';
  line += std::to_string(port);
  line += ' ';
  appendLoggedPath(line, method);
  line += ' ';
  appendLoggedPath(line, path);
  line += ' ';
  line += std::to_string(status);
  line += ' ';
  line += std::to_string(bytes);
  line += ' ';
  line += milliseconds;
  line += "ms\n";
  std::time_t now = std::time(nullptr);
  std::lock_guard<std::mutex> guard(logMutex_);
  // The time is formatted once a second, not for every line.
  if (now != loggedSecond_) {
    std::tm utc{};
    ::gmtime_r(&now, &utc);
    std::strftime(loggedTime_, sizeof loggedTime_, "%Y-%m-%dT%H:%M:%SZ", &utc);
    loggedSecond_ = now;
  }
  line.replace(0, kLoggedTimeBytes, loggedTime_, kLoggedTimeBytes);
  pendingLog_ += line;
  if (pendingLog_.size() >= kLogBlockBytes) {
    log_ << pendingLog_ << std::flush;
    pendingLog_.clear();
  }
}

void SiteServer::flushLog() {
  std::lock_guard<std::mutex> guard(logMutex_);
  if (pendingLog_.empty()) return;
  log_ << pendingLog_ << std::flush;
  pendingLog_.clear();
}

}  // namespace tagwright
