// SPDX-License-Identifier: Apache-2.0
// Why a request is refused. Thrown by whatever finds out, answered by Api::Handle; nothing has been changed then.
#pragma once

namespace server {

constexpr int kViewModule = 100;
constexpr int kSessionModule = 101;

struct Refusal {
  int module;
  int code;
  int httpStatus;
  const char* detail;  // for the reader of a trace, not for the user; a string that lives for ever, one line
  int retryAfter = 0;  // seconds until it may be tried again; 0: nothing is said of it
};

inline Refusal NoSuchView() {
  return {kViewModule, 1, 404, "no such view"};
}
inline Refusal NoSuchGroup() {
  return {kViewModule, 2, 404, "no such view group"};
}
inline Refusal BadName() {
  return {kViewModule, 3, 400, "a name has 1 to 256 characters and no control characters"};
}
inline Refusal NotPermitted(const char* detail) {
  return {kViewModule, 4, 403, detail};
}
inline Refusal NoSuchUser() {
  return {kViewModule, 5, 404, "no such user"};
}
inline Refusal Malformed(const char* detail) {
  return {kViewModule, 6, 400, detail};
}
inline Refusal UnknownPath() {
  return {kViewModule, 6, 404, "unknown path"};
}
inline Refusal ChangesGone() {
  return {kViewModule, 6, 410, "changes after that number are not kept; load again"};
}
inline Refusal TooLarge() {
  return {kViewModule, 7, 413, "too large"};
}
inline Refusal TooManyConnections() {
  return {kViewModule, 4, 429, "this user holds too many connections"};
}
inline Refusal InternalError() {
  return {kViewModule, 8, 500, "internal error"};
}
inline Refusal NoMemory() {
  return {kViewModule, 8, 503, "out of memory"};
}
inline Refusal Busy() {
  return {kViewModule, 9, 503, "too much to do at the moment", 2};
}
inline Refusal UnknownCoding() {
  return {kViewModule, 6, 501, "a transfer coding that the server does not know"};
}
inline Refusal BadLogin() {
  return {kSessionModule, 1, 401, "bad user or password"};
}
inline Refusal NoSession() {
  return {kSessionModule, 2, 401, "no or expired token"};
}
inline Refusal TooManyFailures(int seconds) {
  return {kSessionModule, 3, 429, "too many failed log-ins from this address", seconds};
}

}  // namespace server
