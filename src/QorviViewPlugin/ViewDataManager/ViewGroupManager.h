// SPDX-License-Identifier: Apache-2.0
// The library's cache of the server's views and view groups, and all that is done with it: look-ups in
// ViewGroupManager.cpp, own edits in ViewEdits.cpp, reading what was downloaded in ViewIngestion.cpp, what a change
// does and who hears of it in ViewChanges.cpp and ViewGroupChanges.cpp. The platform's download of both has the same
// name (ResourceStore::CViewGroupManager).
#pragma once

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/ChangeOrder.h"
#include "QorviViewPlugin/ViewDataManager/View.h"
#include "QorviViewPlugin/base/Locks.h"
#include "ResourceStore/OrlUserManager.h"
#include "VantBase/Error.h"
#include "VantBase/Singleton.h"

namespace QorviViewPlugin {

class COrlUserObserver;

using Vant::Base::Error::ErrorCode;

using ViewTable = std::map<unsigned int, std::shared_ptr<CView>>;
using ViewGroupTable = std::map<unsigned int, std::shared_ptr<CViewGroup>>;
using PendingChecks = std::map<int, std::vector<unsigned int>>;

// Any thread. m_viewLock guards mapViews, m_groupLock mapViewGroups and the order of their changes, m_checkLock the
// pending checks, m_userLock the observer. m_viewOrderLock is held while a view is changed, in the table and among
// members, and is taken before the others; m_groupLock is taken before a group's own member lock, and never together
// with m_viewLock. No lock is held across a server request, nor across a notice but that of RemoveViewGroupFromCache.
class CViewGroupManager : public Vant::Base::CSingleton<CViewGroupManager>, public Vant::Base::CNonThreadSafe {
 public:
  ~CViewGroupManager();

  // --- Requests to the server (ViewEdits.cpp). An edit asks the server first and then changes the cache, silently.
  // False when the server refused or could not be reached: `err` holds the session's error record and the cache is as
  // it was.

  // `newId` is written on success only.
  bool AddView(const ViewInfo& info, unsigned int& newId, ErrorCode& err);
  bool AddViewGroup(const ViewGroupInfo& info, unsigned int& newId, ErrorCode& err);
  bool ModifyView(const ViewInfo& info, ErrorCode& err);
  // Of the cached group only the name follows.
  bool ModifyViewGroup(const ViewGroupInfo& info, ErrorCode& err);
  bool DeleteView(unsigned int id, ErrorCode& err);
  // A group that is not cached fails with 2/20/3 without asking the server. Member views and child groups stay cached.
  bool DeleteViewGroup(unsigned int id, ErrorCode& err);
  // A reply without a body counts as success and leaves the outputs as they are; a refusal overwrites them.
  bool GetDefaultViewConfig(int& viewId, int& viewType, ErrorCode& err);
  bool SetDefaultViewConfig(const int& viewId, int viewType, ErrorCode& err);
  // Downloads the user list and waits for its end without limit, running the host's event loop meanwhile. `users` and
  // `err` are those of the download that ended, also on failure.
  bool GetAllUsers(ErrorCode& err, std::vector<std::shared_ptr<ResourceStore::CUserInfo>>& users);

  // --- Cache changes (ViewChanges.cpp, ViewGroupChanges.cpp). Those that are not silent notify the observers. A record
  // with a change number that is not newer than what is known of its object changes nothing and tells nothing
  // (ChangeOrder.h).

  // One record of a change document, by its nMethod; a number that is none of the three changes nothing.
  void ApplyViewChange(const ViewInfo& change) EXCLUDES(m_viewOrderLock);
  void ApplyViewGroupChange(const ViewGroupInfo& change);
  // Forget all change numbers. Called when a document carries none: it may come from another server.
  void ForgetViewNumbers() EXCLUDES(m_viewOrderLock);
  void ForgetViewGroupNumbers();

