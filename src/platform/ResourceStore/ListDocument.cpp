// SPDX-License-Identifier: Apache-2.0
#include "ResourceStore/details/ListDocument.h"

#include <rapidjson/reader.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "json/Numbers.h"
#include "json/ParseText.h"

namespace ResourceStore::details {

namespace {

// rapidjson::StringStream keeps a copy of its place while it reads a value; this one's Tell is right at every event.
class TextStream {
 public:
  using Ch = char;
  explicit TextStream(const std::string& text) : m_begin(text.c_str()), m_at(text.c_str()) {}
  Ch Peek() const { return *m_at; }
  Ch Take() { return *m_at++; }
  size_t Tell() const { return static_cast<size_t>(m_at - m_begin); }
  // The reader needs these only when it parses in place.
  Ch* PutBegin() { return nullptr; }
  void Put(Ch) {}
  void Flush() {}
  size_t PutEnd(Ch*) { return 0; }

 private:
  const char* m_begin;
  const char* m_at;
};

// Follows the path to the list by depth alone: m_matched says how many of the path's names lead to where the reader is,
// so that nesting elsewhere costs a counter and no memory.
class ListHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ListHandler> {
 public:
  ListHandler(const std::string& text, const TextStream& stream, const ListNames& names, bool withElements,
              ListDocument& document)
      : m_text(text),
        m_stream(stream),
        m_path{"", "ResponseStatus", "Data", names.list, names.element},
        m_withElements(withElements),
        m_document(document) {}

  bool Null() { return Scalar(std::nullopt); }
  bool Bool(bool) { return Scalar(std::nullopt); }
  bool RawNumber(const char* text, rapidjson::SizeType length, bool) { return json::PassNumber({text, length}, *this); }
  bool Int(int value) { return Scalar(value); }
  bool Uint(unsigned value) { return Scalar(value); }
  // These get what does not fit the two above.
  bool Int64(int64_t) { return Scalar(std::nullopt); }
  bool Uint64(uint64_t) { return Scalar(std::nullopt); }
  bool Double(double value) { return Scalar(json::Of32Bits(value)); }
  bool String(const char* text, rapidjson::SizeType length, bool) {
    if (m_key == kChangeNumber) return TakeChangeNumber(ToChangeNumber({text, length}));
    return Scalar(json::Of32Bits(std::string_view(text, length)));
  }
  bool Key(const char* name, rapidjson::SizeType length, bool) {
    if (m_elementDepth == 0 || m_depth == m_elementDepth) m_key.assign(name, length);
    return true;
  }

  bool StartObject() {
    if (m_elementDepth == 0 && IsListElement()) BeginElement();
    if (m_elementDepth == 0 && IsOnPath()) ++m_matched;
    ++m_depth;
    return true;
  }
  bool StartArray() {
    if (m_elementDepth == 0 && BeginsList()) m_arrayDepth = m_depth + 1;
    ++m_depth;
    return true;
  }
  bool EndObject(rapidjson::SizeType) {
    --m_depth;
    if (m_elementDepth == 0) {
      m_matched = std::min(m_matched, m_depth);
    } else if (m_depth + 1 == m_elementDepth) {
      EndElement();
    } else {
      EndMember(1);
    }
    return true;
  }
  bool EndArray(rapidjson::SizeType) {
    --m_depth;
    if (m_elementDepth != 0) EndMember(1);
    if (m_arrayDepth == m_depth + 1) m_arrayDepth = 0;
    return true;
  }

 private:
  static constexpr std::string_view kChangeNumber = "ChangeNumber";
  static constexpr size_t kPathLength = 5;

  // Whether the value that now begins continues the path.
  bool IsOnPath() const { return m_matched == m_depth && m_depth < kPathLength && m_key == m_path[m_depth]; }
  // The first value at the end of the path is the list.
  bool BeginsList() {
    if (m_listSeen || m_depth != kPathLength - 1 || !IsOnPath()) return false;
    m_listSeen = true;
    return true;
  }
  bool IsListElement() { return m_arrayDepth != 0 ? m_depth == m_arrayDepth : BeginsList(); }

