// SPDX-License-Identifier: Apache-2.0
// All exported functions from sixteen threads at once while changes come in; run under ThreadSanitizer too.
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <latch>
#include <random>
#include <thread>

#include "CallFixture.h"

namespace call_test {
namespace {

using namespace std::chrono_literals;

constexpr int kThreads = 16;
constexpr int kObjects = 12;

// Every state of a view is made from one mark: its name and the element in each window.
std::string ViewElement(int id, int mark, int method) {
  const std::string element = std::to_string(mark);
  return R"({"ID":)" + std::to_string(id) + R"(,"Name":")" + element + R"(","ViewGroupID":)" +
         std::to_string(id % 3 + 1) + R"(,"Method":)" + std::to_string(method) +
         R"(,"PlanPages":[{"PlanViewItem":[{"WindowNo":0,"ResourceType":1001,"ResourceID":)" + element +
         R"(},{"WindowNo":1,"ResourceType":1001,"ResourceID":)" + element + "}]}]}";
}

std::string GroupElement(int id, int method) {
  return R"({"ID":)" + std::to_string(id) + R"(,"Name":"group","Method":)" + std::to_string(method) + "}";
}

std::string PlanRequest(const std::string& id, int mark) {
  const std::string element = std::to_string(mark);
  return R"({"ID":")" + id + R"(","Name":")" + element + R"(","GroupID":")" + std::to_string(mark % 3 + 1) +
         R"(","PlanPages":[{"PlanItems":[{"Sequence":0,"ResourceType":1001,"ResourceID":")" + element +
         R"("},{"Sequence":1,"ResourceType":1001,"ResourceID":")" + element + R"("}]}]})";
}

// What is wrong with a response, or nothing.
std::string Fault(Exchange exchange, const std::string& request) {
  std::string response = "old";
  const bool succeeded = exchange(request, response);
  NetLink::CRapidJsonProto document;
  if (!document.set_str(response)) return "not JSON: " + response;
  if (exchange == GetAllUserInfo && response.find("ada") == std::string::npos) return "no users: " + response;
  if (exchange != GetPlanDetail || !succeeded) return {};
  const std::string mark = document.get_v("/Name", "");
  for (const char* window : {"[1]", "[2]"}) {
    const std::string element = document.get_v(std::string("/PlanPages[1]/PlanItems") + window + "/ResourceID", "");
    if (element != mark) return "half of one state and half of another: " + response;
  }
  return {};
}

// From within its notices it withdraws itself from where the notice came from, often registers its neighbour for
// something else, and asks the library.
struct Meddler : ResourceData::IResourceObserver {
  virtual ~Meddler() = default;
  void UpdateResourceInfos(const Param& param) override {
    const int turn = ++notices;
    // The notice of a removed group comes under the group table's lock.
    if (param.enum_state == 4 && param.child_type == kViewGroup) return;
    for (const int type : {kView, kViewGroup}) {
      ViewRegisterResourceUpdate(this, RegistrationText(type, param.id, false));
    }
    const std::string id = std::to_string(turn % kObjects + 1);
    if (turn % 2) ViewRegisterResourceUpdate(neighbour, RegistrationText(kViewGroup, id, true));
    std::string response;
    GetPlanDetail(R"({"ID":")" + id + "\"}", response);
    GetPlansInGroup(R"({"GroupID":")" + id + "\"}", response);
  }
  std::atomic<int> notices{0};
  Meddler* neighbour = nullptr;
};