  // With a number: replaces the cached view. Without: the cached view stays in the table, and the new one joins the
  // group all the same. Always true.
  bool InsertViewToCache(const ViewInfo& info, bool bSilent) EXCLUDES(m_viewOrderLock);
  bool RemoveViewFromCache(unsigned int id, bool bSilent, ChangeNumber number = 0) EXCLUDES(m_viewOrderLock);
  // False when the view is not cached or the record is not newer. The view stays a member of its old group whatever the
  // record says.
  bool UpdateViewInCache(const ViewInfo& info) EXCLUDES(m_viewOrderLock);
  bool InsertViewGroupToCache(const ViewGroupInfo& info);
  // Notifies while it holds the group lock: an observer must not call back into the library from that notice.
  bool RemoveViewGroupFromCache(unsigned int id, bool bSilent, ChangeNumber number = 0);
  // Always false; callers do not use the result.
  bool UpdateViewGroupInCache(const ViewGroupInfo& info);
  bool AttachViewToGroup(std::shared_ptr<CView> view, unsigned int groupId);
  void ClearViewData() EXCLUDES(m_viewOrderLock);

  // --- Look-ups

  std::shared_ptr<CView> GetViewByID(unsigned int id) const;
  std::shared_ptr<CViewGroup> GetViewGroupByID(unsigned int id) const;
  // `out` becomes the groups below that parent in id order; always true.
  bool GetViewGroups(std::vector<std::shared_ptr<CViewGroup>>& out, unsigned int parentId) const;
  // Appends the views that are in no group, in id order.
  void GetViewsWithoutGroup(std::vector<std::shared_ptr<CView>>& out) const;

  // --- What exists for programs outside this repository only

  // The server's numbers for the kinds of related resource.
  RelateResourceType ServerToRelateType(const int& serverType) const;
  int RelateTypeToServer(const RelateResourceType& type) const;

  // The pending checks: ids of modified views, by resource type, that show elements not known yet. Setting moves from
  // its argument, taking moves out and leaves none.
  void SetPendingChecks(PendingChecks& checks);
  void TakePendingChecks(PendingChecks& out);

  void SetResourceReady(bool ready) { m_bResourceReady = ready; }
  bool IsResourceReady() const { return m_bResourceReady; }

  // The JSON text that a window may carry: a digital zoom, else a fisheye, else an e-map position.
  void AnalysisExtendInfo(const std::string& extendInfo, CameraGridStruct& window);

  // --- Reading the server's data (ViewIngestion.cpp). `data` is a downloaded list or a change document, and
  // `cascadingErrorInfo` becomes the text in its envelope.

  // True when the data could be used: its records have gone into the table, where entries of the same id stay, and,
  // each with its nMethod, to the end of `changes`. False, and both untouched, when the envelope reports an error or
  // cannot be read. Views without a change number join the groups that are cached at this moment; the others do so when
  // the change is applied. An empty group text counts as success and touches nothing. Despite the names, the library
  // reads change documents with these two.
  bool AnalysisViewGroupInitData(const std::string& data, std::string& cascadingErrorInfo, ViewGroupTable& groups,
                                 std::list<ViewGroupInfo>& changes);
  bool AnalysisViewInitData(const std::string& data, std::string& cascadingErrorInfo, ViewTable& views,
                            std::list<ViewInfo>& changes);
  // Read a list into the cache itself, for a first load. Entries that are already cached stay, unless the list has a
  // number: then what it holds newer is taken, and what it no longer has goes, unless it is newer than the list.
  void LoadViewGroups(const std::string& data, std::string& cascadingErrorInfo);
  void LoadViews(const std::string& data, std::string& cascadingErrorInfo) EXCLUDES(m_viewOrderLock);

  // The changes that have been missed, by the platform's present list: what it holds newer than the cache, and what is
  // cached that it no longer has. Of a list without a number, none.
  std::list<ViewInfo> MissedViewChanges(const std::string& data) EXCLUDES(m_viewOrderLock);
  std::list<ViewGroupInfo> MissedViewGroupChanges(const std::string& data);

  // Makes pending checks of the modified views among those that have just been read: under each resource type that the
  // cached view is marked for and of which the read one shows an element that the platform does not know. When nothing
  // is found, the earlier pending checks stay.
  void NotePendingChecks(std::span<const ViewInfo> views);

 private:
  template <class T>
  friend struct Vant::Base::SingletonStorage;
  CViewGroupManager();

  // A hash table: in a large site a tree's look-ups would miss the processor's cache.
  using CachedViews = std::unordered_map<unsigned int, std::shared_ptr<CView>>;

  using MembersByGroup = std::map<unsigned int, MemberViews>;

