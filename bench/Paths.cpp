// SPDX-License-Identifier: Apache-2.0
// Reading a document through full paths beside looking the members up where they stand.
#include <rapidjson/document.h>
#include <rapidjson/pointer.h>

#include <string>

#include "NetLink/RapidJsonProto.h"
#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "Report.h"
#include "SiteData.h"
#include "Suites.h"

namespace bench {

namespace {

constexpr const char* kKeys[] = {"ResourceType",     "SiteID",      "ResourceID", "RelateResourceID", "WindowNo",
                                 "PresetPointIndex", "CruiseIndex", "TrackIndex", "StreamType"};
constexpr size_t kKeyCount = std::size(kKeys);

long long SumByPaths(NetLink::CRapidJsonProto& document) {
  long long sum = 0;
  QorviViewPlugin::PathCursor at(document, "/ResponseStatus/Data/ViewList/");
  const int views = at.Count("View");
  for (int v = 1; v <= views; ++v) {
    const auto view = at.Enter("View", v);
    const auto page = at.Enter("PlanPages", 1);
    const int windows = at.Count("PlanViewItem");
    for (int w = 1; w <= windows; ++w) {
      const auto window = at.Enter("PlanViewItem", w);
      for (const char* key : kKeys) sum += at.Number(key);
    }
  }
  return sum;
}

// The paths in whole, made anew for each read as a caller without a cursor makes them.
long long SumByTextPaths(NetLink::CRapidJsonProto& document) {
  long long sum = 0;
  const int views = document.get_cnt("/ResponseStatus/Data/ViewList/View");
  for (int v = 1; v <= views; ++v) {
    const std::string page = "/ResponseStatus/Data/ViewList/View[" + std::to_string(v) + "]/PlanPages[1]/";
    const int windows = document.get_cnt(page + "PlanViewItem");
    for (int w = 1; w <= windows; ++w) {
      const std::string window = page + "PlanViewItem[" + std::to_string(w) + "]/";
      for (const char* key : kKeys) sum += document.get_int_v(window + key, -1);
    }
  }
  return sum;
}

const rapidjson::Value& ViewsOf(const rapidjson::Document& document) {
  return document["ResponseStatus"]["Data"]["ViewList"]["View"];
}

long long SumByMembers(const rapidjson::Document& document) {
  long long sum = 0;
  for (const auto& view : ViewsOf(document).GetArray()) {
    for (const auto& window : view["PlanPages"][0]["PlanViewItem"].GetArray()) {
      for (const char* key : kKeys) {
        const auto member = window.FindMember(key);
        sum += member != window.MemberEnd() && member->value.IsInt() ? member->value.GetInt() : -1;
      }
    }
  }
  return sum;
}

long long SumByPointers(const rapidjson::Document& document, const SiteSize& size) {
  long long sum = 0;
  for (unsigned int v = 0; v < size.views; ++v) {
    for (unsigned int w = 0; w < size.windows; ++w) {
      const std::string window = "/ResponseStatus/Data/ViewList/View/" + std::to_string(v) +
                                 "/PlanPages/0/PlanViewItem/" + std::to_string(w) + "/";
      for (const char* key : kKeys) {
        const rapidjson::Value* const value = rapidjson::Pointer((window + key).c_str()).Get(document);
        sum += value && value->IsInt() ? value->GetInt() : -1;
      }
    }
  }
  return sum;
}

}  // namespace

void PathsSuite() {
  const std::string text = ViewListText(kSmall);
  NetLink::CRapidJsonProto document;
  rapidjson::Document bare;
  Check(document.set_str(text) && !bare.Parse(text.c_str()).HasParseError(), "the site cannot be parsed");
  const long long right = SumByMembers(bare);
  const double reads = static_cast<double>(kKeyCount) * kSmall.Windows();
  const Side members{[&] { Check(SumByMembers(bare) == right, "members read"); }, {}, reads};
  AddRatio({"get_int_v through full paths, S", "FindMember at the parent"}, {2},
           {[&] { Check(SumByPaths(document) == right, "paths read"); }, {}, reads}, members);
  AddRatio({"get_int_v, each path put together from texts, S", "FindMember at the parent"}, {},
           {[&] { Check(SumByTextPaths(document) == right, "text paths read"); }, {}, reads}, members);
  AddRatio({"rapidjson::Pointer for each path, S", "FindMember at the parent"}, {},
           {[&] { Check(SumByPointers(bare, kSmall) == right, "pointers read"); }, {}, reads}, members);
}

}  // namespace bench
