// SPDX-License-Identifier: Apache-2.0
#include "BizShared/HttpClient.h"

#include <curl/curl.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "BizShared/details/Canceller.h"
#include "BizShared/details/Process.h"
#include "base/system/System.h"

namespace BizShared {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr size_t kMaxIdleLanes = 8;
constexpr size_t kMaxBody = size_t{1} << 30;
constexpr milliseconds kConnectTimeout{10000};
constexpr milliseconds kLongestWait{1000};

struct ListDeleter {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, ListDeleter>;

// A token goes into a header line; one that would break out of it is not sent.
bool IsHeaderSafe(const std::string& text) {
  return std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= 0x20 && c != 0x7f; });
}

bool EqualsIgnoringCase(std::string_view left, std::string_view right) {
  return left.size() == right.size() && curl_strnequal(left.data(), right.data(), left.size());
}

// Without the white space around it.
std::string_view Trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  return text.substr(0, text.find_last_not_of(" \t\r\n") + 1);
}

// Whether a Content-Type, parameters and all, names JSON: application/json, or a type that is made of it.
bool IsJsonType(std::string_view type) {
  static constexpr std::string_view kSuffix = "+json";
  type = Trimmed(type.substr(0, type.find(';')));
  return EqualsIgnoringCase(type, "application/json") || EqualsIgnoringCase(type, "text/json") ||
         (type.size() > kSuffix.size() && EqualsIgnoringCase(type.substr(type.size() - kSuffix.size()), kSuffix));
}

}  // namespace

// One easy handle in a multi handle of its own: the multi handle keeps the connections between two requests and can be
// woken from another thread.
class HttpClient::Lane {
 public:
  Lane() : m_multi(curl_multi_init()), m_easy(curl_easy_init()) {}
  ~Lane() {
    curl_easy_cleanup(m_easy);
    curl_multi_cleanup(m_multi);
  }
  Lane(const Lane&) = delete;
  Lane& operator=(const Lane&) = delete;

  HttpReply Perform(const HttpRequest& request);
  // After a failure there is no connection worth keeping; and after want of memory curl's handles are not to be
  // trusted.
  bool IsWorthKeeping() const { return m_hasSucceeded; }

 private:
  class Work;

  void SetUp();
  template <class Value>
  void Set(CURLoption option, Value value);
  void AddHeader(const std::string& line);
  void SetMethod();
  CURLcode Drive();
  int SystemError() const;
  bool HandOut();

  static size_t OnBody(char* data, size_t size, size_t count, void* self);
  static void KeepValue(std::string_view line, std::string_view name, std::string& value);
  static size_t OnHeader(char* data, size_t size, size_t count, void* self);
  static int OnSending(void* self, char*, char*, int, int);

  CURLM* m_multi;
  CURL* m_easy;
  // Of the running exchange.
  const HttpRequest* m_request = nullptr;
  HttpReply m_reply;
  std::string m_piece;  // arrived and not handed out yet
  HeaderList m_headers;
  Clock::time_point m_lastByte;
  CURLcode m_setUp = CURLE_OK;
  int m_timesSent = 0;
  bool m_headComplete = false;
  bool m_isTooLarge = false;
  bool m_hasBegun = false;  // to hand out
  bool m_hasSucceeded = false;
};

// The lane's handles while they are at work; a receiver may throw.
class HttpClient::Lane::Work : public details::IWakeable {
 public:
  explicit Work(Lane& lane) : m_lane(lane) {
    if (Canceller()) Canceller()->Attach(*this);
    m_isAdded = curl_multi_add_handle(m_lane.m_multi, m_lane.m_easy) == CURLM_OK;
  }
  ~Work() {
    if (m_isAdded) curl_multi_remove_handle(m_lane.m_multi, m_lane.m_easy);
    if (Canceller()) Canceller()->Detach(*this);
  }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  void WakeUp() override { curl_multi_wakeup(m_lane.m_multi); }
  CURLcode Result() { return m_isAdded ? m_lane.Drive() : CURLE_OUT_OF_MEMORY; }

 private:
  details::CCanceller* Canceller() const { return m_lane.m_request->canceller; }

  Lane& m_lane;
  bool m_isAdded = false;
};

