// SPDX-License-Identifier: Apache-2.0
// What look-ups, changes and notices cost as a site grows.
#include <rapidjson/document.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>

#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "Report.h"
#include "ResourceStore/ViewGroupManager.h"
#include "Scale.h"
#include "SiteData.h"
#include "Suites.h"

namespace bench {

namespace {

using namespace QorviViewPlugin;
using ResourceData::IResourceObserver;

class Counter : public IResourceObserver {
 public:
  virtual ~Counter() = default;
  void UpdateResourceInfos(const Param&) override { ++notices; }
  size_t notices = 0;
};

void Register(IResourceObserver& observer, unsigned int view) {
  ViewRegisterResourceUpdate(&observer,
                             R"({"ResourceType":16000,"ID":")" + std::to_string(view) + R"(","IsRegister":true})");
}

SiteSize Site(unsigned int views, unsigned int viewsOfGroup) {
  return {"growth", views, 1, 4, viewsOfGroup};
}

void Load(const SiteSize& site) {
  ResourceStore::CViewGroupManager::Instance().SetDownloadedData(GroupListText(site), ViewListText(site), true);
  std::string response;
  Check(IsInitViewGroupFinish("", response) && IsInitViewFinish("", response), "the site was not loaded");
  ResourceStore::CViewGroupManager::Instance().SetDownloadedData("", "", true);
}

// Leaves the site loaded.
void MeasureLoad(const SiteSize& site, const std::string& count) {
  const std::string groups = GroupListText(site);
  const std::string views = ViewListText(site);
  std::string response;
  const auto download = [&] {
    ClearViewData();
    ResourceStore::CViewGroupManager::Instance().SetDownloadedData(groups, views, true);
    Check(IsInitViewGroupFinish("", response), "the groups were not loaded");
  };
  download();
  Measure("load the site" + count,
          {[&] { Check(IsInitViewFinish("", response), "the views were not loaded"); }, download});
  Check(IsInitViewFinish("", response), "the views were not loaded");
  ResourceStore::CViewGroupManager::Instance().SetDownloadedData("", "", true);
  std::optional<rapidjson::Document> document;
  Measure("bare DOM parse of its text" + count, {[&] {
                                                   document.emplace();
                                                   document->Parse(views.c_str());
                                                   Use(&document);
                                                 },
                                                 [&] { document.reset(); }});
}

// Ids all over the site, in no order.
std::vector<unsigned int> SomeIds(unsigned int views) {
  std::vector<unsigned int> ids;
  for (unsigned int n = 1; n <= 1000; ++n) ids.push_back(1 + static_cast<unsigned int>(n * 7919ull % views));
  return ids;
}

void MeasureLookUp(unsigned int views, const std::string& count) {
  const std::vector<unsigned int> ids = SomeIds(views);
  Measure("GetViewByID" + count, {[ids] {
                                    size_t found = 0;
                                    for (unsigned int id : ids) found += Manager().GetViewByID(id) != nullptr;
                                    Check(found == ids.size(), "not every view is cached");
                                  },
                                  {},
                                  static_cast<double>(ids.size())});
}

using View = std::shared_ptr<unsigned int>;

// The same on a table alone, with nothing beside it in memory: what the machine's caches make of the size.
template <class Table>
void MeasureBareTable(const std::string& name, unsigned int views) {
  Table table;
  for (unsigned int id = 1; id <= views; ++id) table.emplace(id, std::make_shared<unsigned int>(id));
  const std::vector<unsigned int> ids = SomeIds(views);
  const auto units = static_cast<double>(ids.size());
  const std::string count = ViewCount(views);
  const Side lookUp{[&] {
                      size_t found = 0;
                      for (unsigned int id : ids) {
                        const View view = table.find(id)->second;
                        found += view != nullptr;
                      }
                      Check(found == ids.size(), "not every view is in the bare table");
                    },
                    {},
                    units};
  Measure("look-up in a bare " + name + count, lookUp);
  const Side change{[&] {
                      for (unsigned int id : ids) {
                        table.erase(id);
                        table.emplace(id, std::make_shared<unsigned int>(id));
                      }
                    },
                    {},
                    units};
  Measure("remove and add in a bare " + name + count, change);
}

// Change documents of the same views, each newer than the one before it.
class NewerEachTime {
 public:
  NewerEachTime(const SiteSize& site, unsigned int first, unsigned int last)
      : m_text(ChangeText(site, first, last, 1, s_next)) {
    const std::string member = R"("ChangeNumber":")";
    for (size_t at = m_text.find(member); at != std::string::npos; at = m_text.find(member, at + 1)) {
      m_places.push_back(at + member.size());
    }
  }
  const std::string& Next() {
    const std::string number = std::to_string(++s_next);
    for (const size_t place : m_places) m_text.replace(place, number.size(), number);
    return m_text;
  }

