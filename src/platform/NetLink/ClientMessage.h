// SPDX-License-Identifier: Apache-2.0
// The request and reply records of the platform's transport: plain values, made fresh for every request, one
// thread at a time.
#pragma once

#include <string>

#include "NetLink/Export.h"
#include "VantBase/Error.h"

namespace NetLink {

class NETLINK_API CClientSendInfo {
 public:
  CClientSendInfo();
  ~CClientSendInfo();

  // "GET", "POST", "PUT" or "DELETE".
  void SetVal_Method(const std::string& method);
  // Path relative to the server, sent as it is.
  void SetVal_URL(const std::string& url);
  // The body. send_data and Request_Data both travel as the body; of two non-empty ones send_data does.
  void SetVal_send_data(const std::string& data);
  void SetVal_Request_Data(const std::string& data);
  // Milliseconds for the whole request; 0 leaves it to the transport.
  void SetVal_Timeout(unsigned long milliseconds);

  const std::string& GetVal_Method() const;
  const std::string& GetVal_URL() const;
  const std::string& GetVal_send_data() const;
  const std::string& GetVal_Request_Data() const;
  unsigned long GetVal_Timeout() const;

 private:
  std::string m_method;
  std::string m_url;
  std::string m_sendData;
  std::string m_requestData;
  unsigned long m_timeout = 0;
};

class NETLINK_API CClientRecvInfo {
 public:
  CClientRecvInfo();
  ~CClientRecvInfo();

  // The reply's body; empty when the request failed.
  std::string GetVal_Receive_Data() const;
  // Why the request failed; the default record when it did not.
  Vant::Base::Error::ErrorCode GetVal_Error_code() const;

  // For the transport.
  void SetVal_Receive_Data(std::string data);
  void SetVal_Error_code(const Vant::Base::Error::ErrorCode& error);

 private:
  std::string m_receiveData;
  Vant::Base::Error::ErrorCode m_error;
};

}  // namespace NetLink
