// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/View.h"

#include <algorithm>

#include "ResourceStore/Element.h"

namespace QorviViewPlugin {
namespace {

auto MemberWithId(std::vector<std::shared_ptr<CView>>& views, unsigned int id) {
  return std::find_if(views.begin(), views.end(), [id](const auto& view) { return view->GetID() == id; });
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
  m_info.Set(std::make_shared<const ViewInfo>(std::move(info)));
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
  const std::shared_ptr<const ViewInfo> info = Info();
  for (const ViewPage& page : info->vcPages) {
    for (const CameraGridStruct& window : page.vcWindows) {
      if (window.enum_resource_type_ == type && !IsElementKnown(type, window.id_element_)) return false;
    }
  }
  return flag;
}

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

CViewGroup::CViewGroup(const CViewGroup& other)
    : CNonThreadSafe(other), m_info(other.m_info), vcViews(other.Members()) {}

CViewGroup& CViewGroup::operator=(const CViewGroup& other) {
  if (this == &other) return *this;
  m_info = other.m_info;
  std::vector<std::shared_ptr<CView>> members = other.Members();
  WriteLock lock(m_memberLock);
  vcViews.swap(members);
  return *this;
}

void CViewGroup::SetInfo(ViewGroupInfo info) {
  m_info.Set(std::make_shared<const ViewGroupInfo>(std::move(info)));
}

std::vector<std::shared_ptr<CView>> CViewGroup::Members() const {
  ReadLock lock(m_memberLock);
  return vcViews;
}

bool CViewGroup::AddMemberView(std::shared_ptr<CView> view, bool) {
  if (!view) return false;
  WriteLock lock(m_memberLock);
  const auto member = MemberWithId(vcViews, view->GetID());
  if (member != vcViews.end()) vcViews.erase(member);
  vcViews.push_back(std::move(view));
  return true;
}

bool CViewGroup::RemoveMemberView(unsigned int id) {
  WriteLock lock(m_memberLock);
  const auto member = MemberWithId(vcViews, id);
  if (member == vcViews.end()) return false;
  vcViews.erase(member);
  return true;
}

std::shared_ptr<CView> CViewGroup::FindMemberView(unsigned int id) const {
  ReadLock lock(m_memberLock);
  for (const auto& view : vcViews) {
    if (view->GetID() == id) return view;
  }
  return nullptr;
}

bool CViewGroup::GetMemberViews(std::vector<std::shared_ptr<CView>>& views) const {
  ReadLock lock(m_memberLock);
  if (!vcViews.empty()) views = vcViews;
  return true;
}

bool CViewGroup::ClearMemberViews() {
  WriteLock lock(m_memberLock);
  vcViews.clear();
  return true;
}

void CViewGroup::AppendMemberView(const std::shared_ptr<CView>& view) {
  WriteLock lock(m_memberLock);
  vcViews.push_back(view);
}

}  // namespace QorviViewPlugin
