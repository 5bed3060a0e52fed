// SPDX-License-Identifier: Apache-2.0
// The cached objects: CView and CViewGroup. Any thread.
#pragma once

#include <list>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "QorviViewPlugin/base/Locks.h"
#include "VantBase/Singleton.h"

namespace QorviViewPlugin {

// A record that is replaced as a whole: readers share the record that was current when they asked, so that a long
// read neither copies it nor sees it change. m_lock is a leaf lock that guards the pointer alone.
template <class Record>
class RecordSlot {
 public:
  RecordSlot() : m_record(std::make_shared<const Record>()) {}
  explicit RecordSlot(Record record) : m_record(std::make_shared<const Record>(std::move(record))) {}
  RecordSlot(const RecordSlot& other) : m_record(other.Get()) {}
  RecordSlot& operator=(const RecordSlot& other) {
    if (this != &other) Set(other.Get());
    return *this;
  }

  // Never empty.
  std::shared_ptr<const Record> Get() const EXCLUDES(m_lock) {
    MutexLock lock(m_lock);
    return m_record;
  }
  void Set(std::shared_ptr<const Record> record) EXCLUDES(m_lock) {
    MutexLock lock(m_lock);
    m_record.swap(record);
  }

 private:
  mutable Mutex m_lock;
  std::shared_ptr<const Record> m_record GUARDED_BY(m_lock);
};

// One cached view. A copy shares the present record and goes its own way from there. The base of this class and of
// CViewGroup is a marker only: both lock for themselves.
class CView : public Vant::Base::CNonThreadSafe {
 public:
  CView() = default;
  explicit CView(ViewInfo info) : m_info(std::move(info)) {}
  CView(const CView& other);
  CView& operator=(const CView& other);

  unsigned int GetID() const { return m_info.Get()->idView; }
  std::string GetName() const { return m_info.Get()->strName; }
  unsigned int GetViewGroupID() const { return m_info.Get()->idViewGroup; }
  unsigned int GetUserID() const { return m_info.Get()->idUser; }
  int GetViewType() const { return m_info.Get()->enumViewType; }
  bool IsShared() const { return m_info.Get()->bShared; }
  std::string GetSharedUserName() const { return m_info.Get()->strSharedUserName; }
  void GetInfo(ViewInfo& info) const { info = *m_info.Get(); }
  // The record itself, for readers that need no copy.
  std::shared_ptr<const ViewInfo> Info() const { return m_info.Get(); }
  // Replaces the record; always true.
  bool SetInfo(ViewInfo info);
  // The same, with a record made before; cannot fail.
  void SetInfo(std::shared_ptr<const ViewInfo> info) { m_info.Set(std::move(info)); }

  // Marks whether elements of that resource type are watched. Marks, and the pending checks that depend on them, exist
  // for programs outside this repository only.
  void SetResourceFlag(int type, bool flag) EXCLUDES(s_flagLock);
  // The mark; but false when the type was never marked or a window of that type shows an element that the platform does
  // not know.
  bool CheckResourceExist(int type) const EXCLUDES(s_flagLock);

 private:
  using ResourceFlags = std::map<int, bool>;

  std::unique_ptr<ResourceFlags> CopyOfFlags() const EXCLUDES(s_flagLock);

  RecordSlot<ViewInfo> m_info;
  // Few views are marked, if any, so that a view has room for neither marks nor a lock of its own. A leaf lock.
  static inline Mutex s_flagLock;
  std::unique_ptr<ResourceFlags> mapResourceFlag GUARDED_BY(s_flagLock);
};

// Whether a window of that type, one of the four checked ones (camera, door, radar, elevator), shows an element that
// the platform does not know.
bool ShowsUnknownElement(const ViewInfo& view, int type);

// The members of a group, in the order in which they joined it; the same view, or several of one id, may be there more
// than once. A member is known by the id that its view had when it joined. Adding, finding or removing one costs the
// same whatever their number. One thread at a time.
class MemberViews {
 public:
  MemberViews() = default;
  MemberViews(const MemberViews& other);
  MemberViews(MemberViews&& other) noexcept { Swap(other); }
  MemberViews& operator=(MemberViews other) noexcept {
    Swap(other);
    return *this;
  }

  void Swap(MemberViews& other) noexcept;
  // Where memory runs out, nothing is appended.
  void Append(std::shared_ptr<CView> view);
  // Takes the others over behind its own, in their order; cannot fail.
  void Append(MemberViews&& others);
  // Removes the first member with that id; whether one was removed.
  bool Remove(unsigned int id);
  // The first member with that id, or empty.
  std::shared_ptr<CView> Find(unsigned int id) const;
  std::vector<std::shared_ptr<CView>> All() const;

 private:
  struct Member;
  using Members = std::list<Member>;
  struct Member {
    unsigned int id;
    std::shared_ptr<CView> view;
    Members::iterator nextOfId;  // set for all but the last one of the id
  };
  struct MembersOfId {
    Members::iterator first, last;
  };

  void Append(unsigned int id, std::shared_ptr<CView> view);

  Members m_members;
  std::unordered_map<unsigned int, MembersOfId> m_byId;
};

// One cached group with its member views, which are the objects of the view table. A copy shares the members.
class CViewGroup : public Vant::Base::CNonThreadSafe {
 public:
  CViewGroup() = default;
  explicit CViewGroup(ViewGroupInfo info) : m_info(std::move(info)) {}
  CViewGroup(const CViewGroup& other);
  CViewGroup& operator=(const CViewGroup& other);

  unsigned int GetID() const { return m_info.Get()->idViewGroup; }
  unsigned int GetParentID() const { return m_info.Get()->idParent; }
  int GetViewType() const { return m_info.Get()->enumViewType; }
  void GetInfo(ViewGroupInfo& info) const { info = *m_info.Get(); }
  std::shared_ptr<const ViewGroupInfo> Info() const { return m_info.Get(); }
  void SetInfo(ViewGroupInfo info);
  // The same, with a record made before; cannot fail.
  void SetInfo(std::shared_ptr<const ViewGroupInfo> info) { m_info.Set(std::move(info)); }

  // Takes out the first member of the view's id, if any, and appends the view; where memory runs out, neither. False
  // for an empty pointer.
  bool AddMemberView(std::shared_ptr<CView> view, bool reserved = false) EXCLUDES(m_memberLock);
  // Removes the first member with that id; whether one was removed.
  bool RemoveMemberView(unsigned int id) EXCLUDES(m_memberLock);
  // The first member with that id, or empty.
  std::shared_ptr<CView> FindMemberView(unsigned int id) const EXCLUDES(m_memberLock);
  // Copies the members into `views`, which stays as it is when there are none; always true.
  bool GetMemberViews(std::vector<std::shared_ptr<CView>>& views) const EXCLUDES(m_memberLock);
  bool ClearMemberViews() EXCLUDES(m_memberLock);
  // Appends without looking for a member of the same id.
  void AppendMemberView(const std::shared_ptr<CView>& view) EXCLUDES(m_memberLock);
  // The same for several; cannot fail.
  void AppendMemberViews(MemberViews&& views) EXCLUDES(m_memberLock);

 private:
  MemberViews Members() const EXCLUDES(m_memberLock);

  RecordSlot<ViewGroupInfo> m_info;
  mutable SharedMutex m_memberLock;
  MemberViews vcViews GUARDED_BY(m_memberLock);
};

}  // namespace QorviViewPlugin
