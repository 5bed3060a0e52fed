// SPDX-License-Identifier: Apache-2.0
// The frame of the 17 exchanges: read the request, run the exchange's middle, write the response, answer.
#pragma once

#include <string>
#include <type_traits>

#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/protocol/JsonRecord.h"
#include "VantBase/Error.h"

namespace QorviViewPlugin {

inline CViewGroupManager& Manager() {
  return Vant::Base::CSingleton<CViewGroupManager>::Instance();
}

// The display text of an error record, as responses carry it.
std::string ErrorTextOf(const Vant::Base::Error::ErrorCode& error);
// The text of a failure inside the library itself.
std::string InternalErrorText();

// The host's translation of a key, as UTF-8.
std::string Translated(const char* key);

// The id of the logged-in user, -1 when nobody is.
int CurrentUserId();

// A response's error text, whose name differs between the records; null for the two records without one.
template <class Response>
std::string* ErrorTextField(Response& response) {
  if constexpr (requires { response.ErrorInfo; }) {
    return &response.ErrorInfo;
  } else if constexpr (requires { response.error_info; }) {
    return &response.error_info;
  } else {
    return nullptr;
  }
}

template <class Response>
void WriteResponse(Response& data, std::string& response) {
  QorviVideoComm::RecordAdapter<Response> record(&data);
  response = QorviVideoComm::SerializeJsonResponse(record);
}

// Runs one exchange. `middle(request, response)` fills the response record. Where it answers bool, that is the result;
// where it answers nothing, the result is whether the response's error text is empty. An unreadable request leaves the
// request record at its defaults. Whatever fails, nothing is thrown: the result is then false, and the response a
// record that says so as far as memory allows.
template <class Request, class Response, class Middle>
bool RunExchange(const std::string& request, std::string& response, const Middle& middle) noexcept {
  try {
    Request requestData;
    QorviVideoComm::RecordAdapter<Request> requestRecord(&requestData);
    QorviVideoComm::ParseJsonRequest(requestRecord, request);
    Response responseData;
    bool result = false;
    if constexpr (std::is_same_v<decltype(middle(requestData, responseData)), bool>) {
      result = middle(requestData, responseData);
    } else {
      middle(requestData, responseData);
      result = ErrorTextField(responseData)->empty();
    }
    WriteResponse(responseData, response);
    return result;
  } catch (...) {
  }
  try {
    Response failed;
    if (std::string* const errorText = ErrorTextField(failed)) *errorText = InternalErrorText();
    WriteResponse(failed, response);
  } catch (...) {
  }
  return false;
}

}  // namespace QorviViewPlugin
