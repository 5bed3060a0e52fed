// SPDX-License-Identifier: Apache-2.0
// Loads the built library as a host does, uses it, and unloads it for good, several times in one process.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "ResourceStore/OrlUserManager.h"
#include "ResourceStore/ResourceObserver.h"
#include "ResourceStore/ViewGroupManager.h"
#include "host/Plugin.h"
#include "system/Libraries.h"

namespace {

constexpr char kGroups[] =
    R"({"ResponseStatus":{"ErrorCode":0,"Data":{"ViewGroupList":{"ViewGroup":[{"ID":1,"Name":"one"}]}}}})";
constexpr char kViews[] =
    R"({"ResponseStatus":{"ErrorCode":0,"Data":{"ViewList":{"View":[{"ID":5,"Name":"five","ViewGroupID":1}]}}}})";
constexpr char kAddedView[] =
    R"({"ResponseStatus":{"ErrorCode":0,"Data":{"ViewList":{"View":[{"ID":9,"ViewGroupID":1}]}}}})";

ResourceStore::CViewGroupManager& Downloads() {
  return Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
}
ResourceStore::COrlUserManager& Users() {
  return Vant::Base::CSingleton<ResourceStore::COrlUserManager>::Instance();
}

bool IsMapped(const std::string& path) {
  return test_libraries::IsLoaded(path.substr(path.rfind('/') + 1));
}

struct CountingObserver : ResourceData::IResourceObserver {
  virtual ~CountingObserver() = default;
  void UpdateResourceInfos(const Param&) override { ++notices; }
  int notices = 0;
};

// Uses what leaves traces in the platform: change callbacks, the observer of the users, observers of changes.
void Use(const host::Plugin& plugin) {
  CountingObserver observer;
  const auto succeeds = [&](const char* name, const std::string& request = "") {
    std::string response;
    return plugin.Ask(name, request, response);
  };
  const std::string five = R"({"ID":"5"})";
  ASSERT_TRUE(plugin.Ask("InitEnvir"));
  ASSERT_TRUE(succeeds("IsInitViewGroupFinish") && succeeds("IsInitViewFinish"));
  plugin.Register(&observer, R"({"ResourceType":16001,"ID":"1","IsRegister":true})");
  Downloads().NotifyViewsUpdate(kAddedView);
  EXPECT_EQ(observer.notices, 1);
  EXPECT_TRUE(succeeds("GetAllUserInfo"));
  // A thread of the host that lives longer than the library would keep what is bound to threads.
  std::thread([&] {
    EXPECT_TRUE(succeeds("GetPlansInGroup", R"({"GroupID":"1"})") && succeeds("GetPlanGroups"));
    EXPECT_TRUE(succeeds("GetPlanDetail", five));
  }).join();
  // The user logs out and another logs in.
  std::get<host::Plugin::Command> (*plugin.Find("ClearViewData"))();
  EXPECT_FALSE(succeeds("GetPlanDetail", five));
  EXPECT_TRUE(succeeds("IsInitViewGroupFinish") && succeeds("IsInitViewFinish"));
  EXPECT_TRUE(succeeds("GetPlanDetail", five));
  EXPECT_TRUE(plugin.Ask("UnInitEnvir"));
}

int Rounds() {
  const char* const rounds = std::getenv("UNLOAD_ROUNDS");
  return rounds ? std::atoi(rounds) : 5;
}

TEST(AHost, LoadsUsesAndReallyUnloadsTheLibraryAsOftenAsItLikes) {
  Downloads().SetDownloadedData(kGroups, kViews, true);
  Users().SetDownload({std::make_shared<ResourceStore::CUserInfo>(1, "ada", true, 0)}, {});
  for (int round = 0; round < Rounds(); ++round) {
    ASSERT_FALSE(IsMapped(PLUGIN_LIBRARY)) << "round " << round;
    {
      const host::Plugin plugin(PLUGIN_LIBRARY);
      EXPECT_TRUE(IsMapped(PLUGIN_LIBRARY));
      Use(plugin);
    }
    EXPECT_FALSE(IsMapped(PLUGIN_LIBRARY)) << "round " << round;
    // Nothing of the platform calls into what is gone.
    Downloads().NotifyViewsUpdate(kAddedView);
    Downloads().NotifyViewGroupsUpdate(kGroups);
    Users().StartDownLoadOrlUser();
  }
}

}  // namespace
