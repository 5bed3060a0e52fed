// SPDX-License-Identifier: Apache-2.0
// The platform against the reference management server, over HTTP and HTTPS.
#include <curl/curl.h>
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "BizShared/NetCommManager.h"
#include "BizShared/UserCommonManager.h"
#include "ResourceStore/ViewGroupManager.h"
#include "ScriptedServer.h"
#include "server/ViewServer.h"

namespace {

using BizShared::CNetCommManager;
using BizShared::CUserCommonManager;
using ResourceStore::CViewGroupManager;
using testing_support::Eventually;
using Vant::Base::Error::ErrorCode;

const std::string kRoot = "/NXAPI/Vantorel/Platform/";

struct Certificate {
  const char* name = "IP:127.0.0.1";
  long from = -60;  // seconds from now
  long to = 3600;
};

// A key and a certificate that it signs itself, both in one file.
void MakeCertificate(const std::string& file, const Certificate& what) {
  const std::shared_ptr<EVP_PKEY> key(EVP_RSA_gen(2048), EVP_PKEY_free);
  const std::shared_ptr<X509> certificate(X509_new(), X509_free);
  X509_set_version(certificate.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
  // It vouches for itself: OpenSSL finds the issuer by its name.
  X509_NAME* const subject = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("test server"), -1, -1,
                             0);
  X509_set_issuer_name(certificate.get(), subject);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), what.from);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), what.to);
  X509_set_pubkey(certificate.get(), key.get());
  const std::shared_ptr<X509_EXTENSION> name(X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, what.name),
                                             X509_EXTENSION_free);
  X509_add_ext(certificate.get(), name.get(), -1);
  X509_sign(certificate.get(), key.get(), EVP_sha256());
  const std::shared_ptr<std::FILE> out(std::fopen(file.c_str(), "w"), std::fclose);
  PEM_write_X509(out.get(), certificate.get());
  PEM_write_PrivateKey(out.get(), key.get(), nullptr, nullptr, 0, nullptr, nullptr);
}

// A server with the users "ann" and "ben" in a folder of its own.
class Site {
 public:
  explicit Site(bool tls, const Certificate& certificate = {}) {
    std::string pattern = (std::filesystem::temp_directory_path() / "platform-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    m_options.dataFile = m_folder + "/data.sqlite";
    if (tls) {
      m_options.tlsCertFile = m_options.tlsKeyFile = m_folder + "/server.pem";
      MakeCertificate(m_options.tlsCertFile, certificate);
    }
    Open();
    std::string error;
    EXPECT_TRUE(m_server->AddUser("ann", "secret of ann", error)) << error;
    EXPECT_TRUE(m_server->AddUser("ben", "secret of ben", error)) << error;
    m_tokenOfBen = m_server->OpenLocalSession("ben").value().token;
  }
  ~Site() {
    m_server.reset();
    std::filesystem::remove_all(m_folder);
  }

  void Restart() {
    m_options.listenPort = m_server->Port();
    m_server.reset();
    Open();
  }
  std::string Url() const { return m_server->Url(); }
  std::string CertificateFile() const { return m_options.tlsCertFile; }

  // Another client, with nothing of the platform in it.
  void AddViewAsBen(const std::string& name) const {
    const std::shared_ptr<CURL> curl(curl_easy_init(), curl_easy_cleanup);
    std::string body = R"({"View":{"ID":-1,"Name":")" + name + R"(","ViewGroupID":-1,"UserID":-1}})";
    std::string url = Url() + kRoot + "V0/Views";
    const std::shared_ptr<curl_slist> headers(
        curl_slist_append(nullptr, ("Authorization: Bearer " + m_tokenOfBen).c_str()), curl_slist_free_all);
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(
        curl.get(), CURLOPT_WRITEFUNCTION, +[](char*, size_t size, size_t count, void*) { return size * count; });
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, 20L);
    if (!m_options.tlsCertFile.empty()) curl_easy_setopt(curl.get(), CURLOPT_CAINFO, m_options.tlsCertFile.c_str());
    EXPECT_EQ(curl_easy_perform(curl.get()), CURLE_OK);
  }

 private:
  void Open() {
    m_server = std::make_unique<server::ViewServer>(m_options);
    m_server->Start();
  }

  std::string m_folder;
  server::ViewServerOptions m_options;
  std::unique_ptr<server::ViewServer> m_server;
  std::string m_tokenOfBen;
};

std::string Numbers(const ErrorCode& error) {
  return std::to_string(error.GetMainError()) + "/" + std::to_string(error.GetSubError());
}

bool Send(const std::string& method, const std::string& path, const std::string& body, ErrorCode& error) {
  auto send = std::make_shared<NetLink::CClientSendInfo>();
  send->SetVal_Method(method);
  send->SetVal_URL(kRoot + path);
  send->SetVal_send_data(body);
  auto recv = std::make_shared<NetLink::CClientRecvInfo>();
  bool answered = CNetCommManager::Instance().ClientSynSend(recv, send, 0);
  error = recv->GetVal_Error_code();
  return answered && recv->GetVal_Receive_Data().find("\"ErrorCode\":0") != std::string::npos;
}

std::string TextOfViews() {
  std::string text;
  CViewGroupManager::Instance().GetViewsData(text);
  return text;
}

bool ShowsView(const std::string& name) {
  return TextOfViews().find("\"Name\":\"" + name + "\"") != std::string::npos;
}

class ManagementServerTest : public testing::TestWithParam<bool> {
 protected:
  ManagementServerTest() : m_site(GetParam()) {
    CViewGroupManager::Instance().SetViewsUpdateCallback([this](const std::string&) { ++m_calls; });
  }
  ~ManagementServerTest() override {
    CViewGroupManager::Instance().Stop();
    CViewGroupManager::Instance().SetViewsUpdateCallback({});
    CUserCommonManager::Instance().Logout();
    CNetCommManager::Instance().SetServer({});
  }