 private:
  static inline ChangeNumber s_next = 1'000'000'000'000;  // never of another length

  std::string m_text;
  std::vector<size_t> m_places;
};

constexpr char kBareChange[] = "replace a record in a bare std::unordered_map";
constexpr char kBareLookUp[] = "look-up in a bare std::unordered_map";

// A changed view, and one that goes and comes again.
void MeasureChanges(const SiteSize& site, const std::string& count) {
  std::vector<ViewInfo> changed;
  for (unsigned int id : SomeIds(site.views)) changed.push_back(MakeView(site, id));
  const auto units = static_cast<double>(changed.size());
  ChangeNumber number = site.Groups() + site.views;
  Measure("change a view" + count, {[&] {
                                      for (ViewInfo& view : changed) {
                                        view.nChangeNumber = ++number;
                                        Check(Manager().UpdateViewInCache(view), "a change was not taken");
                                      }
                                    },
                                    {},
                                    units});
  Measure("remove and add a view" + count, {[&] {
                                              for (ViewInfo& view : changed) {
                                                Manager().RemoveViewFromCache(view.idView, false, ++number);
                                                view.nChangeNumber = ++number;
                                                Manager().InsertViewToCache(view, false);
                                              }
                                            },
                                            {},
                                            units});
  std::unordered_map<unsigned int, std::shared_ptr<const ViewInfo>> records;
  for (unsigned int id = 1; id <= site.views; ++id) {
    records.emplace(id, std::make_shared<const ViewInfo>(MakeView(site, id)));
  }
  Measure(kBareChange + count, {[&] {
                                  for (const ViewInfo& view : changed) {
                                    records[view.idView] = std::make_shared<const ViewInfo>(view);
                                  }
                                },
                                {},
                                units});
}

void MeasureNotices(unsigned int views, const std::string& count) {
  std::deque<Counter> observers(views);
  for (unsigned int id = 1; id <= views; ++id) Register(observers[id - 1], id);
  std::vector<IResourceObserver::Param> notices;
  for (unsigned int id : SomeIds(views)) notices.emplace_back(std::to_string(id), 7);
  auto& registry = Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance();
  Measure("notice to its observer" + count, {[&] {
                                               for (const auto& notice : notices) {
                                                 registry.UpdateResourceInfo(notice, ResourceData::ResourceTypeView);
                                               }
                                             },
                                             {},
                                             static_cast<double>(notices.size())});
  size_t heard = 0;
  for (const Counter& observer : observers) heard += observer.notices;
  Check(heard > 0 && heard % notices.size() == 0, "not every notice was heard");
  registry.UninitManager();
}

void MeasureObserversOfOneView(unsigned int observerCount) {
  std::deque<Counter> observers(observerCount);
  for (Counter& observer : observers) Register(observer, 1);
  auto& registry = Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance();
  const IResourceObserver::Param notice("1", 7);
  Measure("notice for each of " + std::to_string(observerCount) + " observers",
          {[&] { registry.UpdateResourceInfo(notice, ResourceData::ResourceTypeView); },
           {},
           static_cast<double>(observerCount)});
  for (const Counter& observer : observers) {
    Check(observer.notices == observers.front().notices, "the observers heard differently");
  }
  registry.UninitManager();
}

// A document of many changed views beside documents of one. Their views join the groups once more with every document,
// which is how it has to be; so the runs are few.
void MeasureDocuments(const SiteSize& site) {
  constexpr unsigned int kMany = 500;
  NewerEachTime many(site, 1, kMany);
  NewerEachTime one(site, 7, 7);
  auto& downloads = ResourceStore::CViewGroupManager::Instance();
  Measure("changed view in a document of 500", {[&] { downloads.NotifyViewsUpdate(many.Next()); }, {}, kMany});
  Measure("changed view in a document of 1", {[&] { downloads.NotifyViewsUpdate(one.Next()); }, {}, 1});
}

void MeasureForeignChange(const SiteSize& site, const std::string& count, bool isLargest) {
  const unsigned int id = site.views / 2;
  NewerEachTime change(site, id, id);
  const std::string text = change.Next();
  Counter observer;
  Register(observer, id);
  auto& downloads = ResourceStore::CViewGroupManager::Instance();
  const Side taking{[&] {
    const size_t before = observer.notices;
    downloads.NotifyViewsUpdate(change.Next());
    Check(observer.notices == before + 1, "the change was not noticed");
  }};
  const Side parsing{[&] {
    rapidjson::Document document;
    document.Parse(text.c_str());
    Use(&document);
  }};
  Measure("foreign change, text to notice" + count, taking);
  Measure("bare DOM parse of its document" + count, parsing);
  if (isLargest) AddRatio({"foreign change, text to notice" + count, "bare DOM parse"}, {4}, taking, parsing);
  CViewResourceUpdateManager::Instance().UninitManager();
}

// How often the system took the processor from this thread, which waited for nothing.
long TimesPreempted() {
  rusage usage{};
  getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_nivcsw;
}

// How long one of them takes at most, while another thread loads the site. Those that the system interrupted for
// another thread do not count: that is a time slice and no wait for the library.
double LongestLookUpBesideALoad(const SiteSize& site) {
  using Clock = std::chrono::steady_clock;
  std::atomic<bool> isLoading{true};
  Clock::duration longest{};
  std::thread reader([&] {
    long preempted = TimesPreempted();
    while (isLoading) {
      const auto start = Clock::now();
      Manager().GetViewByID(1);
      const auto time = Clock::now() - start;
      const long before = std::exchange(preempted, TimesPreempted());
      if (preempted == before) longest = std::max(longest, time);
    }
  });
  Load(site);
  isLoading = false;
  reader.join();
  ClearViewData();
  return std::chrono::duration<double, std::milli>(longest).count();
}

void AddGrowthRows(const std::vector<unsigned int>& sizes) {
  const std::string base = ViewCount(sizes.front());
  const auto addGrowth = [&](const std::string& what, double limit, const std::string& yardstick = {}) {
    for (size_t n = 1; n < sizes.size(); ++n) {
      const std::string count = ViewCount(sizes[n]);
      AddGrowth({what + count, base.substr(2)}, limit, what + count, what + base,
                {yardstick + count, yardstick + base});
    }
  };
  addGrowth("GetViewByID", 2.5, kBareLookUp);
  addGrowth("change a view", 2.5, kBareChange);
  addGrowth("remove and add a view", 2.5, kBareChange);
  addGrowth("notice to its observer", 2.5);
  const std::string largest = ViewCount(sizes.back());
  AddRatioOfTimes({"GetViewByID" + largest, kBareLookUp}, {4}, "GetViewByID" + largest, kBareLookUp + largest);
  for (const char* what : {"look-up in a bare std::map", kBareLookUp, kBareChange, "remove and add in a bare std::map",
                           "remove and add in a bare std::unordered_map"}) {
    addGrowth(what, 0);
  }
  for (const auto& [what, limit] : {std::pair{"change a view", 2.5}, std::pair{"remove and add a view", 2.0}}) {
    const std::string few = base + " in one group", many = largest + " in one group";
    AddGrowth({what + many, base.substr(2)}, limit, what + many, what + few, {kBareChange + many, kBareChange + few});
  }
  AddGrowth({"changed view in a document of 500", "in one of 1"}, 2.5, "changed view in a document of 500",
            "changed view in a document of 1");
  AddGrowth({"notice for each of 1000 observers", "of 10"}, 2.5, "notice for each of 1000 observers",
            "notice for each of 10 observers");
}

}  // namespace

