// SPDX-License-Identifier: Apache-2.0
#include <set>
#include <sstream>

#include "../Gate.h"
#include "DownloadFixture.h"
#include "ForkedChild.h"
#include "ResourceStore/DownloadResource.h"
#include "ResourceStore/Element.h"

namespace {

using namespace ResourceStore;
using namespace testing_support;
using Vant::Base::Error::ErrorCode;

class ElementsTest : public ServingTest {
 protected:
  ~ElementsTest() override { Elements().Clear(); }
  static CElementManager& Elements() { return CElementManager::Instance(); }
  // Every id but 999 is an element of the asked type.
  void ServeElements() {
    Serve([](const Request& request, Connection& connection) {
      const size_t type = request.target.find("Type=") + 5, ids = request.target.find("&IDs=");
      const std::string rest = R"(,"Type":)" + request.target.substr(type, ids - type) + R"(,"SiteID":4,"Name":"n)";
      std::istringstream asked(request.target.substr(ids + 5));
      std::string elements;
      for (std::string id; std::getline(asked, id, ',');) {
        if (id != "999") elements += (elements.empty() ? "{\"ID\":" : ",{\"ID\":") + id + rest + id + "\"}";
      }
      connection.ReplyData("{\"ElementList\":{\"Element\":[" + elements + "]}}");
    });
  }
  bool Fetch(const std::set<unsigned>& ids,
             const std::vector<comm_method::ResourceType>& types = {comm_method::ResourceTypeCamera}) {
    auto request = std::make_shared<CDownloadLogicalResource>();
    request->SetVal_extra_ids(ids);
    request->SetVal_source_type(types);
    request->SetVal_extra_request_type(ExtraRequestTypeElementIds);
    return CDownloadResourceStore::Instance().SynIncrementalDownloadLogicalResource(error, request);
  }

  ErrorCode error;  // of the last fetch
};

TEST_F(ElementsTest, AsksForWhatIsMissingInPortions) {
  ServeElements();
  std::set<unsigned> ids;
  for (unsigned id = 1; id <= 1001; ++id) ids.insert(id);
  ASSERT_TRUE(Fetch(ids));
  ASSERT_EQ(m_server->Requests().size(), 3u);
  EXPECT_TRUE(m_server->Requests()[2].target.ends_with("/V0/Elements?Type=1001&IDs=1001"));
  ids.insert(4294967295u);
  ASSERT_TRUE(Fetch(ids));
  ASSERT_EQ(m_server->Requests().size(), 4u);
  EXPECT_TRUE(m_server->Requests()[3].target.ends_with("&IDs=999,4294967295")) << "an unknown one is asked for again";

  EXPECT_EQ(Elements().GetCameraElementName(7), "n7");
  EXPECT_EQ(Elements().FindCameraElementByID(7)->GetWorkStationID(), 4u);
  EXPECT_EQ(Elements().GetCameraElementName(999), "");
  EXPECT_EQ(Elements().FindCameraElementByID(999), nullptr);
}

TEST_F(ElementsTest, FilesElementsUnderTheirType) {
  ServeElements();
  ASSERT_TRUE(Fetch({1}, {comm_method::ResourceTypeDoor, comm_method::ResourceTypeRadar}));
  ASSERT_TRUE(Fetch({2}, {comm_method::ResourceTypeElement1027, comm_method::ResourceTypeElevator}));
  CWorkStationManager& sites = CWorkStationManager::Instance();
  EXPECT_EQ(Elements().GetDoorElementName(1), "n1");
  EXPECT_EQ(Elements().GetElevatorElementName(2), "n2");
  EXPECT_EQ(Elements().FindRadarElementByID(1)->GetType(), 1006);
  EXPECT_EQ(Elements().FindOtherElementByID(1), nullptr);
  EXPECT_EQ(Elements().FindOtherElementByID(2)->GetType(), 1027);
  EXPECT_EQ(sites.FindCameraElementByID(1), nullptr);
  EXPECT_NE(sites.FindDoorElementByID(1), nullptr);
  EXPECT_NE(sites.FindRadarElementByID(1), nullptr);
  EXPECT_NE(sites.FindElevatorElementByID(2), nullptr);
}

TEST_F(ElementsTest, AFailureKeepsWhatHadArrived) {
  std::atomic<int> count{0};
  Serve([&](const Request&, Connection& connection) {
    if (++count == 1) {
      return connection.ReplyData(R"({"ElementList":{"Element":[{"ID":1,"Name":"one"},{"Name":"no ID"}]}})");
    }
    connection.ReplyError(403, 100, 4);
  });
  EXPECT_FALSE(Fetch({1}, {comm_method::ResourceTypeCamera, comm_method::ResourceTypeDoor}));
  EXPECT_EQ(Numbers(error), "100/4");
  EXPECT_EQ(error.GetCasadingErrorInfo(), "from below");
  EXPECT_EQ(Elements().GetCameraElementName(1), "one");
  EXPECT_EQ(Elements().FindCameraElementByID(1)->GetWorkStationID(), 4294967295u);
  EXPECT_FALSE(Elements().HasElement(comm_method::ResourceTypeCamera, 4294967295u));
  m_server.reset();
  EXPECT_FALSE(Fetch({2}));
  EXPECT_EQ(error.GetMainError(), 1);
}

