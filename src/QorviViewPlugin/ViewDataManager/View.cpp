// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/View.h"

#include "ResourceStore/Element.h"

namespace QorviViewPlugin {
namespace {

// Elements of other types than these four count as known.
bool IsElementKnown(int type, unsigned int elementId) {
  auto& elements = Vant::Base::CSingleton<ResourceStore::CWorkStationManager>::Instance();
  switch (type) {
    case ResourceTypeCamera:
      return elements.FindCameraElementByID(elementId) != nullptr;
    case ResourceTypeDoor:
      return elements.FindDoorElementByID(elementId) != nullptr;
    case ResourceTypeRadar:
      return elements.FindRadarElementByID(elementId) != nullptr;
    case ResourceTypeElevator:
      return elements.FindElevatorElementByID(elementId) != nullptr;
    default:
      return true;
  }
}

}  // namespace

CView::CView(const CView& other) : CNonThreadSafe(other), m_info(other.m_info), mapResourceFlag(other.Flags()) {}

CView& CView::operator=(const CView& other) {
  if (this == &other) return *this;
  m_info = other.m_info;
  std::map<int, bool> flags = other.Flags();
  MutexLock lock(m_flagLock);
  mapResourceFlag.swap(flags);
  return *this;
}

bool CView::SetInfo(ViewInfo info) {
  SetInfo(std::make_shared<const ViewInfo>(std::move(info)));
  return true;
}

std::map<int, bool> CView::Flags() const {
  MutexLock lock(m_flagLock);
  return mapResourceFlag;
}

void CView::SetResourceFlag(int type, bool flag) {
  MutexLock lock(m_flagLock);
  mapResourceFlag[type] = flag;
}

bool CView::CheckResourceExist(int type) const {
  bool flag = false;
  {
    MutexLock lock(m_flagLock);
    const auto entry = mapResourceFlag.find(type);
    if (entry == mapResourceFlag.end()) return false;
    flag = entry->second;
  }
  const bool showsUnknown = ShowsUnknownElement(*Info(), type);
  return flag && !showsUnknown;
}

bool ShowsUnknownElement(const ViewInfo& view, int type) {
  for (const ViewPage& page : view.vcPages) {
    for (const CameraGridStruct& window : page.vcWindows) {
      if (window.enum_resource_type_ == type && !IsElementKnown(type, window.id_element_)) return true;
    }
  }
  return false;
}

void MemberViews::Append(std::shared_ptr<CView> view) {
  const size_t place = NextPlace();
  Places entry{{view->GetID(), place}};
  m_views.emplace_hint(m_views.end(), place, std::move(view));
  m_places.merge(entry);  // moves the node, which cannot fail
}

void MemberViews::Append(MemberViews&& others) {
  if (m_views.empty()) {
    m_views.swap(others.m_views);
    m_places.swap(others.m_places);
    return;
  }
  const size_t first = NextPlace();
  while (!others.m_views.empty()) {
    auto node = others.m_views.extract(others.m_views.begin());
    node.key() += first;
    m_views.insert(m_views.end(), std::move(node));
  }
  while (!others.m_places.empty()) {
    auto node = others.m_places.extract(others.m_places.begin());
    node.value().second += first;
    m_places.insert(std::move(node));
  }
}

size_t MemberViews::NextPlace() const {
  return m_views.empty() ? 0 : m_views.rbegin()->first + 1;
}

bool MemberViews::Remove(unsigned int id) {
  const auto entry = FirstOf(id);
  if (entry == m_places.end()) return false;
  m_views.erase(entry->second);
  m_places.erase(entry);
  return true;
}

std::shared_ptr<CView> MemberViews::Find(unsigned int id) const {
  const auto entry = FirstOf(id);
  return entry == m_places.end() ? nullptr : m_views.at(entry->second);
}

std::vector<std::shared_ptr<CView>> MemberViews::All() const {
  std::vector<std::shared_ptr<CView>> views;
  views.reserve(m_views.size());
  for (const auto& [place, view] : m_views) views.push_back(view);
  return views;
}

MemberViews::Places::const_iterator MemberViews::FirstOf(unsigned int id) const {
  const auto entry = m_places.lower_bound({id, 0});
  return entry != m_places.end() && entry->first == id ? entry : m_places.end();
}

CViewGroup::CViewGroup(const CViewGroup& other)
    : CNonThreadSafe(other), m_info(other.m_info), vcViews(other.Members()) {}

CViewGroup& CViewGroup::operator=(const CViewGroup& other) {
  if (this == &other) return *this;
  m_info = other.m_info;
  MemberViews members = other.Members();
  WriteLock lock(m_memberLock);
  std::swap(vcViews, members);
  return *this;
}

void CViewGroup::SetInfo(ViewGroupInfo info) {
  m_info.Set(std::make_shared<const ViewGroupInfo>(std::move(info)));
}

MemberViews CViewGroup::Members() const {
  ReadLock lock(m_memberLock);
  return vcViews;
}

bool CViewGroup::AddMemberView(std::shared_ptr<CView> view, bool) {
  if (!view) return false;
  WriteLock lock(m_memberLock);
  const unsigned int id = view->GetID();
  const bool replaces = vcViews.Find(id) != nullptr;
  vcViews.Append(std::move(view));
  if (replaces) vcViews.Remove(id);
  return true;
}

bool CViewGroup::RemoveMemberView(unsigned int id) {
  WriteLock lock(m_memberLock);
  return vcViews.Remove(id);
}

std::shared_ptr<CView> CViewGroup::FindMemberView(unsigned int id) const {
  ReadLock lock(m_memberLock);
  return vcViews.Find(id);
}

bool CViewGroup::GetMemberViews(std::vector<std::shared_ptr<CView>>& views) const {
  ReadLock lock(m_memberLock);
  std::vector<std::shared_ptr<CView>> members = vcViews.All();
  if (!members.empty()) views = std::move(members);
  return true;
}

bool CViewGroup::ClearMemberViews() {
  MemberViews members;
  WriteLock lock(m_memberLock);
  std::swap(vcViews, members);
  return true;
}

void CViewGroup::AppendMemberView(const std::shared_ptr<CView>& view) {
  WriteLock lock(m_memberLock);
  vcViews.Append(view);
}

void CViewGroup::AppendMemberViews(MemberViews&& views) {
  WriteLock lock(m_memberLock);
  vcViews.Append(std::move(views));
}

}  // namespace QorviViewPlugin
