// SPDX-License-Identifier: Apache-2.0
#include "host/LoginAdvice.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <memory>

#include "ErrorText/ErrorText.h"

namespace host {
namespace {

constexpr int kTransport = 1;
constexpr int kSession = 101;
constexpr long kLongestLook = 10;  // seconds

struct Advice {
  int mainError;
  int subError;
  const char* text;
};

constexpr std::array kAdvice = {
    Advice{kTransport, CURLE_UNSUPPORTED_PROTOCOL, "an address begins with http:// or https://"},
    Advice{kTransport, 3, "an address is http://HOST:PORT or https://HOST:PORT"},
    Advice{kTransport, CURLE_COULDNT_RESOLVE_HOST, "check the host's name in --server"},
    Advice{kTransport, CURLE_COULDNT_CONNECT, "check the host and port in --server, and that the server runs"},
    Advice{kTransport, CURLE_OPERATION_TIMEDOUT, "check the host and port in --server, and that the server runs"},
    Advice{kTransport, CURLE_SSL_CONNECT_ERROR, "does it speak https? try http:// in --server"},
    Advice{kTransport, CURLE_GOT_NOTHING, "does it speak https? try https:// in --server"},
    Advice{kTransport, CURLE_WEIRD_SERVER_REPLY, "is it the management server that --server names?"},
    Advice{kTransport, CURLE_SSL_CACERT_BADFILE, "--ca-file takes a file of certificates in PEM form"},
    Advice{kTransport, CURLE_RECV_ERROR, "does it speak https? try https:// in --server"},
    Advice{4, 404, "is it the management server that --server names?"},
    Advice{kSession, 1, "check --user, and the password in VIEWCTL_PASSWORD or --password-file"},
};

bool IsCertificateFault(int subError) {
  return subError == CURLE_PEER_FAILED_VERIFICATION || subError == CURLE_SSL_ISSUER_ERROR;
}

// Whether the server's certificate is trusted when nobody asks whose it is.
bool IsTrustedButForItsName(const GlobalOptions& options) {
  const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), curl_easy_cleanup);
  if (!curl) return false;
  curl_easy_setopt(curl.get(), CURLOPT_URL, options.server.c_str());
  if (!options.caFile.empty()) curl_easy_setopt(curl.get(), CURLOPT_CAINFO, options.caFile.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_SSL_VERIFYHOST, 0L);
  curl_easy_setopt(curl.get(), CURLOPT_CONNECT_ONLY, 1L);
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, kLongestLook);
  curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
  return curl_easy_perform(curl.get()) == CURLE_OK;
}

std::string CertificateAdvice(const GlobalOptions& options) {
  if (IsTrustedButForItsName(options)) {
    return "The server's certificate is for another name than the one in --server; name the server as its certificate "
           "does";
  }
  if (options.caFile.empty()) {
    return "The server's certificate comes from an authority that is not known here; give its certificate with "
           "--ca-file "
           "FILE";
  }
  return "The server's certificate does not come from the authorities in " + options.caFile +
         ", or its time is over; give the right ones with --ca-file";
}

}  // namespace

std::string LoginAdvice(const Vant::Base::Error::ErrorCode& error, const GlobalOptions& options) {
  const int mainError = error.GetMainError();
  const int subError = error.GetSubError();
  if (mainError == kTransport && IsCertificateFault(subError)) return CertificateAdvice(options);
  const auto found = std::ranges::find_if(
      kAdvice, [&](const Advice& advice) { return advice.mainError == mainError && advice.subError == subError; });
  const std::string reason = ErrorText::GetErrorInfoByErrorCode(error);
  return found == kAdvice.end() ? reason : reason + "; " + found->text;
}

}  // namespace host