  Site m_site;
  std::atomic<int> m_calls{0};
};

TEST_P(ManagementServerTest, IsLoggedInToDownloadedFromAndFollowed) {
  ErrorCode error;
  CUserCommonManager& user = CUserCommonManager::Instance();
  CNetCommManager::Instance().SetServer(m_site.Url());
  if (GetParam()) {
    EXPECT_FALSE(user.Login("ann", "secret of ann", "test", error));
    EXPECT_EQ(Numbers(error), "1/60") << "nobody vouches for it";
  }
  CNetCommManager::Instance().SetServer(m_site.Url(), m_site.CertificateFile());
  EXPECT_FALSE(user.Login("ann", "wrong", "test", error));
  EXPECT_EQ(Numbers(error), "101/1");
  ASSERT_TRUE(user.Login("ann", "secret of ann", "test", error)) << Numbers(error);
  m_site.AddViewAsBen("before");
  CViewGroupManager::Instance().Start();
  ASSERT_TRUE(Eventually([] { return CViewGroupManager::Instance().IsViewDownloadSuccess(); }));
  EXPECT_TRUE(ShowsView("before"));

  // One's own edit comes without a call; another client's, made after it, with one.
  ASSERT_TRUE(
      Send("POST", "V0/Views", R"({"View":{"ID":-1,"Name":"own","ViewGroupID":-1,"UserID":-1,"CycleTime":5}})", error));
  EXPECT_TRUE(Eventually([] { return ShowsView("own"); }));
  EXPECT_EQ(m_calls, 0);
  m_site.AddViewAsBen("foreign");
  EXPECT_TRUE(Eventually([&] { return m_calls == 1; }));
  EXPECT_TRUE(ShowsView("foreign"));

  m_site.Restart();
  m_site.AddViewAsBen("after the restart");
  EXPECT_TRUE(Eventually([&] { return m_calls == 2; }));
  EXPECT_TRUE(ShowsView("after the restart"));

  // The session is ended behind the platform's back; the next request renews it.
  CNetCommManager::Instance().SetToken("no longer known");
  EXPECT_TRUE(Send("PUT", "V1/View/Default/Config", R"({"ViewRequest":{"Type":0,"ID":1}})", error));
  EXPECT_NE(CNetCommManager::Instance().GetToken(), "no longer known");
  ASSERT_TRUE(Send("POST", "V0/Views", R"({"View":{"ID":-1,"Name":"own again","ViewGroupID":-1,"UserID":-1}})", error));
  EXPECT_TRUE(Eventually([] { return ShowsView("own again"); }));
  EXPECT_EQ(m_calls, 2) << "the renewed session's edits are its own";
}

INSTANTIATE_TEST_SUITE_P(HttpAndHttps, ManagementServerTest, testing::Bool(),
                         [](const auto& run) { return run.param ? "Https" : "Http"; });

TEST(TlsTest, AServerThatIsNotWhoItShouldBeIsToldNoPassword) {
  const Site right(true), other(true), wrongName(true, {"IP:127.0.0.2"}), wrongHost(true, {"DNS:localhost"}),
      expired(true, {"IP:127.0.0.1", -7200, -3600}), early(true, {"IP:127.0.0.1", 3600, 7200}), plain(false);
  const auto swapScheme = [](const Site& site, const std::string& scheme) {
    return scheme + site.Url().substr(site.Url().find(':'));
  };
  const struct {
    const char* what;
    std::string url, caFile;
    int curlCode;
  } cases[] = {
      {"right", right.Url(), right.CertificateFile(), 0},
      {"somebody else's certificate", right.Url(), other.CertificateFile(), 60},
      {"nobody vouches for it", right.Url(), "", 60},
      {"no such file", right.Url(), "/nowhere.pem", 77},
      {"another address's", wrongName.Url(), wrongName.CertificateFile(), 60},
      {"another name's", wrongHost.Url(), wrongHost.CertificateFile(), 60},
      {"expired", expired.Url(), expired.CertificateFile(), 60},
      {"not valid yet", early.Url(), early.CertificateFile(), 60},
      {"no TLS where it should be", swapScheme(plain, "https"), right.CertificateFile(), 35},
      {"TLS where none should be", swapScheme(right, "http"), "", 52},
  };
  for (const auto& c : cases) {
    ErrorCode error;
    CNetCommManager::Instance().SetServer(c.url, c.caFile);
    EXPECT_EQ(CUserCommonManager::Instance().Login("ann", "secret of ann", "test", error), c.curlCode == 0) << c.what;
    EXPECT_EQ(Numbers(error), c.curlCode == 0 ? "0/0" : "1/" + std::to_string(c.curlCode)) << c.what;
    CUserCommonManager::Instance().Logout();
  }
  CNetCommManager::Instance().SetServer({});
}

[[noreturn]] void RunForgetfulHost() {
  static Site site(true);
  ErrorCode error;
  CNetCommManager::Instance().SetServer(site.Url(), site.CertificateFile());
  bool running = CUserCommonManager::Instance().Login("ann", "secret of ann", "test", error);
  CViewGroupManager::Instance().Start();
  running = running && Eventually([] { return CViewGroupManager::Instance().IsViewDownloadSuccess(); });
  std::exit(running ? 0 : 1);
}

TEST(ManagementServerDeathTest, AProcessMayEndWhileItFollowsOverTls) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(RunForgetfulHost(), testing::ExitedWithCode(0), "");
}

}  // namespace
