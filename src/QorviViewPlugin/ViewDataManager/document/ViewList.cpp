// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/ViewList.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>

#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"
#include "QorviViewPlugin/ViewDataManager/document/TextCursor.h"
#include "QorviViewPlugin/ViewDataManager/document/UsualText.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"

namespace QorviViewPlugin {
namespace {

// Goes through a text once. It stops, with nothing said, at whatever is not the one usual form.
class UsualList {
 public:
  explicit UsualList(const std::string& text) : m_text(text), m_at(m_text.Begin()), m_cursor(m_text) {}

  enum class Outcome { Usual, Other, Malformed };

  // Usual if the text is a list of that form whose status is success; only then do the rest count.
  Outcome Read() {
    if (!ReadObject({"ResponseStatus"}, [this](std::string_view) { return ReadStatus(); })) return Outcome::Other;
    // A NUL may end a text for the platform's document.
    if (Skip() != '\0') return Outcome::Malformed;
    return m_at == m_text.End() && m_errorCode == 0 ? Outcome::Usual : Outcome::Other;
  }

  ErrorCode Status() const { return {m_errorModule, m_errorCode, kSubSystemCode, m_cascadingErrorInfo}; }
  ViewList Take() { return std::move(m_list); }

 private:
  // The next character that is not blank; NUL at the end.
  char Skip() {
    m_at = SkipBlanks(m_at);
    return *m_at;
  }
  bool Take(char expected) {
    if (Skip() != expected) return false;
    ++m_at;
    return true;
  }
  // Goes on behind what was read; false where that was null.
  bool GoOn(const char* end) {
    if (end) m_at = end;
    return end != nullptr;
  }

  // Hands the values of these members to `read`, which has to go on behind each, and passes over others. Each of them
  // may stand there once.
  template <class Read>
  bool ReadObject(std::initializer_list<std::string_view> names, Read read) {
    if (!Take('{')) return false;
    unsigned int seen = 0;
    do {
      std::string_view name;
      Skip();
      if (!GoOn(m_text.Name(m_at, name))) return false;
      const auto known = std::find(names.begin(), names.end(), name);
      if (known == names.end()) {
        if (!GoOn(m_text.Pass(m_at))) return false;
      } else {
        const unsigned int mark = 1u << (known - names.begin());
        if (seen & mark) return false;
        seen |= mark;
        if (!read(*known)) return false;
      }
    } while (Take(','));
    return Take('}');
  }

  bool ReadStatus() {
    return ReadObject({"ErrorModule", "ErrorCode", "CascadingErrorInfo", "Data"}, [this](std::string_view name) {
      if (name == "Data") return ReadData();
      if (name == "ErrorModule") return GoOn(m_text.Int(m_at, m_errorModule));
      if (name == "ErrorCode") return GoOn(m_text.Int(m_at, m_errorCode));
      std::string_view text;
      if (!GoOn(m_text.Text(m_at, text))) return false;
      m_cascadingErrorInfo = text;
      return true;
    });
  }

  bool ReadData() {
    return ReadObject({"ViewList", "ChangeNumber"}, [this](std::string_view name) {
      if (name == "ViewList") return ReadObject({"View"}, [this](std::string_view) { return ReadViews(); });
      std::string_view text;
      if (!GoOn(m_text.Text(m_at, text))) return false;
      m_list.completeUpTo = ReadChangeNumber(text);
      return true;
    });
  }

  // An empty list is not worth a line: it is read by paths.
  bool ReadViews() {
    if (!Take('[')) return false;
    do {
      if (Skip() != '{' || !ReadNextView()) return false;
    } while (Take(','));
    return Take(']');
  }

  bool ReadNextView() {
    const char* const begin = m_at;
    ViewInfo& view = m_list.views.emplace_back();
    if (ReadView(view)) return true;
    if (m_cursor.MayBeInOtherOrder()) {
      m_order = TextCursor::Order::Any;
      const bool isRead = ReadView(view);
      ++m_otherOrder;
      if (!AreTheFirst(m_otherOrder)) m_order = TextCursor::Order::AsAsked;
      if (isRead) return true;
    }
    ++m_unusual;
    if (AreTheFirst(m_unusual) || !GoOn(m_text.Pass(begin))) return false;
    NetLink::CRapidJsonProto document;
    document.set_str(std::string(begin, m_at));
    PathCursor paths(document);
    view = QorviViewPlugin::ReadView(paths, DocumentOrigin::Download);
    return true;
  }

  bool ReadView(ViewInfo& view) {
    m_cursor.Begin(m_at, m_order);
    view = QorviViewPlugin::ReadView(m_cursor, DocumentOrigin::Download);
    return GoOn(m_cursor.End());
  }

  // Whether so many views of a kind are all that were read, and tell how the server writes: the rest is not tried in
  // the usual way first.
  bool AreTheFirst(size_t count) const {
    constexpr size_t kEnough = 8;
    return count == m_list.views.size() && count == kEnough;
  }

  UsualText m_text;
  const char* m_at;
  TextCursor m_cursor;
  ViewList m_list;
  TextCursor::Order m_order = TextCursor::Order::AsAsked;
  size_t m_otherOrder = 0;  // views whose members do not stand as they are asked for
  size_t m_unusual = 0;     // views that were read by paths
  int m_errorModule = -1;
  int m_errorCode = -1;
  std::string m_cascadingErrorInfo;
};

}  // namespace

bool ReadViewList(const std::string& text, ErrorCode& error, ViewList& list) {
  auto usual = std::make_unique<UsualList>(text);
  const UsualList::Outcome outcome = usual->Read();
  if (outcome != UsualList::Outcome::Usual) usual.reset();  // before as much is read in another way
  // All malformed texts are read alike, and this one without going through it once more.
  if (outcome == UsualList::Outcome::Malformed) return ReadViewListByPaths("]", error, list);
  if (outcome == UsualList::Outcome::Other) return ReadViewListByPaths(text, error, list);
  error = usual->Status();
  list = usual->Take();
  return true;
}

bool ReadViewListByPaths(const std::string& text, ErrorCode& error, ViewList& list) {
  NetLink::CRapidJsonProto document;
  document.set_str(text);
  if (!ReadResponseStatus(document, CascadingText::Kept, error)) return false;
  PathCursor at(document, "/ResponseStatus/Data/ViewList/");
  list.completeUpTo = ReadDataNumber(document);
  list.views.clear();
  ReadEach(at, "View", list.views, [&at](ViewInfo& view) { view = ReadView(at, DocumentOrigin::Download); });
  return true;
}

}  // namespace QorviViewPlugin
