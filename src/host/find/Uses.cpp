// SPDX-License-Identifier: Apache-2.0
#include "host/find/Uses.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <set>

#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/PortableFile.h"
#include "json/Numbers.h"

namespace host {
namespace {

using rapidjson::Value;

Resource ShownBy(const Value& window) {
  return {NumberOf(window, "ResourceType"), UnsignedId(TextOf(window, "ResourceID"))};
}

Resource RelatedTo(const Value& window) {
  return {TypeOfRelated(NumberOf(window, "RelateResourceType", -1)), std::to_string(IdOf(window, "RelateResourceID"))};
}

ResourceType CycledType(const Value& cycle) {
  const int type = NumberOf(cycle, "cycle_type");
  return type == 0 ? kCameraType : type == 1 ? kAreaType : 0;
}

Resource CycledBy(ResourceType type, const Value& entry) {
  return {type, UnsignedId(TextOf(entry, "ResourceID"))};
}

// The window whose zoom window this one shows; its own where it shows none.
const Value& LinkedWindow(const Value& windows, const Value& window) {
  const Value& link = ObjectOf(window, "RelatedZoomWindow");
  if (NumberOf(link, "ZoomWindowNo", -1) < 0) return window;
  const std::string number = TextOf(link, "ViewItemWindowNo");
  for (const Value& other : windows.GetArray()) {
    if (std::to_string(NumberOf(other, "Sequence")) == number) return other;
  }
  return window;
}

class Collector {
 public:
  void AddPage(const Value& page) {
    ++m_page;
    const Value& windows = ListOf(page, "PlanItems");
    for (const Value& window : windows.GetArray()) AddWindow(windows, window);
  }
  std::vector<Use> Take() { return std::move(m_uses); }

 private:
  void AddWindow(const Value& windows, const Value& window) {
    m_window = NumberOf(window, "Sequence");
    const Value& linked = LinkedWindow(windows, window);
    if (&linked == &window) {
      Add(Role::kShown, ShownBy(window));
    } else {
      Add(Role::kZoomLink, ShownBy(linked));
      if (ShownBy(window) != ShownBy(linked)) Add(Role::kShown, ShownBy(window));
    }
    Add(Role::kRelated, RelatedTo(window));
    std::set<Resource> cycled;
    const Value& cycle = ObjectOf(window, "CycleInfo");
    for (const Value& entry : ListOf(cycle, "CycleResourceID").GetArray()) {
      const Resource resource = CycledBy(CycledType(cycle), entry);
      if (cycled.insert(resource).second) Add(Role::kCycle, resource);
    }
  }

  void Add(Role role, const Resource& resource) {
    if (resource.type != 0 && IsOfSomething(resource.id)) m_uses.push_back({m_page, m_window, role, resource});
  }

  int m_page = 0;
  int m_window = 0;
  std::vector<Use> m_uses;
};

class Replacement {
 public:
  explicit Replacement(const Substitutes& substitutes) : m_substitutes(substitutes) {}

  void Change(Value& pages, rapidjson::Document::AllocatorType& memory) {
    m_memory = &memory;
    for (Value& page : pages.GetArray()) {
      if (!page.HasMember("PlanItems")) continue;
      for (Value& window : page["PlanItems"].GetArray()) ChangeWindow(window);
    }
  }
  size_t Places() const { return m_places; }

 private:
  void ChangeWindow(Value& window) {
    if (const Substitute* other = SubstituteFor(ShownBy(window)))
      ChangeIds(window, SignedId(other->resource.id), other->site);
    ChangeRelation(window);
    if (!window.HasMember("CycleInfo")) return;
    const ResourceType type = CycledType(window["CycleInfo"]);
    for (Value& entry : window["CycleInfo"]["CycleResourceID"].GetArray()) {
      const Substitute* other = SubstituteFor(CycledBy(type, entry));
      if (other) ChangeIds(entry, other->resource.id, UnsignedId(other->site));
    }
  }

  // Null where the resource stays.
  const Substitute* SubstituteFor(const Resource& resource) {
    const auto found = m_substitutes.find(resource);
    if (found == m_substitutes.end()) return nullptr;
    ++m_places;
    return &found->second;
  }

  void ChangeIds(Value& object, const std::string& id, const std::string& site) {
    Set(object, "ResourceID", id);
    if (!site.empty()) Set(object, "SiteID", site);
  }

  void ChangeRelation(Value& window) {
    const Substitute* other = SubstituteFor(RelatedTo(window));
    if (!other) return;
    window["RelateResourceID"].SetInt(json::WholeNumber<int32_t>(SignedId(other->resource.id)).value_or(-1));
    Set(window, "RelateResourceName", other->name);
  }

  void Set(Value& object, const char* key, const std::string& text) {
    object[key].SetString(text.data(), static_cast<rapidjson::SizeType>(text.size()), *m_memory);
  }

  const Substitutes& m_substitutes;
  rapidjson::Document::AllocatorType* m_memory = nullptr;
  size_t m_places = 0;
};

void AddSettings(const Value& window, std::set<std::string>& settings) {
  const std::pair<const char*, const char*> numbers[] = {
      {"PresetId", "preset "}, {"CruiseIndex", "cruise "}, {"TrackIndex", "track "}};
  for (const auto& [key, word] : numbers) {
    if (const int number = NumberOf(window, key); number > 0) settings.insert(word + std::to_string(number));
  }
  if (FlagOf(ObjectOf(window, "FishEye"), "is_fisheye_open")) settings.insert("fisheye");
}

}  // namespace

const char* RoleWord(Role role) {
  constexpr const char* kWords[] = {"shown", "zoom link", "related", "cycle"};
  return kWords[static_cast<int>(role)];
}

std::vector<Use> UsesIn(const Value& pages) {
  Collector collector;
  for (const Value& page : pages.GetArray()) collector.AddPage(page);
  return collector.Take();
}

std::string WithOtherResources(const Value& pages, const Substitutes& substitutes, size_t& places) {
  rapidjson::Document changed;
  ParseJson(KeepPages(pages, "View"), changed);
  Replacement replacement(substitutes);
  replacement.Change(changed, changed.GetAllocator());
  places = replacement.Places();
  return KeepPages(changed, "View");
}

std::vector<std::string> SettingsFor(const Value& pages, const Resource& resource) {
  std::set<std::string> settings;
  for (const Value& page : pages.GetArray()) {
    for (const Value& window : ListOf(page, "PlanItems").GetArray()) {
      if (ShownBy(window) == resource) AddSettings(window, settings);
    }
  }
  return {settings.begin(), settings.end()};
}

}  // namespace host
