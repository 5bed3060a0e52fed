// SPDX-License-Identifier: Apache-2.0
// Loads the built library as a host does, uses it, and unloads it for good, several times in one process.
#include <gtest/gtest.h>

#include <QLibrary>
#include <QString>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "ResourceStore/OrlUserManager.h"
#include "ResourceStore/ResourceObserver.h"
#include "ResourceStore/ViewGroupManager.h"

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
  const std::string name = path.substr(path.rfind('/') + 1);
  std::ifstream maps("/proc/self/maps");
  EXPECT_TRUE(maps);
  for (std::string line; std::getline(maps, line);) {
    if (line.find(name) != std::string::npos) return true;
  }
  return false;
}

struct CountingObserver : ResourceData::IResourceObserver {
  virtual ~CountingObserver() = default;
  void UpdateResourceInfos(const Param&) override { ++notices; }
  int notices = 0;
};

class Plugin {
 public:
  Plugin() : m_library(PLUGIN_LIBRARY) { EXPECT_TRUE(m_library.load()) << m_library.errorString().toStdString(); }
  ~Plugin() { EXPECT_TRUE(m_library.unload()); }

  template <class Function>
  Function* Resolve(const char* name) {
    const QFunctionPointer function = m_library.resolve(name);
    EXPECT_NE(function, nullptr) << name;
    return reinterpret_cast<Function*>(function);
  }
  // "<result> <response>", or nothing when there is no such exchange.
  std::string Call(const char* name, const std::string& request) {
    auto* const exchange = Resolve<bool(const std::string&, std::string&)>(name);
    if (!exchange) return "";
    std::string response = "untouched";
    const bool result = exchange(request, response);
    return (result ? "true " : "false ") + response;
  }

 private:
  QLibrary m_library;
};

// Uses what leaves traces in the platform: change callbacks, the observer of the users, observers of changes.
void Use(Plugin& plugin) {
  CountingObserver observer;
  auto* const registerObserver =
      plugin.Resolve<void(ResourceData::IResourceObserver*, std::string)>("ViewRegisterResourceUpdate");
  ASSERT_TRUE(plugin.Resolve<bool()>("InitEnvir")());
  ASSERT_EQ(plugin.Call("IsInitViewGroupFinish", ""), R"(true {"error_info":"","init_finish":true})");
  ASSERT_EQ(plugin.Call("IsInitViewFinish", ""), R"(true {"error_info":"","init_finish":true})");
  registerObserver(&observer, R"({"ResourceType":16001,"ID":"1","IsRegister":true})");
  Downloads().NotifyViewsUpdate(kAddedView);
  EXPECT_EQ(observer.notices, 1);
  EXPECT_EQ(plugin.Call("GetAllUserInfo", "").substr(0, 5), "true ");
  // A thread of the host that lives longer than the library would keep what is bound to threads.
  std::thread([&] {
    EXPECT_EQ(plugin.Call("GetPlansInGroup", R"({"GroupID":"1"})").substr(0, 5), "true ");
    EXPECT_EQ(plugin.Call("GetPlanGroups", "").substr(0, 5), "true ");
    EXPECT_EQ(plugin.Call("GetPlanDetail", R"({"ID":"5"})").substr(0, 5), "true ");
  }).join();
  // The user logs out and another logs in.
  plugin.Resolve<void()>("ClearViewData")();
  EXPECT_EQ(plugin.Call("GetPlanDetail", R"({"ID":"5"})").substr(0, 6), "false ");
  EXPECT_EQ(plugin.Call("IsInitViewGroupFinish", "").substr(0, 5), "true ");
  EXPECT_EQ(plugin.Call("IsInitViewFinish", "").substr(0, 5), "true ");
  EXPECT_EQ(plugin.Call("GetPlanDetail", R"({"ID":"5"})").substr(0, 5), "true ");
  EXPECT_TRUE(plugin.Resolve<bool()>("UnInitEnvir")());
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
      Plugin plugin;
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
