// SPDX-License-Identifier: Apache-2.0
// The registry of observers.
#include <stdexcept>

#include "CoreFixture.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

class ObserverTest : public CoreTest {
 protected:
  static CViewResourceUpdateManager& Registry() { return The<CViewResourceUpdateManager>(); }
  static void Notify(int type, const std::string& id) {
    Registry().UpdateResourceInfo(ResourceData::IResourceObserver::Param(id, 7),
                                  static_cast<ResourceData::ResourceType>(type));
  }
  // How often each was called since last asked.
  std::string Calls() {
    return std::to_string(a.Take().size()) + std::to_string(b.Take().size()) + std::to_string(c.Take().size());
  }

  NotingObserver a{"a"};
  NotingObserver b{"b"};
  NotingObserver c{"c"};
};

TEST_F(ObserverTest, OnlyThoseRegisteredForTheIdAndTypeAreCalled) {
  Observe(a, kView, "12");
  Observe(b, kView, "13");
  Observe(c, kViewGroup, "12");
  for (int type : {kViewGroup, 16002, 1001, -1}) Notify(type, "12");
  EXPECT_EQ(Calls(), "001");
  // Withdrawing what is not registered changes nothing.
  Unobserve(b, kView, "12");
  Unobserve(a, kView, "13");
  Unobserve(a, kViewGroup, "12");
  Notify(kView, "12");
  EXPECT_EQ(Calls(), "100");
}

TEST_F(ObserverTest, TheyAreCalledInTheOrderOfTheirRegistrationAsOftenAsTheyRegistered) {
  std::string order;
  a.onNotice = [&](const auto& param) { order += "a" + param.id; };
  b.onNotice = [&](const auto& param) { order += "b" + param.id; };
  Observe(b, kView, "12");
  Observe(a, kView, "12");
  Observe(b, kView, "12");
  Notify(kView, "12");
  EXPECT_EQ(order, "b12a12b12");
  Unobserve(b, kView, "12");  // takes out both
  Notify(kView, "12");
  EXPECT_EQ(order, "b12a12b12a12");
}

TEST_F(ObserverTest, ARequestIsReadKeyByKey) {
  // The ids of views that the registration is for; an empty id and "0" are the same one.
  const std::pair<const char*, const char*> rows[] = {
      {R"({"ResourceType":"16000","ID":12,"IsRegister":true})", "[12]"},
      {R"({"ResourceType":16000,"ID":"-1","IsRegister":true})", "[4294967295]"},
      {R"({"ResourceType":16000,"ID":"ab","IsRegister":true})", "[0][]"},
      {R"({"ResourceType":16000,"IsRegister":true})", "[0][]"},
      {R"({"ResourceType":16000,"ID":"12","IsRegister":1})", ""},
      {R"({"ResourceType":16002,"ID":"12","IsRegister":true})", ""},
      {R"({"ID":"12","IsRegister":true})", ""},
      {"{", ""},
  };
  for (const auto& [request, expected] : rows) {
    Registry().UninitManager();
    Registry().RegisterResourceUpdate(&a, request);
    std::string notified;
    for (const std::string id : {"12", "4294967295", "0", ""}) {
      Notify(kView, id);
      if (!a.Take().empty()) notified += "[" + id + "]";
    }
    EXPECT_EQ(notified, expected) << request;
  }
}

TEST_F(ObserverTest, ManyAreRegisteredOrWithdrawnByOneRequestAndNullIsIgnored) {
  Registry().RegisterResourceUpdate(nullptr, RegistrationText(kView, "12", true));
  Registry().RegisterMultResourceUpdate({{"7", &a}, {"8", nullptr}, {"x", &b}}, R"({"ResourceType":16001,"ID":"99",)"
                                                                                R"("IsRegister":true})");
  Notify(kView, "12");
  for (const char* id : {"7", "8", "0", "99"}) Notify(kViewGroup, id);
  EXPECT_EQ(Calls(), "110");
  Registry().RegisterMultResourceUpdate({{"7", &a}, {"0", &b}}, R"({"ResourceType":16001})");
  for (const char* id : {"7", "0"}) Notify(kViewGroup, id);
  EXPECT_EQ(Calls(), "000");
}

TEST_F(ObserverTest, ChangesMadeDuringANoticeCountFromTheNextOne) {
  a.onNotice = [this](const auto&) {
    Unobserve(a, kView, "12");
    Unobserve(b, kView, "12");
    Observe(c, kView, "12");
  };
  Observe(a, kView, "12");
  Observe(b, kView, "12");
  Notify(kView, "12");
  EXPECT_EQ(Calls(), "110");
  Notify(kView, "12");
  EXPECT_EQ(Calls(), "001");
}

TEST_F(ObserverTest, AnObserverMayCallBackIntoTheLibrary) {
  CacheGroup(Group(1));
  Observe(a, kViewGroup, "1");
  Observe(b, kView, "9");
  std::string seen;
  a.onNotice = [&](const auto& param) {
    seen += ViewName(9) + Members(1);
    if (param.enum_state == 3) Manager().UpdateViewInCache(View(9, 1, "changed"));
    if (param.enum_state == 4) ClearViewData();
  };
  Manager().InsertViewToCache(View(9, 1, "new"), false);
  EXPECT_EQ(seen, "new9'new' ");
  EXPECT_EQ(ViewName(9), "changed");
  EXPECT_EQ(b.Take().size(), 1u);
  Manager().RemoveViewFromCache(9, false);
  EXPECT_EQ(seen, "new9'new' (none)");
  EXPECT_EQ(GroupName(1), "(none)");
}

TEST_F(ObserverTest, OneThatThrowsKeepsNoOtherFromBeingTold) {
  for (NotingObserver* observer : {&a, &b, &c}) Observe(*observer, kView, "12");
  a.onNotice = b.onNotice = [](const auto&) { throw std::runtime_error("an observer's own"); };
  EXPECT_NO_THROW(Notify(kView, "12"));
  EXPECT_EQ(Calls(), "111");
}

TEST_F(ObserverTest, EveryCallIsLogged) {
  Observe(a, kView, "12");
  Observe(b, kView, "12");
  log->Take();
  ResourceData::IResourceObserver::Param param("12", 3);
  param.child_type = 16000;
  param.other_change_info = "info";
  Registry().UpdateResourceInfo(param, ResourceData::ResourceTypeView);
  const auto line = [](const std::string& text) {
    return "3 ClientResourceStoreWebsocket [QorviViewPlugin::CViewResourceUpdateManager::UpdateResourceInfo]" + text;
  };
  const std::string found = line("if (map_observers.find(res_id) != map_observers.end())");
  const std::string next =
      line("for (auto it = map_observers[res_id].begin(); it < map_observers[res_id].end(); ++it)");
  const std::string call = line("ptr_observer->UpdateResourceInfos(parma);parma.id:12; parma.other_change_info:info");
  const std::string kind = line("UpdateResource(parma);type:16000; parma.enum_state:3; parma.child_type:16000");
  EXPECT_EQ(log->Take(), (Texts{found, next, call, kind, next, call, kind}));
  Registry().UpdateResourceInfo(param, ResourceData::ResourceTypeViewGroup);
  EXPECT_EQ(log->Take(), Texts());
}

}  // namespace
}  // namespace core_test