void GrowthSuite() {
  std::vector<unsigned int> sizes{1000, 10000, 100000};
  if (TheOptions().isShort) sizes = {1000, 10000};
  // The smallest once more at the end: a machine that grows slower or faster meanwhile does so for either size.
  std::vector<unsigned int> order{100};  // for the picture alone
  order.insert(order.end(), sizes.begin(), sizes.end());
  order.push_back(sizes.front());
  for (size_t n = 0; n < order.size(); ++n) {
    const unsigned int views = order[n];
    const std::string count = ViewCount(views);
    MeasureLoad(Site(views, 100), count);
    MeasureLookUp(views, count);
    MeasureNotices(views, count);
    MeasureChanges(Site(views, 100), count);
    MeasureForeignChange(Site(views, 100), count, views == sizes.back());
    if (n == 1) MeasureDocuments(Site(sizes.front(), 100));
    ClearViewData();
    Load(Site(views, views));
    MeasureChanges(Site(views, views), count + " in one group");
    ClearViewData();
    MeasureBareTable<std::map<unsigned int, View>>("std::map", views);
    MeasureBareTable<std::unordered_map<unsigned int, View>>("std::unordered_map", views);
  }
  AddFigure({"longest look-up while " + std::to_string(sizes.back()) + " views are loaded", "", "ms"}, {1}, 5,
            [&] { return LongestLookUpBesideALoad(Site(sizes.back(), 100)); });
  MeasureObserversOfOneView(10);
  MeasureObserversOfOneView(1000);

  AddGrowthRows(sizes);
}

}  // namespace bench