HttpReply HttpClient::Lane::Perform(const HttpRequest& request) {
  m_request = &request;
  m_reply = {};
  m_piece.clear();
  m_timesSent = 0;
  m_headComplete = false;
  m_isTooLarge = false;
  m_hasBegun = false;
  m_setUp = m_multi && m_easy ? CURLE_OK : CURLE_OUT_OF_MEMORY;
  if (m_setUp == CURLE_OK) SetUp();
  m_reply.curlCode = m_setUp == CURLE_OK ? Work(*this).Result() : m_setUp;
  m_hasSucceeded = m_reply.curlCode == CURLE_OK;
  // curl would send an edit again when a kept connection dies before the first byte of the answer; the server may have
  // carried it out by then, so it ends here as what it is: an empty reply.
  if (m_timesSent > 1 && m_reply.curlCode == CURLE_ABORTED_BY_CALLBACK) m_reply.curlCode = CURLE_GOT_NOTHING;
  if (m_isTooLarge) m_reply.curlCode = CURLE_FILESIZE_EXCEEDED;
  // curl takes a reply whose head is cut off for one without a body.
  if (m_reply.curlCode == CURLE_OK && !m_headComplete) m_reply.curlCode = CURLE_PARTIAL_FILE;
  if (m_easy) {
    const char* type = nullptr;
    curl_easy_getinfo(m_easy, CURLINFO_CONTENT_TYPE, &type);
    m_reply.isOfOtherType = type && !IsJsonType(type);
    m_reply.systemError = SystemError();
    curl_easy_reset(m_easy);
  }
  m_headers.reset();
  m_request = nullptr;
  return std::move(m_reply);
}

int HttpClient::Lane::SystemError() const {
  long number = 0;
  if (m_reply.curlCode == CURLE_COULDNT_CONNECT) curl_easy_getinfo(m_easy, CURLINFO_OS_ERRNO, &number);
  return base::ErrnoOfSocketError(static_cast<int>(number));
}

// Nothing may be left out for want of memory: not the target, not the session, not the certificates.
template <class Value>
void HttpClient::Lane::Set(CURLoption option, Value value) {
  if (m_setUp == CURLE_OK) m_setUp = curl_easy_setopt(m_easy, option, value);
}

void HttpClient::Lane::AddHeader(const std::string& line) {
  curl_slist* const longer = curl_slist_append(m_headers.get(), line.c_str());
  if (!longer) {
    m_setUp = CURLE_OUT_OF_MEMORY;
    return;
  }
  // The longer list has taken the old one over.
  static_cast<void>(m_headers.release());
  m_headers.reset(longer);
}

void HttpClient::Lane::SetUp() {
  const HttpRequest& request = *m_request;
  Set(CURLOPT_NOSIGNAL, 1L);
  Set(CURLOPT_URL, request.server.c_str());
  // Beside the URL, because curl escapes some bytes of an URL's path.
  Set(CURLOPT_REQUEST_TARGET, request.target.c_str());
  Set(CURLOPT_PROTOCOLS_STR, "http,https");
  Set(CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
  // Nothing but the host's set-up calls decides where requests go: no proxy from the environment.
  Set(CURLOPT_PROXY, "");
  Set(CURLOPT_FOLLOWLOCATION, 0L);
  Set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(kConnectTimeout.count()));
  Set(CURLOPT_TIMEOUT_MS, static_cast<long>(request.timeout.count()));
  // Younger than any usual server's patience with an idle connection.
  Set(CURLOPT_MAXAGE_CONN, 20L);
  // Whatever libcurl can undo; of a stream what servers flush after each event.
  Set(CURLOPT_ACCEPT_ENCODING, request.receive ? "gzip" : "");
  if (!request.caFile.empty()) Set(CURLOPT_CAINFO, request.caFile.c_str());
  Set(CURLOPT_WRITEFUNCTION, &Lane::OnBody);
  Set(CURLOPT_WRITEDATA, this);
  Set(CURLOPT_HEADERFUNCTION, &Lane::OnHeader);
  Set(CURLOPT_HEADERDATA, this);
  Set(CURLOPT_PREREQFUNCTION, &Lane::OnSending);
  Set(CURLOPT_PREREQDATA, this);
  SetMethod();
}

void HttpClient::Lane::SetMethod() {
  const HttpRequest& request = *m_request;
  m_headers.reset();
  AddHeader("Expect:");
  if (!request.token.empty() && IsHeaderSafe(request.token)) {
    AddHeader("Authorization: Bearer " + request.token);
  }
  if (!request.body.empty() || request.method == "POST" || request.method == "PUT") {
    AddHeader("Content-Type: application/json");
    Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
    Set(CURLOPT_POSTFIELDS, request.body.c_str());
  }
  Set(CURLOPT_CUSTOMREQUEST, request.method.c_str());
  Set(CURLOPT_HTTPHEADER, m_headers.get());
}

CURLcode HttpClient::Lane::Drive() {
  m_lastByte = Clock::now();
  while (true) {
    int running = 0;
    if (curl_multi_perform(m_multi, &running) != CURLM_OK) return CURLE_FAILED_INIT;
    if (m_request->canceller && m_request->canceller->IsCancelled()) return CURLE_ABORTED_BY_CALLBACK;
    if (!HandOut()) return CURLE_WRITE_ERROR;
    if (m_request->idle) {
      auto began = Clock::now();
      m_request->idle();
      m_lastByte += Clock::now() - began;  // while it took its time nothing could be heard
    }
    if (running == 0) break;
    milliseconds wait = kLongestWait;
    if (m_request->silence.count() > 0) {
      auto left = m_request->silence - std::chrono::duration_cast<milliseconds>(Clock::now() - m_lastByte);
      if (left.count() <= 0) return CURLE_OPERATION_TIMEDOUT;
      wait = std::min(wait, left);
    }
    if (curl_multi_poll(m_multi, nullptr, 0, static_cast<int>(wait.count()), nullptr) != CURLM_OK) {
      std::this_thread::sleep_for(milliseconds(1));  // want of memory
    }
  }
  int left = 0;
  while (CURLMsg* message = curl_multi_info_read(m_multi, &left)) {
    if (message->msg == CURLMSG_DONE) return message->data.result;
  }
  return CURLE_FAILED_INIT;
}

