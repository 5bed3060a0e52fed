// SPDX-License-Identifier: Apache-2.0
// The platform against the reference management server over TLS.
#include <gtest/gtest.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <vector>

#include "BizShared/UserCommonManager.h"
#include "BizShared/details/RequestContext.h"
#include "ForkedChild.h"
#include "NetLink/RapidJsonProto.h"
#include "PlatformCalls.h"
#include "ResourceStore/OrlUserManager.h"
#include "ResourceStore/ViewGroupManager.h"
#include "ScriptedServer.h"
#include "server/ViewServer.h"

namespace {

using BizShared::CNetCommManager;
using BizShared::CUserCommonManager;
using ResourceStore::CViewGroupManager;
using namespace testing_support;
using Vant::Base::Error::ErrorCode;

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

// A server with the user "ann" in a folder of its own.
class Site {
 public:
  explicit Site(bool tls, const Certificate& certificate = {}) {
    std::string pattern = (std::filesystem::temp_directory_path() / "platform-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    server::ViewServerOptions options;
    options.dataFile = m_folder + "/data.sqlite";
    if (tls) {
      options.tlsCertFile = options.tlsKeyFile = CertificateFile();
      MakeCertificate(CertificateFile(), certificate);
    }
    m_server = std::make_unique<server::ViewServer>(options);
    m_server->Start();
    std::string error;
    EXPECT_TRUE(m_server->AddUser("ann", "secret of ann", error)) << error;
  }
  ~Site() {
    m_server.reset();
    std::filesystem::remove_all(m_folder);
  }

  std::string Url() const { return m_server->Url(); }
  std::string CertificateFile() const { return m_folder + "/server.pem"; }

 private:
  std::string m_folder;
  std::unique_ptr<server::ViewServer> m_server;
};

// Logs in and downloads.
bool Follow(const Site& site) {
  ErrorCode error;
  CNetCommManager::Instance().SetServer(site.Url(), site.CertificateFile());
  if (!CUserCommonManager::Instance().Login("ann", "secret of ann", "test", error)) return false;
  CViewGroupManager::Instance().Start();
  return Eventually([] { return CViewGroupManager::Instance().IsViewDownloadSuccess(); });
}

constexpr const char* kRoot = "/NXAPI/Vantorel/Platform/V0/";

std::string ViewBody(const std::string& name) {
  return R"({"View":{"ID":-1,"Name":")" + name + R"(","ViewGroupID":-1,"UserID":-1}})";
}

void AddView(const std::string& name) {
  EXPECT_EQ(Send("POST", std::string(kRoot) + "Views", ViewBody(name)).substr(0, 4), "0/0 ");
}

// Adds a view in another session of the same user. The platform's own knows nothing of it.
void AddViewElsewhere(const std::string& name) {
  BizShared::details::RequestContext context;
  context.asUser = false;
  const auto post = [&](const char* what, const std::string& body) {
    NetLink::CClientSendInfo send;
    send.SetVal_Method("POST");
    send.SetVal_URL(kRoot + std::string(what));
    send.SetVal_send_data(body);
    NetLink::CClientRecvInfo recv;
    EXPECT_TRUE(CNetCommManager::Instance().Send(recv, send, context));
    NetLink::CRapidJsonProto reply;
    reply.set_str(recv.GetVal_Receive_Data());
    return reply.get_v("/ResponseStatus/Data/Session/Token", "");
  };
  context.token = post("Sessions", R"({"Session":{"UserName":"ann","Password":"secret of ann"}})");
  ASSERT_NE(context.token, "");
  post("Views", ViewBody(name));
  EXPECT_EQ(context.status, 200);
}

TEST(TlsTest, IsLoggedInThroughDownloadedThroughAndFollowedThrough) {
  const Site site(true);
  std::mutex mutex;
  std::vector<std::string> told;
  CViewGroupManager::Instance().SetViewsUpdateCallback([&](const std::string& document) {
    const std::lock_guard lock(mutex);
    told.push_back(document);
  });
  ASSERT_TRUE(Follow(site));
  const struct {
    const char *own, *elsewhere, *token;
  } edits[] = {
      {"own", "elsewhere", nullptr},
      // The session is ended behind the platform's back; the next request renews it.
      {"own again", "elsewhere again", "no longer known"},
  };
  for (const auto& edit : edits) {
    if (edit.token) CNetCommManager::Instance().SetToken(edit.token);
    AddView(edit.own);
    // Changes come in order: with this one, that of the own edit has come. The list is not looked at before, or the own
    // edit would have to be told.
    AddViewElsewhere(edit.elsewhere);
    ASSERT_TRUE(Eventually([&] {
      const std::lock_guard lock(mutex);
      return !told.empty() && told.back().find("\"Name\":\"" + std::string(edit.elsewhere) + "\"") != std::string::npos;
    }));
  }
  EXPECT_NE(CNetCommManager::Instance().GetToken(), edits[1].token);
  std::string views;
  CViewGroupManager::Instance().GetViewsData(views);
  CViewGroupManager::Instance().Stop();
  EXPECT_EQ(told.size(), 2u) << "one's own edits come without a call, also those of a renewed session";
  for (const auto& edit : edits) {
    for (const char* name : {edit.own, edit.elsewhere}) {
      EXPECT_NE(views.find("\"Name\":\"" + std::string(name) + "\""), std::string::npos) << name;
    }
  }
  CViewGroupManager::Instance().SetViewsUpdateCallback({});
  CUserCommonManager::Instance().Logout();
  CNetCommManager::Instance().SetServer({});
}

TEST(TlsTest, AChildByForkMayEndWithoutItsParentNoticing) {
  class Listener : public ResourceStore::IOrlUserObserver {
   public:
    void OnUserListNotify(ResourceStore::CIOrlUserObserverParam& param) override {
      last = param.GetVal_enumState();
      ++count;
    }
    std::atomic<int> last{-1}, count{0};
  } listener;
  const Site site(true);
  ASSERT_TRUE(Follow(site));
  auto& users = ResourceStore::COrlUserManager::Instance();
  users.RegisterObserver(&listener);
  users.StartDownLoadOrlUser();
  ASSERT_TRUE(Eventually([&] { return listener.count == 1; }));
  AddView("before");  // its connection is kept
  EXPECT_EQ(SaidByForkedChild([&] {
              users.StartDownLoadOrlUser();
              users.SyncUnregisterObserver(&listener);
              CViewGroupManager::Instance().SetViewsUpdateCallback({});
              CViewGroupManager::Instance().Stop();
              CViewGroupManager::Instance().Start();
              CUserCommonManager::Instance().Logout();
              return std::to_string(listener.count) + " " + std::to_string(listener.last);
            }),
            "2 1");
  AddView("after");
  AddViewElsewhere("elsewhere");
  EXPECT_TRUE(Eventually([&] {
    std::string views;
    CViewGroupManager::Instance().GetViewsData(views);
    return views.find("\"elsewhere\"") != std::string::npos;
  }));
  users.StartDownLoadOrlUser();
  EXPECT_TRUE(Eventually([&] { return listener.count == 2 && listener.last == 0; }));
  users.SyncUnregisterObserver(&listener);
  CViewGroupManager::Instance().Stop();
  CUserCommonManager::Instance().Logout();
  CNetCommManager::Instance().SetServer({});
}

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
  std::exit(Follow(site) ? 0 : 1);
}

TEST(ManagementServerDeathTest, AProcessMayEndWhileItFollowsOverTls) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(RunForgetfulHost(), testing::ExitedWithCode(0), "");
}

}  // namespace
