// SPDX-License-Identifier: Apache-2.0
#include "ErrorText/ErrorText.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <utility>

namespace ErrorText {
namespace {

struct Entry {
  int mainError;
  int subError;
  const char* text;
};

constexpr int kTransport = 1;
constexpr int kClientLibrary = 2;
constexpr int kHttpStatus = 4;
constexpr int kServer = 100;
constexpr int kSession = 101;

// Sorted by main and sub error.
constexpr std::array kEntries = {
    Entry{kTransport, 1, QT_TRANSLATE_NOOP("ErrorText", "The server's address names an unsupported protocol")},
    Entry{kTransport, 3, QT_TRANSLATE_NOOP("ErrorText", "The address of the request is not valid")},
    Entry{kTransport, 5, QT_TRANSLATE_NOOP("ErrorText", "The name of the proxy could not be resolved")},
    Entry{kTransport, 6, QT_TRANSLATE_NOOP("ErrorText", "The server's name could not be resolved")},
    Entry{kTransport, 7, QT_TRANSLATE_NOOP("ErrorText", "The server could not be reached")},
    Entry{kTransport, 8, QT_TRANSLATE_NOOP("ErrorText", "The server's answer could not be understood")},
    Entry{kTransport, 16, QT_TRANSLATE_NOOP("ErrorText", "The connection to the server failed")},
    Entry{kTransport, 18, QT_TRANSLATE_NOOP("ErrorText", "The server's answer is incomplete")},
    Entry{kTransport, 27, QT_TRANSLATE_NOOP("ErrorText", "Not enough memory for the request")},
    Entry{kTransport, 28, QT_TRANSLATE_NOOP("ErrorText", "The server did not answer in time")},
    Entry{kTransport, 35, QT_TRANSLATE_NOOP("ErrorText", "No secure connection to the server could be made")},
    Entry{kTransport, 42, QT_TRANSLATE_NOOP("ErrorText", "The request was cancelled")},
    Entry{kTransport, 47, QT_TRANSLATE_NOOP("ErrorText", "The server redirected the request too often")},
    Entry{kTransport, 52, QT_TRANSLATE_NOOP("ErrorText", "The server closed the connection without an answer")},
    Entry{kTransport, 55, QT_TRANSLATE_NOOP("ErrorText", "The connection was lost while sending")},
    Entry{kTransport, 56, QT_TRANSLATE_NOOP("ErrorText", "The connection was lost while receiving")},
    Entry{kTransport, 58, QT_TRANSLATE_NOOP("ErrorText", "The client's certificate could not be used")},
    Entry{kTransport, 59, QT_TRANSLATE_NOOP("ErrorText", "No secure connection to the server could be made")},
    Entry{kTransport, 60, QT_TRANSLATE_NOOP("ErrorText", "The server's certificate is not trusted")},
    Entry{kTransport, 61, QT_TRANSLATE_NOOP("ErrorText", "The server's answer could not be understood")},
    Entry{kTransport, 63, QT_TRANSLATE_NOOP("ErrorText", "The server's answer is too large")},
    Entry{kTransport, 77, QT_TRANSLATE_NOOP("ErrorText", "The file of trusted certificates could not be read")},
    Entry{kTransport, 83, QT_TRANSLATE_NOOP("ErrorText", "The server's certificate is not trusted")},
    Entry{kTransport, 91, QT_TRANSLATE_NOOP("ErrorText", "The server's certificate is not trusted")},
    Entry{kTransport, 92, QT_TRANSLATE_NOOP("ErrorText", "The connection to the server failed")},
    Entry{kTransport, 1000, QT_TRANSLATE_NOOP("ErrorText", "The connection to the server is another process's")},

    Entry{kClientLibrary, 1, QT_TRANSLATE_NOOP("ErrorText", "Internal error in the client library")},
    Entry{kClientLibrary, 20, QT_TRANSLATE_NOOP("ErrorText", "The folder is not known here")},

    Entry{kHttpStatus, 301, QT_TRANSLATE_NOOP("ErrorText", "The server redirected the request")},
    Entry{kHttpStatus, 302, QT_TRANSLATE_NOOP("ErrorText", "The server redirected the request")},
    Entry{kHttpStatus, 303, QT_TRANSLATE_NOOP("ErrorText", "The server redirected the request")},
    Entry{kHttpStatus, 307, QT_TRANSLATE_NOOP("ErrorText", "The server redirected the request")},
    Entry{kHttpStatus, 308, QT_TRANSLATE_NOOP("ErrorText", "The server redirected the request")},
    Entry{kHttpStatus, 400, QT_TRANSLATE_NOOP("ErrorText", "The server did not understand the request")},
    Entry{kHttpStatus, 401, QT_TRANSLATE_NOOP("ErrorText", "The server does not know this session")},
    Entry{kHttpStatus, 403, QT_TRANSLATE_NOOP("ErrorText", "The server refused the request")},
    Entry{kHttpStatus, 404, QT_TRANSLATE_NOOP("ErrorText", "The server does not know the requested address")},
    Entry{kHttpStatus, 405, QT_TRANSLATE_NOOP("ErrorText", "The server does not support the request")},
    Entry{kHttpStatus, 408, QT_TRANSLATE_NOOP("ErrorText", "The server waited too long for the request")},
    Entry{kHttpStatus, 410, QT_TRANSLATE_NOOP("ErrorText", "The server no longer has what was requested")},
    Entry{kHttpStatus, 413, QT_TRANSLATE_NOOP("ErrorText", "The request is too large for the server")},
    Entry{kHttpStatus, 414, QT_TRANSLATE_NOOP("ErrorText", "The request is too large for the server")},
    Entry{kHttpStatus, 429, QT_TRANSLATE_NOOP("ErrorText", "The server received too many requests")},
    Entry{kHttpStatus, 500, QT_TRANSLATE_NOOP("ErrorText", "Internal error of the server")},
    Entry{kHttpStatus, 501, QT_TRANSLATE_NOOP("ErrorText", "The server does not support the request")},
    Entry{kHttpStatus, 502, QT_TRANSLATE_NOOP("ErrorText", "The server behind the gateway answered wrongly")},
    Entry{kHttpStatus, 503, QT_TRANSLATE_NOOP("ErrorText", "The server is not available at the moment")},
    Entry{kHttpStatus, 504, QT_TRANSLATE_NOOP("ErrorText", "The server behind the gateway did not answer in time")},

    Entry{kServer, 1, QT_TRANSLATE_NOOP("ErrorText", "The view does not exist")},
    Entry{kServer, 2, QT_TRANSLATE_NOOP("ErrorText", "The view group does not exist")},
    Entry{kServer, 3, QT_TRANSLATE_NOOP("ErrorText", "The name is not valid")},
    Entry{kServer, 4, QT_TRANSLATE_NOOP("ErrorText", "Not permitted")},
    Entry{kServer, 5, QT_TRANSLATE_NOOP("ErrorText", "The user does not exist")},
    Entry{kServer, 6, QT_TRANSLATE_NOOP("ErrorText", "The server did not understand the request")},
    Entry{kServer, 7, QT_TRANSLATE_NOOP("ErrorText", "The request is too large for the server")},
    Entry{kServer, 8, QT_TRANSLATE_NOOP("ErrorText", "Internal error of the server")},

    Entry{kSession, 1, QT_TRANSLATE_NOOP("ErrorText", "Wrong user name or password")},
    Entry{kSession, 2, QT_TRANSLATE_NOOP("ErrorText", "The session has ended, please log in again")},
};

constexpr std::pair<int, int> Key(const Entry& entry) {
  return {entry.mainError, entry.subError};
}

static_assert(std::ranges::is_sorted(kEntries, {}, Key));

QString Text(int mainError, int subError) {
  const auto entry = std::ranges::lower_bound(kEntries, std::pair(mainError, subError), {}, Key);
  if (entry != kEntries.end() && Key(*entry) == std::pair(mainError, subError)) {
    return QCoreApplication::translate("ErrorText", entry->text);
  }
  return QCoreApplication::translate("ErrorText", "Error %1-%2").arg(mainError).arg(subError);
}

}  // namespace

std::string GetErrorInfoByErrorCode(const Vant::Base::Error::ErrorCode& error) {
  if (error.GetSubError() == 0) return {};
  std::string text = Text(error.GetMainError(), error.GetSubError()).toStdString();
  const std::string cascading = error.GetCasadingErrorInfo();
  if (!cascading.empty()) text += ": " + cascading;
  return text;
}

}  // namespace ErrorText
