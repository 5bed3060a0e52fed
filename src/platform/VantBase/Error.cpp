// SPDX-License-Identifier: Apache-2.0
#include "VantBase/Error.h"

namespace Vant::Base::Error {

ErrorCode::ErrorCode() = default;

ErrorCode::ErrorCode(int mainError, int subError, int subSystemErrorCode, const std::string& cascadingErrorInfo)
    : m_mainError(mainError),
      m_subError(subError),
      m_subSystemErrorCode(subSystemErrorCode),
      m_cascadingErrorInfo(cascadingErrorInfo) {}

ErrorCode::ErrorCode(const ErrorCode&) = default;
ErrorCode& ErrorCode::operator=(const ErrorCode&) = default;
ErrorCode::~ErrorCode() = default;

int ErrorCode::GetMainError() const {
  return m_mainError;
}
int ErrorCode::GetSubError() const {
  return m_subError;
}
int ErrorCode::GetSubSystemErrorCode() const {
  return m_subSystemErrorCode;
}
std::string ErrorCode::GetCasadingErrorInfo() const {
  return m_cascadingErrorInfo;
}

void ErrorCode::SetMainError(int mainError) {
  m_mainError = mainError;
}
void ErrorCode::SetSubError(int subError) {
  m_subError = subError;
}
void ErrorCode::SetSubSystemErrorCode(int subSystemErrorCode) {
  m_subSystemErrorCode = subSystemErrorCode;
}
void ErrorCode::SetCasadingErrorInfo(const std::string& cascadingErrorInfo) {
  m_cascadingErrorInfo = cascadingErrorInfo;
}

}  // namespace Vant::Base::Error
