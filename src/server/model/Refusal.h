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
  int retryAfter = 0;  // seconds after which the same request may be made again; 0: nobody knows

  static Refusal NoSuchView() { return {kViewModule, 1, 404, "no such view"}; }
  static Refusal NoSuchGroup() { return {kViewModule, 2, 404, "no such view group"}; }
  static Refusal BadName() { return {kViewModule, 3, 400, "a name has 1 to 256 characters and no control characters"}; }
  static Refusal NotPermitted(const char* detail) { return {kViewModule, 4, 403, detail}; }
  static Refusal NoSuchUser() { return {kViewModule, 5, 404, "no such user"}; }
  static Refusal Malformed(const char* detail) { return {kViewModule, 6, 400, detail}; }
  static Refusal UnknownPath() { return {kViewModule, 6, 404, "unknown path"}; }
  static Refusal ChangesGone() { return {kViewModule, 6, 410, "changes after that number are not kept; load again"}; }
  static Refusal OtherHistory() {
    return {kViewModule, 6, 410, "that number is of another history of the store; load again"};
  }
  static Refusal TooLarge() { return {kViewModule, 7, 413, "too large"}; }
  static Refusal TooManyConnections() { return {kViewModule, 4, 429, "this user holds too many connections"}; }
  static Refusal InternalError() { return {kViewModule, 8, 500, "internal error"}; }
  static Refusal NoIdsLeft() { return {kViewModule, 8, 500, "all ids up to 2147483647 have been given"}; }
  static Refusal NoMemory() { return {kViewModule, 8, 503, "out of memory"}; }
  static Refusal StoreBusy() { return {kViewModule, 8, 503, "another process is writing to the store", 1}; }
  static Refusal Busy() { return {kViewModule, 9, 503, "too much to do at the moment", 2}; }
  static Refusal UnknownCoding() { return {kViewModule, 6, 501, "a transfer coding that the server does not know"}; }
  static Refusal BadLogin() { return {kSessionModule, 1, 401, "bad user or password"}; }
  static Refusal NoSession() { return {kSessionModule, 2, 401, "no or expired token"}; }
  static Refusal TooManyFailures(int seconds) {
    return {kSessionModule, 3, 429, "too many failed log-ins from this address", seconds};
  }
};

}  // namespace server
