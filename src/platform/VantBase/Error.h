// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "VantBase/Export.h"

namespace Vant::Base::Error {

// The platform's error record: a value. Sub error 0 means success. Default: all zero and empty.
class VANTBASE_API ErrorCode {
 public:
  ErrorCode();
  ErrorCode(int mainError, int subError, int subSystemErrorCode, const std::string& cascadingErrorInfo);
  ErrorCode(const ErrorCode&);
  ErrorCode& operator=(const ErrorCode&);
  ~ErrorCode();

  int GetMainError() const;
  int GetSubError() const;
  int GetSubSystemErrorCode() const;
  std::string GetCasadingErrorInfo() const;

  void SetMainError(int mainError);
  void SetSubError(int subError);
  void SetSubSystemErrorCode(int subSystemErrorCode);
  // The text that a cascaded server passed on.
  void SetCasadingErrorInfo(const std::string& cascadingErrorInfo);

 private:
  int m_mainError = 0;
  int m_subError = 0;
  int m_subSystemErrorCode = 0;
  std::string m_cascadingErrorInfo;
};

}  // namespace Vant::Base::Error
