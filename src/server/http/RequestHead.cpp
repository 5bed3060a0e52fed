// SPDX-License-Identifier: Apache-2.0
#include "server/http/RequestHead.h"

#include <iterator>
#include <string_view>

namespace server {

namespace beast = boost::beast;
namespace http = beast::http;

namespace {

constexpr int kHttp11 = 11;

// A host with or without a port; empty where the target has none.
bool IsHost(std::string_view text) {
  constexpr std::string_view kMarks = "-._~%!$&'()*+;=:[]";
  for (const char c : text) {
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    if (!isPlain && kMarks.find(c) == std::string_view::npos) return false;
  }
  return true;
}

// One host for HTTP/1.1, at most one before.
bool HasGoodHost(const RequestMessage& message) {
  const auto hosts = message.equal_range(http::field::host);
  const auto count = std::distance(hosts.first, hosts.second);
  if (count == 0) return message.version() < kHttp11;
  return count == 1 && IsHost(std::string_view(hosts.first->value().data(), hosts.first->value().size()));
}

std::optional<Refusal> FaultOfCodings(const RequestMessage& message) {
  if (message.count(http::field::transfer_encoding) == 0) return std::nullopt;
  if (message.version() < kHttp11) return NotHttp();  // it does not know them
  size_t codings = 0, chunked = 0;
  bool isChunkedLast = false;
  const std::string list = Joined(message, "Transfer-Encoding");
  for (const auto& coding : http::token_list(list)) {
    isChunkedLast = beast::iequals(coding, "chunked");
    chunked += isChunkedLast;
    ++codings;
  }
  if (!isChunkedLast || chunked != 1) return NotHttp();
  if (codings > 1) return Refusal::UnknownCoding();
  return std::nullopt;
}

std::string BearerToken(const RequestMessage& message) {
  const std::string_view value = message[http::field::authorization];
  constexpr std::string_view kScheme = "bearer ";
  if (value.size() < kScheme.size() || !beast::iequals(value.substr(0, kScheme.size()), kScheme)) return {};
  return std::string(value.substr(kScheme.size()));
}

// Of "http://host/path?query" the part from the path on, of any other target all. A path that is absent is "/".
std::string_view WithoutOrigin(std::string_view target) {
  const size_t scheme = target.find("://");
  if (scheme == std::string_view::npos) return target;
  const std::string_view name = target.substr(0, scheme);
  if (!beast::iequals(name, "http") && !beast::iequals(name, "https")) return target;
  const size_t path = target.find_first_of("/?", scheme + 3);
  return path == std::string_view::npos ? "/" : target.substr(path);
}

}  // namespace

std::string_view Trimmed(std::string_view text) {
  const size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

std::string Joined(const RequestMessage& message, beast::string_view name) {
  std::string list;
  const auto fields = message.equal_range(name);
  for (auto field = fields.first; field != fields.second; ++field) {
    list.append(list.empty() ? "" : ", ").append(field->value());
  }
  return list;
}

std::optional<Refusal> FaultOf(const RequestMessage& message) {
  return HasGoodHost(message) ? FaultOfCodings(message) : NotHttp();
}

void ReadHead(const RequestMessage& message, HttpRequest& request) {
  const std::string_view target = WithoutOrigin(message.target());
  const size_t question = target.find('?');
  const bool isHead = message.method() == http::verb::head;
  request.method = isHead ? "GET" : std::string(message.method_string());
  request.path = std::string(target.substr(0, question));
  if (request.path.empty()) request.path = "/";
  if (question != std::string_view::npos) request.query = std::string(target.substr(question + 1));
  request.token = BearerToken(message);
}

bool WantsContinue(const RequestMessage& message) {
  return message.version() >= kHttp11 && beast::iequals(message[http::field::expect], "100-continue");
}

}  // namespace server
