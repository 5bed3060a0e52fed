// SPDX-License-Identifier: Apache-2.0
// One HTTP request over libcurl; knows nothing of users and envelopes. Internal to the library.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "BizShared/details/Canceller.h"
#include "base/Mutex.h"

namespace BizShared {

struct HttpRequest {
  std::string method;
  std::string server;  // "http://HOST:PORT" or "https://HOST:PORT"
  std::string target;  // path and query, sent as they are
  std::string body;
  std::string token;                     // empty: no authorization
  std::string caFile;                    // empty: the system's certificates
  std::chrono::milliseconds timeout{0};  // for the whole request; 0: none
  std::chrono::milliseconds silence{0};  // ends the request after that long without a byte; 0: never
  // Gets the body of a 200 piece by piece, on the calling thread, and ends the request by false; a first piece, empty
  // or not, comes as soon as the head is there. Empty: the body is collected.
  std::function<bool(std::string_view)> receive;
  std::function<void()> idle;  // called between waits, on the calling thread; may be empty
  details::CCanceller* canceller = nullptr;
};

struct HttpReply {
  int curlCode = 0;     // 0: the reply is complete
  int systemError = 0;  // errno, where the connection could not be made
  int status = 0;       // 0: no reply
  std::string body;
  std::string resourceSequence;  // header of that name; empty when absent
  std::string resourceHistory;   // likewise
  bool isOfOtherType = false;    // its Content-Type is there and no JSON type
};

// Keeps connections: a request takes an idle lane (a connection cache of its own, so that threads never share one), or
// a new one where none is idle. Any thread.
class HttpClient {
 public:
  // Lives from its first use until process exit or unload. libcurl and its TLS library are set up before it is
  // complete, so it is gone before they clean up after themselves.
  static HttpClient& Instance();
  ~HttpClient();

  HttpReply Perform(const HttpRequest& request);
  void CloseIdle();

 private:
  class Lane;
  HttpClient();
  std::unique_ptr<Lane> TakeLane();
  void ReturnLane(std::unique_ptr<Lane> lane);

  base::Mutex m_mutex;
  std::vector<std::unique_ptr<Lane>> m_idle GUARDED_BY(m_mutex);
};

}  // namespace BizShared
