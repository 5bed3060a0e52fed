// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ViewDataManager/document/ViewList.h"

#include <rapidjson/document.h>

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/document/ReplyEnvelope.h"
#include "QorviViewPlugin/ViewDataManager/document/ValueCursor.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewDocument.h"
#include "json/ParseText.h"

namespace QorviViewPlugin {
namespace {

using rapidjson::Value;

// Parses a text value by value. It copies 64 KiB at a time, more where values are large, and parses that copy in place.
// So a large text of many values is not copied as a whole.
class ParsedText {
 public:
  explicit ParsedText(const std::string& text) : m_text(text), m_pool(m_memory, sizeof m_memory), m_value(&m_pool) {
    Fill(std::min(kPiece, text.size()));
  }

  size_t Offset() const { return m_begin + static_cast<size_t>(m_at - m_piece.data()); }
  std::string From(size_t begin) const { return m_text.substr(begin, Offset() - begin); }
  bool IsAtEnd() { return Skip() == '\0' && Offset() == m_text.size(); }

  // The next character that is not blank; NUL at the end.
  char Skip() {
    do {
      while (*m_at == ' ' || *m_at == '\n' || *m_at == '\r' || *m_at == '\t') ++m_at;
    } while (IsPieceUsedUp() && FillFurther());
    return *m_at;
  }
  bool Take(char expected) {
    if (Skip() != expected) return false;
    ++m_at;
    return true;
  }

  // The next value; it holds until the next call of this or of Skip, Take or IsAtEnd. Null when there is none. A number
  // cut by the end of a piece reads as its first part. The rest then makes the list unusual, and it is read by paths.
  const Value* ParseValue() {
    do {
      m_pool.Clear();
      if (const auto length = json::ParseInPlace<rapidjson::kParseStopWhenDoneFlag>(m_at, m_value)) {
        m_at += *length;
        ++m_values;
        return &m_value;
      }
    } while (FillFurther());
    return nullptr;
  }

 private:
  static constexpr size_t kPiece = size_t{64} << 10;
  // The last value of a piece is mostly cut off, and parsed once more in the next one.
  static constexpr size_t kValuesOfPiece = 16;

  bool IsPieceUsedUp() const { return m_at == m_piece.data() + m_piece.size(); }

  // Makes the piece begin here, and larger where it held few values. False when it held all there is.
  bool FillFurther() {
    if (m_begin + m_piece.size() == m_text.size()) return false;
    Fill(m_values < kValuesOfPiece ? 2 * m_piece.size() : m_piece.size());
    return true;
  }
  void Fill(size_t size) {
    m_begin = m_at ? Offset() : 0;
    m_piece.assign(m_text, m_begin, size);
    m_at = m_piece.data();
    m_values = 0;
  }

  const std::string& m_text;
  std::string m_piece;
  size_t m_begin = 0;  // of the piece, in the text
  char* m_at = nullptr;
  size_t m_values = 0;  // of the piece so far
  // One value's memory, used again for each: a view of some thirty windows fits.
  alignas(std::max_align_t) char m_memory[64 * 1024];
  rapidjson::MemoryPoolAllocator<> m_pool;
  rapidjson::Document m_value;
};

// Goes through a text once. It stops, with nothing said, at whatever is not the one usual form.
class UsualList {
 public:
  explicit UsualList(const std::string& text) : m_text(text) {}

  // Whether the text is a list of that form whose status is success; only then do the rest count.
  bool Read() {
    return ReadObject({"ResponseStatus"}, [this](std::string_view) { return ReadStatus(); }) && m_text.IsAtEnd() &&
           m_errorCode == 0;
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
      const Value* const key = m_text.ParseValue();
      if (!key) return false;
      const auto known =
          std::find(names.begin(), names.end(), std::string_view(key->GetString(), key->GetStringLength()));
      if (!m_text.Take(':')) return false;
      if (known == names.end()) {
        if (!m_text.ParseValue()) return false;
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
      const Value* const value = m_text.ParseValue();
      if (!value) return false;
      if (name == "CascadingErrorInfo") {
        if (value->IsString()) m_cascadingErrorInfo.assign(value->GetString(), value->GetStringLength());
        return value->IsString();
      }
      if (!value->IsInt()) return false;
      if (name == "ErrorModule") m_errorModule = value->GetInt();
      if (name == "ErrorCode") m_errorCode = value->GetInt();
      return true;
    });
  }

  bool ReadData() {
    return ReadObject({"ViewList", "ChangeNumber"}, [this](std::string_view name) {
      if (name == "ViewList") return ReadObject({"View"}, [this](std::string_view) { return ReadViews(); });
      const Value* const value = m_text.ParseValue();
      if (!value || !value->IsString()) return false;
      m_list.completeUpTo = ReadChangeNumber({value->GetString(), value->GetStringLength()});
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
    const Value* const value = m_text.ParseValue();
    if (!value) return false;
    ValueCursor cursor(*value);
    m_list.views.push_back(ReadView(cursor, DocumentOrigin::Download));
    if (cursor.IsUnusual()) {
      NetLink::CRapidJsonProto document;
      document.set_str(m_text.From(begin));
      PathCursor paths(document);
      m_list.views.back() = ReadView(paths, DocumentOrigin::Download);
    }
    return true;
  }

  ParsedText m_text;
  ViewList m_list;
  int m_errorModule = -1;
  int m_errorCode = -1;
  std::string m_cascadingErrorInfo;
};

}  // namespace

bool ReadViewList(const std::string& text, ErrorCode& error, ViewList& list) {
  const auto usual = std::make_unique<UsualList>(text);
  if (!usual->Read()) return ReadViewListByPaths(text, error, list);
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