  void BeginElement() {
    m_elementDepth = m_depth + 1;
    m_keptFrom = m_stream.Tell();
    m_memberBegin = m_keptFrom + 1;
    m_element = {};
    m_idSeen = m_methodSeen = m_numberSeen = false;
    m_kept.clear();
  }
  void EndElement() {
    m_elementDepth = 0;
    if (!m_withElements) return;
    m_kept.append(m_text, m_keptFrom, m_stream.Tell() + 1 - m_keptFrom);
    m_element.text = std::move(m_kept);
    m_document.elements.push_back(std::move(m_element));
  }
  // A value ended inside an element, `closing` bytes from here.
  void EndMember(size_t closing) {
    if (m_depth != m_elementDepth) return;
    size_t end = m_stream.Tell() + closing;
    if (m_key == "Method" || m_key == kChangeNumber) DropMember(end);
    m_memberBegin = end;
  }
  // Leaves the member out together with the comma that parted it from the one before; the first member, which has none,
  // with the comma after it.
  void DropMember(size_t end) {
    if (!m_withElements) return;
    if (m_memberBegin > m_keptFrom) m_kept.append(m_text, m_keptFrom, m_memberBegin - m_keptFrom);
    m_keptFrom = end;
    if (m_kept != "{") return;
    size_t next = m_text.find_first_not_of(" \t\r\n", end);
    if (next != std::string::npos && m_text[next] == ',') m_keptFrom = next + 1;
  }

  bool TakeChangeNumber(std::optional<uint64_t> number) {
    if (m_elementDepth != 0) {
      if (m_depth != m_elementDepth) return true;
      if (!std::exchange(m_numberSeen, true)) m_element.number = number.value_or(0);
      EndMember(0);
    } else if (m_depth == 3 && m_matched == 3 && !std::exchange(m_listNumberSeen, true)) {
      m_document.saysNumber = number.has_value();
      m_document.number = number.value_or(0);
    }
    return true;
  }

  bool Scalar(std::optional<int64_t> number) {
    if (m_key == kChangeNumber) {
      return TakeChangeNumber(number && *number >= 0 ? std::optional<uint64_t>(*number) : std::nullopt);
    }
    if (m_elementDepth != 0) {
      if (m_depth != m_elementDepth) return true;
      if (m_key == "ID" && !std::exchange(m_idSeen, true) && number) m_element.id = static_cast<uint32_t>(*number);
      if (m_key == "Method" && !std::exchange(m_methodSeen, true) && number) m_element.method = json::AsSigned(*number);
      EndMember(0);
    } else if (m_depth == 2 && m_matched == 2 && number) {
      if (m_key == "ErrorModule" && !std::exchange(m_moduleSeen, true))
        m_document.errorModule = json::AsSigned(*number);
      if (m_key == "ErrorCode" && !std::exchange(m_codeSeen, true)) m_document.errorCode = json::AsSigned(*number);
    }
    return true;
  }

  const std::string& m_text;
  const TextStream& m_stream;
  const std::string_view m_path[kPathLength];  // the root, which has no name, and the names on the way
  const bool m_withElements;
  ListDocument& m_document;

  std::string m_key;
  size_t m_depth = 0;         // of nesting; the root object's members stand at 1
  size_t m_matched = 0;       // names of the path that lead here
  size_t m_arrayDepth = 0;    // depth inside the list's array; 0: not inside
  size_t m_elementDepth = 0;  // depth of an element's members; 0: not inside one
  bool m_listSeen = false;
  bool m_moduleSeen = false;
  bool m_codeSeen = false;
  bool m_listNumberSeen = false;
  // Of the element that is being read.
  ListElement m_element;
  bool m_idSeen = false;
  bool m_methodSeen = false;
  bool m_numberSeen = false;
  size_t m_memberBegin = 0;  // where the last member ended, the comma not included
  size_t m_keptFrom = 0;     // from here on the element's text is still to be kept
  std::string m_kept;
};

}  // namespace

bool ReadListDocument(const std::string& text, const ListNames& names, bool withElements, ListDocument& document) {
  document = {};
  TextStream stream(text);
  ListHandler handler(text, stream, names, withElements, document);
  rapidjson::Reader reader;
  rapidjson::ParseResult result =
      reader.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag>(stream, handler);
  // A zero byte ends the text for the reader.
  return !result.IsError() && stream.Tell() >= text.size();
}

std::optional<uint64_t> ToChangeNumber(std::string_view text) {
  return json::WholeNumber<uint64_t>(text);
}

std::string ListHead(const ListNames& names, uint64_t number) {
  return R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"CascadingErrorInfo":"","Data":{)" +
         (number == 0 ? std::string() : R"("ChangeNumber":")" + std::to_string(number) + R"(",)") + '"' + names.list +
         R"(":{")" + names.element + R"(":[)";
}

std::string ListTail() {
  return "]}}}}";
}

}  // namespace ResourceStore::details