class UsersTest : public ServingTest {
 protected:
  ~UsersTest() override { COrlUserManager::Instance().ResetDownload(); }
  static COrlUserManager& Manager() { return COrlUserManager::Instance(); }
  static std::string Names() {
    std::vector<std::shared_ptr<CUserInfo>> users;
    Manager().GetOrlUsers(users);
    std::string names;
    for (const auto& user : users) {
      names += std::to_string(user->GetVal_m_userID()) + user->GetVal_m_strUsername() +
               (user->GetVal_b_cs_online() ? "+" : "-") + std::to_string(user->GetVal_ptz_control_perm()) + " ";
    }
    return names;
  }
};

TEST_F(UsersTest, EveryDownloadEndsWithANotification) {
  std::atomic<bool> failing{false};
  Serve([&](const Request& request, Connection& connection) {
    if (failing) return connection.ReplyError(500, 100, 8);
    EXPECT_EQ(request.target, "/NXAPI/Vantorel/Platform/V0/Users");
    connection.ReplyData(R"({"UserList":{"User":[{"ID":2,"Name":"b","Online":1,"PTZControlPermission":3},)"
                         R"({"ID":1,"Name":"a","Online":0,"PTZControlPermission":0}]}})");
  });
  UserListener listener;
  Manager().RegisterObserver(&listener);
  Manager().RegisterObserver(nullptr);
  std::string seen;
  listener.m_during = [&] { seen = Names(); };
  auto download = [&] {
    size_t before = listener.Count();
    Manager().StartDownLoadOrlUser();
    EXPECT_TRUE(Eventually([&] { return listener.Count() > before; }));
    return listener.Ends().back();
  };
  EXPECT_EQ(download(), "state 0 0/0");
  EXPECT_EQ(seen, "2b+3 1a-0 ") << "the users are in place by then";
  failing = true;
  EXPECT_EQ(download(), "state 1 100/8");
  EXPECT_EQ(Names(), "2b+3 1a-0 ");
  m_server.reset();
  EXPECT_EQ(download(), "state 1 1/7");
  EXPECT_EQ(listener.Count(), 3u) << "however often it was registered";
}

TEST_F(UsersTest, ARequestDuringADownloadIsFollowedByANotificationOfItsOwn) {
  std::atomic<int> asked{0};
  Gate first;
  Serve([&](const Request&, Connection& connection) {
    if (++asked == 1) first.Pass();
    connection.ReplyData("{}");
  });
  UserListener listener;
  Manager().StartDownLoadOrlUser();
  ASSERT_TRUE(first.WaitUntilReached());
  Manager().StartDownLoadOrlUser();
  Manager().StartDownLoadOrlUser();
  first.Open();
  EXPECT_TRUE(Eventually([&] { return listener.Count() == 2; }));
  EXPECT_EQ(asked, 2);
}

TEST_F(UsersTest, WithdrawingWaitsForARunningNotificationUnlessItIsMadeFromIt) {
  Manager().SetDownload({}, {});
  Gate running;
  UserListener listener;
  listener.m_during = [&] { running.Pass(); };
  Manager().StartDownLoadOrlUser();
  ASSERT_TRUE(running.WaitUntilReached());
  auto other = std::async(std::launch::async, [&] { Manager().SyncUnregisterObserver(&listener); });
  EXPECT_EQ(other.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
  const std::string said = SaidByForkedChild([&listener] {
    Manager().SyncUnregisterObserver(&listener);
    Manager().RegisterObserver(&listener);  // takes the lock that the line before gave back
    return "ended";
  });
  EXPECT_FALSE(said.ends_with("(killed)")) << "a child by fork waits for neither";
  running.Open();
  other.get();

  UserListener first, second;
  first.m_during = [&] {
    Manager().SyncUnregisterObserver(&first);
    Manager().SyncUnregisterObserver(&second);  // stands behind it and is not called any more
  };
  Manager().StartDownLoadOrlUser();
  EXPECT_TRUE(Eventually([&] { return first.Count() == 1; }));
  UserListener third;
  Manager().StartDownLoadOrlUser();
  EXPECT_TRUE(Eventually([&] { return third.Count() == 1; }));
  EXPECT_EQ(first.Count() + second.Count(), 1u);
  EXPECT_EQ(listener.Count(), 1u);
}

}  // namespace