class StormTest : public CallTest {
 protected:
  // What a thread does in one round. Empty, or what was wrong.
  std::string Act(int job, std::mt19937& random) {
    const int number = static_cast<int>(random() % kObjects) + 1;
    const std::string id = std::to_string(number);
    const int mark = static_cast<int>(random() % 1000) + 1;
    const int method = static_cast<int>(random() % 3);
    const auto all = [](std::initializer_list<std::pair<Exchange, std::string>> calls) {
      std::string faults;
      for (const auto& [exchange, request] : calls) faults += Fault(exchange, request);
      return faults;
    };
    switch (job) {
      case 0: {
        std::this_thread::sleep_for(20ms);  // as hosts poll
        if (random() % 5 == 0) ClearViewData();
        IsViewResourceDownFinish();
        LoadWhatIsDownloaded();
        return {};
      }
      case 1:
        std::this_thread::sleep_for(1ms);
        Downloads().NotifyViewsUpdate(ViewsDocument(ViewElement(number, mark, method)));
        return {};
      case 2:
        std::this_thread::sleep_for(1ms);
        Downloads().NotifyViewGroupsUpdate(GroupsDocument(GroupElement(number % 3 + 1, method)));
        return {};
      case 3:
        ViewRegisterResourceUpdate(&meddlers[mark % 4], RegistrationText(kView, id, method != 2));
        ViewRegisterResourceUpdate(&meddlers[mark % 4], RegistrationText(kViewGroup, id, method != 2));
        return {};
      case 4:
        return all({{AddPlan, PlanRequest("", mark)},
                    {UpdatePlan, PlanRequest(id, mark)},
                    {DeletePlan, R"({"ID":")" + id + "\"}"}});
      case 5:
        return all({{AddPlanGroup, R"({"Name":"new","ParentID":"1"})"},
                    {UpdatePlanGroup, R"({"Name":"renamed","ID":")" + std::to_string(number % 3 + 1) + "\"}"},
                    {DeletePlanGroup, R"({"ID":"901"})"}});
      case 6:
        return all({{GetCurrentUser, "{}"},
                    {GetAllUserInfo, "{}"},
                    {ViewShareUsers, R"({"share_users":"3","view_id":")" + id + "\"}"},
                    {GetClientViewConfig, "{}"},
                    {SetClientViewConfig, R"({"view_type":1,"view_id":"5"})"}});
      default:
        return all({{GetPlanGroups, R"({"ParentID":"-1"})"},
                    {GetPlansInGroup, R"({"GroupID":"1"})"},
                    {GetPlansInGroup, R"({"GroupID":"-1"})"},
                    {GetPlanConfig, "{}"},
                    {GetPlanDetail, R"({"ID":")" + id + R"(","resource_download_judge":true})"}});
    }
  }

  Meddler meddlers[4];
};

TEST_F(StormTest, SixteenThreadsCallEverythingWhileChangesComeIn) {
  Vant::Base::SetLogSink(nullptr);
  for (int n = 0; n < 4; ++n) meddlers[n].neighbour = &meddlers[(n + 1) % 4];
  std::string groups;
  std::string views;
  for (int id = 1; id <= 3; ++id) groups += (id > 1 ? "," : "") + GroupElement(id, 0);
  for (int id = 1; id <= kObjects; ++id) views += (id > 1 ? "," : "") + ViewElement(id, 7, 0);
  Downloads().SetDownloadedData(GroupsDocument(groups), ViewsDocument(views), true);
  Users().SetDownload({std::make_shared<ResourceStore::CUserInfo>(1, "ada", true, 0)}, {});
  server.Answer(Accepted(R"({"View":{"ID":900,"Type":1},"ViewGroup":{"ID":901}})"));

  const char* const seconds = std::getenv("STORM_SECONDS");
  const std::chrono::seconds duration(seconds ? std::atoi(seconds) : 2);
  std::vector<std::thread> threads;
  std::vector<std::string> faults(kThreads);
  std::latch start(kThreads);
  for (int n = 0; n < kThreads; ++n) {
    threads.emplace_back([&, n] {
      start.arrive_and_wait();
      std::mt19937 random(static_cast<unsigned int>(n));
      const auto end = std::chrono::steady_clock::now() + duration;
      while (faults[n].empty() && std::chrono::steady_clock::now() < end) faults[n] = Act(n % 9, random);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(faults, std::vector<std::string>(kThreads));
  int notices = 0;
  for (const Meddler& meddler : meddlers) notices += meddler.notices;
  EXPECT_GT(notices, 0);

  ClearViewData();
  EXPECT_EQ(Call(IsInitViewGroupFinish), R"(true {"error_info":"","init_finish":true})");
  EXPECT_EQ(Call(IsInitViewFinish), R"(true {"error_info":"","init_finish":true})");
  EXPECT_EQ(Members(1), "3'7' 6'7' 9'7' 12'7' ");
}

}  // namespace
}  // namespace call_test
