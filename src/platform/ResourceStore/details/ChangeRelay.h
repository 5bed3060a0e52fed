// SPDX-License-Identifier: Apache-2.0
// For this library and the platform's tests, not for hosts.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "BizShared/details/EditWatch.h"
#include "ResourceStore/Export.h"
#include "ResourceStore/UpdateCallbackSlot.h"
#include "ResourceStore/details/ResourceList.h"
#include "base/Mutex.h"

namespace BizShared::details {
class CCanceller;
}

namespace ResourceStore::details {

enum class ListKind { Groups, Views };

struct DownloadedList {
  std::string text;
  uint64_t number = 0;      // of the last change contained
  bool isNumbered = false;  // whether the text itself says so
};

// Both downloaded lists, kept up to date by the changes that the stream brings, and what of these the receivers are
// told.
//
// The user's own edits are not told: the answer to each tells the sender. Four kinds are told all the same, as a
// colleague's are, because nobody else would tell them to a receiver whose cache goes by number:
//  - An edit was answered, and then a list was handed out that did not hold it yet. That list may have taken the place
//    of the answer.
//  - An edit was answered, and then a download that was made again passed its event over.
//  - An edit is answered after such a download.
//  - An edit's answer was lost: none of the edits that were on their way when its event came was answered with its
//    number.
// After a download that was made again the receiver hears what the new list says of the object, or that it is absent.
//
// Any thread; no lock is held across calls. What is called back is called back by whoever calls a function that says
// so: one thread at a time, lest documents overtake each other. Where memory does not suffice, std::bad_alloc is
// thrown: no position has moved and nothing was told, and the same call may be made again.
class RESOURCESTORE_API ChangeRelay : public BizShared::details::IEditWatch {
 public:
  UpdateCallbackSlot& Slot(ListKind kind) { return kind == ListKind::Views ? m_viewsSlot : m_groupsSlot; }

  // Asked again and again without a pause, so that it takes no lock.
  bool IsFinished() const { return m_finished; }
  // The present list, empty before the first. What it does not hold yet of the answered edits will be told.
  std::string Text(ListKind kind);
  // The number of the last change that was taken.
  uint64_t Position() const;

  // Replaces everything, and tells nothing.
  void Set(DownloadedList groups, DownloadedList views, bool finished);
  void Clear() { Set({}, {}, false); }

  // --- These call back.

  // The first download of a run. Numbers that begin anew, another server's, are told as a document without any.
  void Downloaded(DownloadedList groups, DownloadedList views);
  // A download that was made again, because changes between had been lost: the difference is told.
  // `isOfOtherHistory`: the numbers known before are not the server's any more.
  void DownloadedAgain(DownloadedList groups, DownloadedList views, bool isOfOtherHistory = false);
  // An event of the stream, by its "event:" and "data:". One that a list held already, or that is of no known type,
  // only moves the position.
  void TakeEvent(uint64_t number, const std::string& type, const std::string& data);
  // What the ends of edits have left to be told.
  void TellDue();

  // --- Edits

  // Who is woken when something is due; null: nobody.
  void SetSleeper(BizShared::details::CCanceller* sleeper);
  uint64_t OnEditBegins() override;
  void OnEditEnds(uint64_t ticket, const NetLink::CClientSendInfo& send, const std::string& answer) noexcept override;

 private:
  static constexpr size_t kRememberedEdits = 65536;
  static constexpr size_t kRememberedGaps = 16;

  struct Object {
    ListKind kind;
    uint32_t id;
    // The Method in the document, if the list has the object: 0 (added) where a receiver may lack it, else 1 (changed).
    int method = 1;
  };
  struct Answered {
    Object object;
    bool isToBeTold = false;
  };
  struct Unanswered {  // its event came first
    Object object;
    uint64_t number;
    uint64_t firstTicketAfter;
  };
  struct Gap {  // changes after the first number, up to the second, whose events a download passed over
    ListKind kind;
    uint64_t from, to;
  };

  // Made before anything is changed, since that may need more memory than there is.
  struct NewLists {
    NewLists(DownloadedList newGroups, DownloadedList newViews);
    ResourceList& Of(ListKind kind) { return kind == ListKind::Views ? views : groups; }
    // From there the stream goes on.
    uint64_t Position() const { return std::min(groups.Number(), views.Number()); }

    ResourceList groups{kViewGroupNames};
    ResourceList views{kViewNames};
    bool areNumbered;
  };

  ResourceList& ListOf(ListKind kind) REQUIRES(m_mutex) { return kind == ListKind::Views ? m_views : m_groups; }
  uint64_t PositionOf(ListKind kind) REQUIRES(m_mutex);
  bool IsOwnToBeTold(uint64_t number, ListKind kind, const ListElement& element) REQUIRES(m_mutex);
  void Answer(const Object& object, uint64_t number) REQUIRES(m_mutex);
  void EndTicket() REQUIRES(m_mutex);
  void Replace(NewLists& lists) noexcept REQUIRES(m_mutex);
  void NoteGap(ListKind kind, uint64_t newNumber) REQUIRES(m_mutex);
  bool IsInGap(ListKind kind, uint64_t number) const REQUIRES(m_mutex);
  void ForgetEdits() REQUIRES(m_mutex);

  void Tell(ListKind kind, const std::string& document);

  UpdateCallbackSlot m_groupsSlot;
  UpdateCallbackSlot m_viewsSlot;
  std::atomic<bool> m_finished{false};

  mutable base::Mutex m_mutex;
  ResourceList m_groups GUARDED_BY(m_mutex){kViewGroupNames};
  ResourceList m_views GUARDED_BY(m_mutex){kViewNames};
  uint64_t m_position GUARDED_BY(m_mutex) = 0;
  // Whether receivers were given numbers, and the highest that they may know; kept from run to run.
  bool m_gaveNumbers GUARDED_BY(m_mutex) = false;
  uint64_t m_highest GUARDED_BY(m_mutex) = 0;
  std::map<uint64_t, Answered> m_answered GUARDED_BY(m_mutex);  // by number: edits whose events are still to come
  std::vector<Unanswered> m_unanswered GUARDED_BY(m_mutex);
  std::vector<Gap> m_gaps GUARDED_BY(m_mutex);
  std::vector<Object> m_due GUARDED_BY(m_mutex);
  std::set<uint64_t> m_onTheirWay GUARDED_BY(m_mutex);  // tickets
  uint64_t m_lastTicket GUARDED_BY(m_mutex) = 0;
  BizShared::details::CCanceller* m_sleeper GUARDED_BY(m_mutex) = nullptr;
};

}  // namespace ResourceStore::details
