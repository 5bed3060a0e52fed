// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/ViewList.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <utility>

#include "QorviViewPlugin/ViewDataManager/document/FlatText.h"
#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"
#include "QorviViewPlugin/ViewDataManager/document/ValueCursor.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"

namespace QorviViewPlugin {
namespace {

using Kind = FlatPart::Kind;

// Goes through a text once. It stops, with nothing said, at whatever is not the one usual form.
class UsualList {
 public:
  explicit UsualList(const std::string& text) : m_text(text) {}

  enum class Outcome { Usual, Other, Malformed };

  // Usual if the text is a list of that form whose status is success; only then do the rest count.
  Outcome Read() {
    if (!ReadObject({"ResponseStatus"}, [this](std::string_view) { return ReadStatus(); })) return Outcome::Other;
    // A NUL may end a text for the platform's document.
    if (m_text.Skip() != '\0') return Outcome::Malformed;
    return m_text.IsAtEnd() && m_errorCode == 0 ? Outcome::Usual : Outcome::Other;
  }

  ErrorCode Status() const { return {m_errorModule, m_errorCode, kSubSystemCode, m_cascadingErrorInfo}; }
  ViewList Take() { return std::move(m_list); }

 private:
  // Hands the values of these members to `read`, which has to take each from the stream, and passes over others. Each
  // of them may stand there once.
  template <class Read>
  bool ReadObject(std::initializer_list<std::string_view> names, Read read) {
    if (!m_text.Take('{')) return false;
    unsigned int seen = 0;
    do {
      if (m_text.Skip() != '"') return false;
      const FlatPart* const key = m_text.Parse();
      if (!key) return false;
      const auto known = std::find(names.begin(), names.end(), key->Text());
      if (!m_text.Take(':')) return false;
      if (known == names.end()) {
        if (!m_text.Parse()) return false;
      } else {
        const unsigned int mark = 1u << (known - names.begin());
        if (seen & mark) return false;
        seen |= mark;
        if (!read(*known)) return false;
      }
    } while (m_text.Take(','));
    return m_text.Take('}');
  }

  bool ReadStatus() {
    return ReadObject({"ErrorModule", "ErrorCode", "CascadingErrorInfo", "Data"}, [this](std::string_view name) {
      if (name == "Data") return ReadData();
      const FlatPart* const value = m_text.Parse();
      if (!value) return false;
      if (name == "CascadingErrorInfo") {
        m_cascadingErrorInfo = value->Text();
        return value->kind == Kind::Text;
      }
      if (value->kind != Kind::Int) return false;
      if (name == "ErrorModule") m_errorModule = value->number;
      if (name == "ErrorCode") m_errorCode = value->number;
      return true;
    });
  }

  bool ReadData() {
    return ReadObject({"ViewList", "ChangeNumber"}, [this](std::string_view name) {
      if (name == "ViewList") return ReadObject({"View"}, [this](std::string_view) { return ReadViews(); });
      const FlatPart* const value = m_text.Parse();
      if (!value || value->kind != Kind::Text) return false;
      m_list.completeUpTo = ReadChangeNumber(value->Text());
      return true;
    });
  }

  // An empty list is not worth a line: it is read by paths.
  bool ReadViews() {
    if (!m_text.Take('[')) return false;
    do {
      if (!ReadNextView()) return false;
    } while (m_text.Take(','));
    return m_text.Take(']');
  }

  bool ReadNextView() {
    if (m_text.Skip() != '{') return false;
    const size_t begin = m_text.Offset();
    const FlatPart* const value = m_text.Parse();
    if (!value) return false;
    ValueCursor cursor(*value);
    m_list.views.push_back(ReadView(cursor, DocumentOrigin::Download));
    if (cursor.IsUnusual()) {
      // A server that writes all of its views so is not asked again and again.
      constexpr size_t kEnough = 8;
      if (++m_unusual == m_list.views.size() && m_unusual == kEnough) return false;
      NetLink::CRapidJsonProto document;
      document.set_str(m_text.From(begin));
      PathCursor paths(document);
      m_list.views.back() = ReadView(paths, DocumentOrigin::Download);
    }
    return true;
  }

  FlatText m_text;
  ViewList m_list;
  size_t m_unusual = 0;  // views that were read by paths
  int m_errorModule = -1;
  int m_errorCode = -1;
  std::string m_cascadingErrorInfo;
};

}  // namespace

bool ReadViewList(const std::string& text, ErrorCode& error, ViewList& list) {
  const auto usual = std::make_unique<UsualList>(text);
  const UsualList::Outcome outcome = usual->Read();
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
