// SPDX-License-Identifier: Apache-2.0
// What the head of a request says, by RFC 9110 and 9112. Stateless: any thread.
#pragma once

#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "server/http/HttpHandler.h"

namespace server {

using RequestMessage = boost::beast::http::request<boost::beast::http::string_body>;

inline Refusal NotHttp() {
  return Refusal::Malformed("not an HTTP request");
}
// What Beast lets pass and we must not: how the body is framed, which host is asked.
std::optional<Refusal> FaultOf(const RequestMessage& message);
// Method, path, query and token. HEAD becomes GET.
void ReadHead(const RequestMessage& message, HttpRequest& request);
bool WantsContinue(const RequestMessage& message);
// All fields of that name as one list.
std::string Joined(const RequestMessage& message, boost::beast::string_view name);
// Without the blanks and tabs around it.
std::string_view Trimmed(std::string_view text);

}  // namespace server