// Pieces are handed out between curl's calls, so that the receiver may take its time and send requests of its own.
bool HttpClient::Lane::HandOut() {
  const bool begins = !m_hasBegun && m_headComplete && m_request->receive && m_reply.status == 200;
  if (m_piece.empty() && !begins) return true;
  m_hasBegun = true;
  std::string piece;
  piece.swap(m_piece);
  bool more = m_request->receive(piece);
  m_lastByte = Clock::now();
  return more;
}

size_t HttpClient::Lane::OnBody(char* data, size_t size, size_t count, void* self) {
  Lane& lane = *static_cast<Lane*>(self);
  size_t length = size * count;
  lane.m_lastByte = Clock::now();
  std::string& target = lane.m_request->receive && lane.m_reply.status == 200 ? lane.m_piece : lane.m_reply.body;
  if (target.size() + length > kMaxBody) {
    lane.m_isTooLarge = true;
    return 0;
  }
  try {
    target.append(data, length);
  } catch (...) {
    return 0;
  }
  return length;
}

// Where the header's name, in lower case and with its colon, is that one.
void HttpClient::Lane::KeepValue(std::string_view line, std::string_view name, std::string& value) {
  if (EqualsIgnoringCase(line.substr(0, name.size()), name)) value = Trimmed(line.substr(name.size()));
}

size_t HttpClient::Lane::OnHeader(char* data, size_t size, size_t count, void* self) {
  Lane& lane = *static_cast<Lane*>(self);
  size_t length = size * count;
  std::string_view line(data, length);
  lane.m_lastByte = Clock::now();
  if (line.starts_with("HTTP/")) {
    long status = 0;
    curl_easy_getinfo(lane.m_easy, CURLINFO_RESPONSE_CODE, &status);
    lane.m_reply.status = static_cast<int>(status);
    lane.m_reply.resourceSequence.clear();
    lane.m_reply.resourceHistory.clear();
    lane.m_headComplete = false;
    return length;
  }
  if (line == "\r\n" || line == "\n") lane.m_headComplete = true;
  try {
    KeepValue(line, "resource-sequence:", lane.m_reply.resourceSequence);
    KeepValue(line, "resource-history:", lane.m_reply.resourceHistory);
  } catch (...) {
    return 0;
  }
  return length;
}

int HttpClient::Lane::OnSending(void* self, char*, char*, int, int) {
  Lane& lane = *static_cast<Lane*>(self);
  ++lane.m_timesSent;
  bool repeatable = lane.m_request->method == "GET";
  return lane.m_timesSent == 1 || repeatable ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

HttpClient& HttpClient::Instance() {
  static HttpClient client;
  return client;
}

HttpClient::HttpClient() {
  curl_global_init(CURL_GLOBAL_DEFAULT);
  m_idle.reserve(kMaxIdleLanes);  // to keep a lane must not fail once its reply is there
}

HttpClient::~HttpClient() {
  // Closing would say good-bye on the parent's connections.
  if (details::IsForkedChild()) details::LeaveToParent(m_idle);
}

HttpReply HttpClient::Perform(const HttpRequest& request) {
  std::unique_ptr<Lane> lane = TakeLane();
  HttpReply reply = lane->Perform(request);
  ReturnLane(std::move(lane));
  return reply;
}

void HttpClient::CloseIdle() {
  if (details::IsForkedChild()) return;
  std::vector<std::unique_ptr<Lane>> idle;
  idle.reserve(kMaxIdleLanes);
  base::MutexLock lock(m_mutex);
  idle.swap(m_idle);
}

std::unique_ptr<HttpClient::Lane> HttpClient::TakeLane() {
  {
    base::MutexLock lock(m_mutex);
    if (!m_idle.empty()) {
      std::unique_ptr<Lane> lane = std::move(m_idle.back());
      m_idle.pop_back();
      return lane;
    }
  }
  return std::make_unique<Lane>();
}

void HttpClient::ReturnLane(std::unique_ptr<Lane> lane) {
  if (!lane->IsWorthKeeping()) return;
  base::MutexLock lock(m_mutex);
  if (m_idle.size() < kMaxIdleLanes) m_idle.push_back(std::move(lane));
}

}  // namespace BizShared
