// SPDX-License-Identifier: Apache-2.0
#include "NetLink/ClientMessage.h"

#include <utility>

namespace NetLink {

CClientSendInfo::CClientSendInfo() = default;
CClientSendInfo::~CClientSendInfo() = default;

void CClientSendInfo::SetVal_Method(const std::string& method) {
  m_method = method;
}
void CClientSendInfo::SetVal_URL(const std::string& url) {
  m_url = url;
}
void CClientSendInfo::SetVal_send_data(const std::string& data) {
  m_sendData = data;
}
void CClientSendInfo::SetVal_Request_Data(const std::string& data) {
  m_requestData = data;
}
void CClientSendInfo::SetVal_Timeout(unsigned long milliseconds) {
  m_timeout = milliseconds;
}

const std::string& CClientSendInfo::GetVal_Method() const {
  return m_method;
}
const std::string& CClientSendInfo::GetVal_URL() const {
  return m_url;
}
const std::string& CClientSendInfo::GetVal_send_data() const {
  return m_sendData;
}
const std::string& CClientSendInfo::GetVal_Request_Data() const {
  return m_requestData;
}
unsigned long CClientSendInfo::GetVal_Timeout() const {
  return m_timeout;
}

CClientRecvInfo::CClientRecvInfo() = default;
CClientRecvInfo::~CClientRecvInfo() = default;

std::string CClientRecvInfo::GetVal_Receive_Data() const {
  return m_receiveData;
}
Vant::Base::Error::ErrorCode CClientRecvInfo::GetVal_Error_code() const {
  return m_error;
}
void CClientRecvInfo::SetVal_Receive_Data(std::string data) {
  m_receiveData = std::move(data);
}
void CClientRecvInfo::SetVal_Error_code(const Vant::Base::Error::ErrorCode& error) {
  m_error = error;
}

}  // namespace NetLink