  // What a change document or a list holds, the views ready to be cached.
  struct ViewsOfList {
    std::vector<std::shared_ptr<CView>> views;
    ChangeNumber completeUpTo = 0;
  };
  struct GroupList {
    std::vector<ViewGroupInfo> groups;
    ChangeNumber completeUpTo = 0;
  };

  void ClearCache() EXCLUDES(m_viewOrderLock);
  PendingChecks PendingChecksOf(std::span<const ViewInfo> views) const;
  static std::optional<GroupList> ReadGroupList(const std::string& data, std::string& cascadingErrorInfo);
  std::optional<ViewsOfList> ReadViews(const std::string& data, std::string& cascadingErrorInfo);
  // Merge a list, by number, with what is cached and known already.
  void TakeLoadedViews(const ViewsOfList& list) REQUIRES(m_viewOrderLock);
  void TakeLoadedViewGroups(const GroupList& list) REQUIRES(m_groupLock);

  // The steps of which changes consist. Each is made whole or, where memory runs out, not at all.
  void InsertView(const std::shared_ptr<CView>& view) REQUIRES(m_viewOrderLock);
  // Whether the view was cached; `idViewGroup` becomes the group that it was in.
  bool EraseView(unsigned int id, unsigned int& idViewGroup) REQUIRES(m_viewOrderLock);
  // Puts the view, with a newer record where one was kept for it, in place of the cached one, and into its group.
  // Answers the view that was put.
  std::shared_ptr<CView> PutView(std::shared_ptr<CView> view) REQUIRES(m_viewOrderLock);
  // Whether the view is cached. Where it is not, a record with a number is kept until it comes.
  bool ChangeView(const ViewInfo& info) REQUIRES(m_viewOrderLock);
  bool RemoveView(unsigned int id, ChangeNumber number, unsigned int& idViewGroup) REQUIRES(m_viewOrderLock);
  bool IsViewNews(unsigned int id, ChangeNumber number) const REQUIRES(m_viewOrderLock);
  void EnsureMember(const std::shared_ptr<CView>& view) REQUIRES(m_viewOrderLock);
  std::shared_ptr<CViewGroup> FindViewGroup(unsigned int id) const REQUIRES_SHARED(m_groupLock);
  // Caches the record, or a newer one that is known, and answers it; a cached group keeps its members. REQUIRES: the
  // record has a number.
  ViewGroupInfo PutViewGroup(const ViewGroupInfo& info) REQUIRES(m_groupLock);
  // The same where it is news, and nothing otherwise; a group that is new takes in the views that have come before it.
  // Of a record without a number the cached group keeps its own.
  std::optional<ViewGroupInfo> CacheViewGroup(const ViewGroupInfo& info) EXCLUDES(m_viewOrderLock);
  bool IsViewGroupNews(unsigned int id, ChangeNumber number) const REQUIRES_SHARED(m_groupLock);
  // Leaves out those whose ids are cached. What throws has changed nothing.
  void MergeViews(CachedViews& views) REQUIRES(m_viewLock);
  // Views join the cached groups whether or not they are cached themselves: one that a change document names becomes a
  // member beside the cached view of the same id. Cannot fail.
  void JoinGroups(MembersByGroup members);
  // Made and registered on first use; lives as long as the manager.
  COrlUserObserver& UserObserver() EXCLUDES(m_userLock);

  Mutex m_viewOrderLock;
  ChangeOrder<ViewInfo> m_viewOrder GUARDED_BY(m_viewOrderLock);
  mutable SharedMutex m_viewLock;
  CachedViews mapViews GUARDED_BY(m_viewLock);
  mutable SharedMutex m_groupLock;
  ViewGroupTable mapViewGroups GUARDED_BY(m_groupLock);
  ChangeOrder<ViewGroupInfo> m_groupOrder GUARDED_BY(m_groupLock);
  Mutex m_checkLock;
  PendingChecks mapPendingChecks GUARDED_BY(m_checkLock);
  std::atomic<bool> m_bResourceReady{false};
  Mutex m_userLock;
  std::unique_ptr<COrlUserObserver> m_pUserObserver GUARDED_BY(m_userLock);
};

}  // namespace QorviViewPlugin

extern template class Vant::Base::CSingleton<QorviViewPlugin::CViewGroupManager>;

namespace QorviViewPlugin {

// The process's one.
inline CViewGroupManager& Manager() {
  return Vant::Base::CSingleton<CViewGroupManager>::Instance();
}

}  // namespace QorviViewPlugin
