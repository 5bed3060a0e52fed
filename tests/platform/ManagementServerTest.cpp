// SPDX-License-Identifier: Apache-2.0
// The platform against the reference management server over TLS.
#include <cstdio>
#include <cstdlib>

#include "../server/TestClient.h"
#include "BizShared/details/RequestContext.h"
#include "DownloadFixture.h"
#include "ForkedChild.h"
#include "TestCertificate.h"

namespace {

using namespace testing_support;
using Vant::Base::Error::ErrorCode;

class TlsTest : public server::test::ServerTest {
 protected:
  TlsTest() { Present({}); }
  // Not in the destructor: a process that forgets to clean up has its test here too.
  void TearDown() override { EndDownloads(); }

  std::string File(const std::string& name) const { return (m_folder / name).string(); }
  // Has the server present such a certificate.
  void Present(const Certificate& certificate) {
    MakeCertificate(File("server.pem"), certificate);
    RestartWith(
        [&](server::ViewServerOptions& options) { options.tlsCertFile = options.tlsKeyFile = File("server.pem"); });
  }
  // Logs in and downloads.
  bool Follow() {
    ErrorCode error;
    CNetCommManager::Instance().SetServer(m_server->Url(), File("server.pem"));
    return CUserCommonManager::Instance().Login("ann", "a", "test", error) && DownloadViews();
  }

  static void AddView(const std::string& name) {
    EXPECT_EQ(Send("POST", kViewsUrl, server::test::ViewBody(name, -1, kPublic)).substr(0, 4), "0/0 ");
  }
  // Adds a view in another session of the same user. The platform's own knows nothing of it.
  void AddViewElsewhere(const std::string& name) {
    BizShared::details::RequestContext context;
    context.asUser = false;
    context.token = m_server->OpenLocalSession("ann")->token;
    NetLink::CClientSendInfo send;
    send.SetVal_Method("POST");
    send.SetVal_URL(kViewsUrl);
    send.SetVal_send_data(server::test::ViewBody(name, -1, kPublic));
    NetLink::CClientRecvInfo recv;
    EXPECT_TRUE(CNetCommManager::Instance().Send(recv, send, context));
    EXPECT_EQ(context.status, 200);
  }

  static constexpr const char* kViewsUrl = "/NXAPI/Vantorel/Platform/V0/Views";
};

TEST_F(TlsTest, AChildByForkMayEndWithoutItsParentNoticing) {
  ASSERT_TRUE(Follow());
  UserListener listener;
  auto& users = ResourceStore::COrlUserManager::Instance();
  users.StartDownLoadOrlUser();
  ASSERT_TRUE(Eventually([&] { return listener.Count() == 1; }));
  AddView("before");  // its connection is kept
  EXPECT_EQ(SaidByForkedChild([&] {
              users.StartDownLoadOrlUser();
              users.SyncUnregisterObserver(&listener);
              Manager().SetViewsUpdateCallback({});
              Manager().Stop();
              Manager().Start();
              CUserCommonManager::Instance().Logout();
              return std::to_string(listener.Count()) + ", " + listener.Ends().back();
            }),
            "2, state 1 1/1000");
  AddView("after");
  AddViewElsewhere("elsewhere");
  EXPECT_TRUE(Eventually([] { return TextOfViews().find("\"elsewhere\"") != std::string::npos; }));
  users.StartDownLoadOrlUser();
  EXPECT_TRUE(Eventually([&] { return listener.Count() == 2; }));
  EXPECT_EQ(listener.Ends().back(), "state 0 0/0");
}

TEST_F(TlsTest, AServerThatIsNotWhoItShouldBeIsToldNoPassword) {
  MakeCertificate(File("other.pem"), {});
  const Certificate right, wrongName{"IP:127.0.0.2"}, wrongHost{"DNS:localhost"}, expired{"IP:127.0.0.1", -7200, -3600},
      early{"IP:127.0.0.1", 3600, 7200};
  const std::tuple<const char*, std::optional<Certificate>, std::string, const char*, int> cases[] = {
      {"right", right, "https", "server.pem", 0},
      {"somebody else's certificate", right, "https", "other.pem", 60},
      {"nobody vouches for it", right, "https", "", 60},
      {"no such file", right, "https", "nowhere.pem", 77},
      {"another address's", wrongName, "https", "server.pem", 60},
      {"another name's", wrongHost, "https", "server.pem", 60},
      {"expired", expired, "https", "server.pem", 60},
      {"not valid yet", early, "https", "server.pem", 60},
      {"no TLS where it should be", {}, "https", "server.pem", 35},
      {"TLS where none should be", right, "http", "", 52},
  };
  for (const auto& [what, presented, scheme, caFile, curlCode] : cases) {
    presented ? Present(*presented) : Restart(Options());
    const std::string url = m_server->Url();
    CNetCommManager::Instance().SetServer(scheme + url.substr(url.find(':')), *caFile ? File(caFile) : "");
    ErrorCode error;
    EXPECT_EQ(CUserCommonManager::Instance().Login("ann", "a", "test", error), curlCode == 0) << what;
    EXPECT_EQ(Numbers(error), curlCode == 0 ? "0/0" : "1/" + std::to_string(curlCode)) << what;
    CUserCommonManager::Instance().Logout();
  }
}

[[noreturn]] void RunFollowingHost() {
  static class : public TlsTest {
   public:
    using TlsTest::Follow;
    void TestBody() override {}
  } site;  // outlives what the platform makes later
  std::exit(site.Follow() ? 0 : 1);
}

TEST(ManagementServerDeathTest, AProcessMayEndWhileItFollowsOverTls) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(RunFollowingHost(), testing::ExitedWithCode(0), "");
}

}  // namespace
