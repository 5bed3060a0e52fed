// SPDX-License-Identifier: Apache-2.0
// The frame of the exchanges, bool F(request, response). An exchange writes its middle only, a function that turns the
// request record into the response record; the exported function around it is defined by one line:
//
//     void AnswerAddPlan(const protocol::AddPlanRequest& request, protocol::AddPlanResponse& response);
//     QORVI_EXCHANGE(AddPlan)
//
// Whatever the middle throws ends here. Any thread; the frame holds no state and no lock.
#pragma once

#include <string>

#include "QorviViewPlugin/protocol/JsonRecord.h"
#include "VantBase/Error.h"

namespace QorviViewPlugin_view_plugin_protocol {}

namespace QorviViewPlugin {

namespace protocol = ::QorviViewPlugin_view_plugin_protocol;

template <class Response>
concept HasErrorText = requires(Response& response) {
  response.ErrorInfo;
}
|| requires(Response& response) {
  response.error_info;
};

template <HasErrorText Response>
std::string& ErrorTextOf(Response& response) {
  if constexpr (requires { response.ErrorInfo; }) {
    return response.ErrorInfo;
  } else {
    return response.error_info;
  }
}

// The record that a request text gives; an unreadable text gives the defaults.
template <class Request>
Request ReadRequest(const std::string& text) {
  Request request;
  QorviVideoComm::AdapterOf<Request> record(&request);
  QorviVideoComm::ParseJsonRequest(record, text);
  return request;
}

template <class Response>
std::string WriteResponse(Response& response) {
  QorviVideoComm::AdapterOf<Response> record(&response);
  return QorviVideoComm::SerializeJsonResponse(record);
}

// What the host is told of a failure inside the library itself.
std::string InternalErrorText();

// Runs the body of an exported function and answers its result, or `onFailure` when it throws.
template <class Result, class Body>
Result Guarded(Result onFailure, Body body) noexcept {
  try {
    return body();
  } catch (...) {
    return onFailure;
  }
}

// Fills in what a response says of an internal failure besides the error text: nothing. A response that says more
// overloads this in its own namespace.
template <class Response>
void MarkFailed(Response&) {}

// Runs the middle of an exchange and answers what it answers. When something throws, the result is false and the
// response a fresh record, with an error text where the record has one; where there is no memory for that, an empty
// object.
template <class Request, class Response, class Middle>
bool GuardedExchange(const std::string& requestText, std::string& responseText, Middle middle) noexcept {
  try {
    const Request request = ReadRequest<Request>(requestText);
    Response response;
    const bool result = middle(request, response);
    responseText = WriteResponse(response);
    return result;
  } catch (...) {
    try {
      Response failed;
      MarkFailed(failed);
      if constexpr (HasErrorText<Response>) ErrorTextOf(failed) = InternalErrorText();
      responseText = WriteResponse(failed);
    } catch (...) {
      responseText = "{}";  // short enough to need no memory
    }
    return false;
  }
}

// For the exchanges whose middle decides the result: it is what the middle answers.
template <class Request, class Response>
bool RunExchange(const std::string& requestText, std::string& responseText,
                 bool (*answer)(const Request&, Response&)) noexcept {
  return GuardedExchange<Request, Response>(requestText, responseText, answer);
}

// For all others: the result is true exactly when the middle has left the response's error text empty.
template <class Request, HasErrorText Response>
bool RunExchange(const std::string& requestText, std::string& responseText,
                 void (*answer)(const Request&, Response&)) noexcept {
  return GuardedExchange<Request, Response>(requestText, responseText, [answer](const auto& request, auto& response) {
    answer(request, response);
    return ErrorTextOf(response).empty();
  });
}

// What the platform's translator makes of a key; the key itself where no translator is installed.
std::string Translated(const char* key);

// The display text of an error record; empty when its sub error is 0.
std::string TextOf(const Vant::Base::Error::ErrorCode& error);

}  // namespace QorviViewPlugin

// The exported function of that name, outside all namespaces.
#define QORVI_EXCHANGE(name)                                                               \
  bool name(const std::string& request, std::string& response) {                           \
    return QorviViewPlugin::RunExchange(request, response, QorviViewPlugin::Answer##name); \
  }
