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

CView::CView(const CView& other) : CNonThreadSafe(other), m_info(other.m_info), mapResourceFlag(other.CopyOfFlags()) {}

CView& CView::operator=(const CView& other) {
  if (this == &other) return *this;
  m_info = other.m_info;
  std::unique_ptr<ResourceFlags> flags = other.CopyOfFlags();
  MutexLock lock(s_flagLock);
  mapResourceFlag.swap(flags);
  return *this;
}

bool CView::SetInfo(ViewInfo info) {
  SetInfo(std::make_shared<const ViewInfo>(std::move(info)));
  return true;
}

std::unique_ptr<CView::ResourceFlags> CView::CopyOfFlags() const {
  MutexLock lock(s_flagLock);
  return mapResourceFlag ? std::make_unique<ResourceFlags>(*mapResourceFlag) : nullptr;
}

void CView::SetResourceFlag(int type, bool flag) {
  MutexLock lock(s_flagLock);
  if (!mapResourceFlag) mapResourceFlag = std::make_unique<ResourceFlags>();
  (*mapResourceFlag)[type] = flag;
}

bool CView::CheckResourceExist(int type) const {
  bool flag = false;
  {
    MutexLock lock(s_flagLock);
    if (!mapResourceFlag) return false;
    const auto entry = mapResourceFlag->find(type);
    if (entry == mapResourceFlag->end()) return false;
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

MemberViews::MemberViews(const MemberViews& other) {
  m_byId.reserve(other.m_byId.size());
  for (const Member& member : other.m_members) Append(member.id, member.view);
}

void MemberViews::Swap(MemberViews& other) noexcept {
  m_members.swap(other.m_members);
  m_byId.swap(other.m_byId);
}

void MemberViews::Append(std::shared_ptr<CView> view) {
  const unsigned int id = view->GetID();
  Append(id, std::move(view));
}

void MemberViews::Append(unsigned int id, std::shared_ptr<CView> view) {
  Members joining;
  joining.push_back({id, std::move(view), {}});
  const auto member = joining.begin();
  const auto [known, isFirst] = m_byId.try_emplace(id, MembersOfId{member, member});
  if (!isFirst) known->second.last = known->second.last->nextOfId = member;
  m_members.splice(m_members.end(), joining);
}

void MemberViews::Append(MemberViews&& others) {
  if (m_members.empty()) {
    Swap(others);
    return;
  }
  // No more buckets for now: there may be no memory for them. The next member that is appended alone makes them.
  const float usualLoad = m_byId.max_load_factor();
  m_byId.max_load_factor(1e6F);
  while (!others.m_byId.empty()) {
    auto joining = m_byId.insert(others.m_byId.extract(others.m_byId.begin()));
    if (joining.inserted) continue;
    MembersOfId& known = joining.position->second;
    known.last->nextOfId = joining.node.mapped().first;
    known.last = joining.node.mapped().last;
  }
  m_byId.max_load_factor(usualLoad);
  m_members.splice(m_members.end(), others.m_members);
}

bool MemberViews::Remove(unsigned int id) {
  const auto known = m_byId.find(id);
  if (known == m_byId.end()) return false;
  auto& [first, last] = known->second;
  const auto leaving = first;
  if (leaving == last) {
    m_byId.erase(known);
  } else {
    first = leaving->nextOfId;
  }
  m_members.erase(leaving);
  return true;
}

std::shared_ptr<CView> MemberViews::Find(unsigned int id) const {
  const auto known = m_byId.find(id);
  return known == m_byId.end() ? nullptr : known->second.first->view;
}

std::vector<std::shared_ptr<CView>> MemberViews::All() const {
  std::vector<std::shared_ptr<CView>> views;
  views.reserve(m_members.size());
  for (const Member& member : m_members) views.push_back(member.view);
  return views;
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
