// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/ChangeRelay.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "BizShared/details/Canceller.h"
#include "BizShared/details/Reply.h"
#include "NetLink/RapidJsonProto.h"
#include "json/Numbers.h"

namespace ResourceStore::details {

namespace {

// What an answer says of the edit that it answers.
struct EditAnswer {
  std::optional<ListKind> kind;
  std::optional<uint32_t> id;
  uint64_t number = 0;
};

// "V0/Views", "V0/ViewGroups/7" and the like.
EditAnswer ReadEditAnswer(std::string_view url, const std::string& answer) {
  using BizShared::details::kPlatformUrl;
  EditAnswer edit;
  if (answer.empty() || !url.starts_with(kPlatformUrl)) return edit;
  url.remove_prefix(std::string_view(kPlatformUrl).size());
  const std::string_view list = url.substr(0, url.find('/', sizeof "V0"));
  if (list == "V0/Views") edit.kind = ListKind::Views;
  if (list == "V0/ViewGroups") edit.kind = ListKind::Groups;
  if (!edit.kind) return edit;
  NetLink::CRapidJsonProto reply;
  if (BizShared::details::ReadEnvelope(answer, reply).GetSubError() != 0) return edit;
  edit.number = ToChangeNumber(reply.get_v("/ResponseStatus/Data/ChangeNumber", "")).value_or(0);
  if (url != list) {
    edit.id = json::WholeNumber<uint32_t>(url.substr(list.size() + 1));
  } else {
    const bool isView = edit.kind == ListKind::Views;
    const std::string path = isView ? "/ResponseStatus/Data/View/ID" : "/ResponseStatus/Data/ViewGroup/ID";
    edit.id = json::WholeNumber<uint32_t>(reply.get_v(path, ""));
  }
  return edit;
}

}  // namespace

std::string ChangeRelay::Text(ListKind kind) {
  std::shared_ptr<const std::string> text;
  {
    base::MutexLock lock(m_mutex);
    text = ListOf(kind).Text();
    for (auto& [number, edit] : m_answered) {
      if (edit.object.kind == kind) edit.isToBeTold = true;
    }
  }
  return text ? *text : std::string();
}

uint64_t ChangeRelay::Position() const {
  base::MutexLock lock(m_mutex);
  return m_position;
}

void ChangeRelay::Set(DownloadedList groups, DownloadedList views, bool finished) {
  NewLists lists(std::move(groups), std::move(views));
  base::MutexLock lock(m_mutex);
  ForgetEdits();
  Replace(lists);
  m_finished = finished;
}

void ChangeRelay::Downloaded(DownloadedList groups, DownloadedList views) {
  NewLists lists(std::move(groups), std::move(views));
  const std::string noGroups = lists.groups.Nothing(), noViews = lists.views.Nothing();
  bool beginsAnew = false;
  {
    base::MutexLock lock(m_mutex);
    beginsAnew = m_gaveNumbers && lists.Position() < m_highest;
    if (beginsAnew) m_highest = 0;
    // Edits that were answered meanwhile are in the lists or will come on the stream.
    std::erase_if(m_answered,
                  [&](const auto& edit) { return edit.first <= lists.Of(edit.second.object.kind).Number(); });
    Replace(lists);
  }
  if (beginsAnew) {
    Tell(ListKind::Groups, noGroups);
    Tell(ListKind::Views, noViews);
  }
  m_finished = true;
}

// Views attach to groups that are there, and groups go after what they held: hence the order of the calls.
void ChangeRelay::DownloadedAgain(DownloadedList groups, DownloadedList views, bool isOfOtherHistory) {
  NewLists lists(std::move(groups), std::move(views));
  // Not under the lock, for which edits wait.
  lists.groups.Split();
  lists.views.Split();
  ResourceList::Difference groupsDifference, viewsDifference;
  {
    base::MutexLock lock(m_mutex);
    const auto goesBack = [&](ListKind kind) REQUIRES(m_mutex) { return lists.Of(kind).Number() < PositionOf(kind); };
    const bool beginsAnew =
        m_gaveNumbers && (isOfOtherHistory || goesBack(ListKind::Groups) || goesBack(ListKind::Views));
    const auto numbers = beginsAnew ? ResourceList::Numbers::LeftOut : ResourceList::Numbers::Kept;
    const auto difference = [&](ListKind kind) REQUIRES(m_mutex) {
      ResourceList& newer = lists.Of(kind);
      ResourceList::Difference result = ListOf(kind).DifferenceTo(newer, numbers);
      if (beginsAnew && result.present.empty() && result.removed.empty()) result.present = newer.Nothing();
      return result;
    };
    groupsDifference = difference(ListKind::Groups);
    viewsDifference = difference(ListKind::Views);
    if (beginsAnew) {
      ForgetEdits();
      m_highest = 0;
    }
    NoteGap(ListKind::Groups, lists.groups.Number());
    NoteGap(ListKind::Views, lists.views.Number());
    Replace(lists);
  }
  Tell(ListKind::Groups, groupsDifference.present);
  Tell(ListKind::Views, viewsDifference.removed);
  Tell(ListKind::Views, viewsDifference.present);
  Tell(ListKind::Groups, groupsDifference.removed);
  TellDue();
}

// A document that cannot be merged is passed on all the same: what it means is the receiver's to say.
void ChangeRelay::TakeEvent(uint64_t number, const std::string& type, const std::string& data) {
  const bool isOwn = type.starts_with("Own");
  const std::string_view listed = std::string_view(type).substr(isOwn ? 3 : 0);
  const ListKind kind = listed == "Views" ? ListKind::Views : ListKind::Groups;
  const bool isKnown = listed == "Views" || listed == "ViewGroups";
  bool isTold = false;
  {
    base::MutexLock lock(m_mutex);
    if (isKnown && number > ListOf(kind).Number()) {
      if (isOwn) m_unanswered.reserve(m_unanswered.size() + 1);  // nothing may fail once the list holds the event
      ListElement element;
      ListOf(kind).Apply(data, number, element);
      m_gaveNumbers = m_gaveNumbers || element.number != 0;
      isTold = !isOwn || IsOwnToBeTold(number, kind, element);
    }
    m_position = std::max(m_position, number);
    m_highest = std::max(m_highest, number);
    m_answered.erase(m_answered.begin(), m_answered.upper_bound(number));
  }
  if (isTold) Tell(kind, data);
}

void ChangeRelay::TellDue() {
  while (true) {
    ListKind kind = ListKind::Groups;
    std::string document;
    {
      base::MutexLock lock(m_mutex);
      if (m_due.empty()) return;
      const Object object = m_due.front();
      kind = object.kind;
      document = ListOf(kind).StateOf(object.id, object.method);
      m_due.erase(m_due.begin());
    }
    Tell(kind, document);
  }
}

void ChangeRelay::SetSleeper(BizShared::details::CCanceller* sleeper) {
  base::MutexLock lock(m_mutex);
  m_sleeper = sleeper;
}

uint64_t ChangeRelay::OnEditBegins() {
  base::MutexLock lock(m_mutex);
  m_onTheirWay.insert(m_lastTicket + 1);
  return ++m_lastTicket;
}

void ChangeRelay::OnEditEnds(uint64_t ticket, const NetLink::CClientSendInfo& send,
                             const std::string& answer) noexcept {
  EditAnswer edit;
  try {
    edit = ReadEditAnswer(send.GetVal_URL(), answer);
  } catch (...) {
    edit = {};  // want of memory: like an answer that was lost
  }
  base::MutexLock lock(m_mutex);
  m_onTheirWay.erase(ticket);
  try {
    if (edit.number != 0 && edit.id) Answer({*edit.kind, *edit.id}, edit.number);
    EndTicket();
  } catch (...) {
    // Want of memory: what was due is told when the next edit ends, or with the edit's own event.
  }
  if (!m_due.empty() && m_sleeper) m_sleeper->Wake();
}

uint64_t ChangeRelay::PositionOf(ListKind kind) {
  return std::max(m_position, ListOf(kind).Number());
}

bool ChangeRelay::IsOwnToBeTold(uint64_t number, ListKind kind, const ListElement& element) {
  const auto answered = m_answered.find(number);
  if (answered != m_answered.end()) return answered->second.isToBeTold;
  if (!element.id || element.number == 0) return false;  // such a server numbers no answers either
  if (m_onTheirWay.empty()) return true;
  m_unanswered.push_back({{kind, *element.id, element.method == 0 ? 0 : 1}, number, m_lastTicket + 1});
  return false;
}

void ChangeRelay::Answer(const Object& object, uint64_t number) {
  if (std::erase_if(m_unanswered, [&](const Unanswered& event) { return event.number == number; }) != 0) return;
  if (number > PositionOf(object.kind)) {
    m_answered[number] = {object};
    if (m_answered.size() > kRememberedEdits) m_answered.erase(m_answered.begin());
  } else if (IsInGap(object.kind, number)) {
    m_due.push_back(object);
  }
}

void ChangeRelay::EndTicket() {
  const uint64_t oldest = m_onTheirWay.empty() ? m_lastTicket + 1 : *m_onTheirWay.begin();
  m_due.reserve(m_due.size() + m_unanswered.size());
  std::erase_if(m_unanswered, [&](const Unanswered& event) REQUIRES(m_mutex) {
    if (event.firstTicketAfter > oldest) return false;
    m_due.push_back(event.object);
    return true;
  });
}

ChangeRelay::NewLists::NewLists(DownloadedList newGroups, DownloadedList newViews)
    : areNumbered(newGroups.isNumbered || newViews.isNumbered) {
  groups.Set(std::move(newGroups.text), newGroups.number);
  views.Set(std::move(newViews.text), newViews.number);
}

void ChangeRelay::Replace(NewLists& lists) noexcept {
  m_gaveNumbers = m_gaveNumbers || lists.areNumbered;
  m_highest = std::max({m_highest, lists.groups.Number(), lists.views.Number()});
  m_position = lists.Position();
  m_groups = std::move(lists.groups);
  m_views = std::move(lists.views);
}

void ChangeRelay::NoteGap(ListKind kind, uint64_t newNumber) {
  if (newNumber <= PositionOf(kind)) return;
  // The oldest give way: no edit is on its way for that long.
  if (m_gaps.size() == kRememberedGaps) m_gaps.erase(m_gaps.begin());
  m_gaps.push_back({kind, PositionOf(kind), newNumber});
  std::erase_if(m_answered, [&](const auto& edit) REQUIRES(m_mutex) {
    if (edit.second.object.kind != kind || edit.first > newNumber) return false;
    m_due.push_back(edit.second.object);
    return true;
  });
}

bool ChangeRelay::IsInGap(ListKind kind, uint64_t number) const {
  return std::any_of(m_gaps.begin(), m_gaps.end(),
                     [&](const Gap& gap) { return gap.kind == kind && number > gap.from && number <= gap.to; });
}

void ChangeRelay::ForgetEdits() {
  m_answered.clear();
  m_unanswered.clear();
  m_gaps.clear();
  m_due.clear();
}

void ChangeRelay::Tell(ListKind kind, const std::string& document) {
  {
    base::MutexLock lock(m_mutex);
    if (document.empty() || (m_sleeper && m_sleeper->IsCancelled())) return;
  }
  Slot(kind).Call(document);
}

}  // namespace ResourceStore::details
