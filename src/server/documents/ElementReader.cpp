// SPDX-License-Identifier: Apache-2.0
#include "server/documents/ElementReader.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>

#include "server/documents/Replies.h"

namespace server {

namespace {

using rapidjson::SizeType;
using rapidjson::Value;

// Members of a view that the server keeps by itself or does not take from clients; all others are the document.
constexpr std::string_view kServersOwn[] = {
    "ID",         "GUID",          "Name",      "ViewGroupID", "UserID", "SharedUserID", "SharedUserName",
    "SharedWith", "SequenceIndex", "AutoCycle", "CycleTime",   "Method", kChangeNumber};
constexpr std::string_view kTextsOfWindow[] = {"SequenceIndex", "Xtop", "Ytop", "Xbottom", "Ybottom"};

template <class Names>
bool IsOneOf(std::string_view name, const Names& names) {
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

}  // namespace

ElementReader::ElementReader(std::string_view member, std::initializer_list<const char*> fields, bool hasDocument)
    : m_member(member),
      m_fields(fields.begin(), fields.end()),
      m_hasDocument(hasDocument),
      m_membersDepth(member.empty() ? 1 : 2),
      m_isNext(member.empty()) {
  m_element.fields.SetObject();
}

ElementContent ElementReader::Take() {
  std::string& document = m_element.document;
  // What was put by for it and not used. Of a long text it has not been touched, and copying would take as much again.
  if (document.capacity() < (size_t{1} << 20) || document.size() < document.capacity() / 2) document.shrink_to_fit();
  return std::move(m_element);
}

void ElementReader::OnMember(std::string_view name) {
  m_use = Use::kNone;
  if (IsOneOf(name, m_fields)) {
    m_name = name;
    m_use = m_element.fields.HasMember(m_name.c_str()) ? Use::kNone : Use::kField;
  } else if (m_hasDocument && !IsOneOf(name, kServersOwn)) {
    m_use = Use::kDocument;
    m_element.document += ',';
    m_writer.Reset(m_sink);
    m_writer.String(name.data(), static_cast<SizeType>(name.size()));
    m_element.document += ':';
    m_writer.Reset(m_sink);
    m_isPages = name == "PlanPages" && !std::exchange(m_hasPages, true);
  } else if (m_hasDocument) {
    m_element.hasServersOwn = true;
  }
}

bool ElementReader::Key(const char* text, SizeType length, bool copy) {
  const std::string_view name(text, length);
  if (m_depth == 1 && !m_member.empty()) {
    m_isNext = name == m_member && !std::exchange(m_isFound, true);
  } else if (m_isInside && Depth() == 0) {
    OnMember(name);
  } else if (m_isInside && m_use == Use::kDocument) {
    if (Depth() == 2) m_isWindows = name == "PlanViewItem" && !std::exchange(m_hasWindows, true);
    if (Depth() == 4) m_isText = IsOneOf(name, kTextsOfWindow);
    m_writer.Key(text, length, copy);
  }
  return true;
}

void ElementReader::Check(Is is) {
  if (m_use != Use::kDocument || !m_isPages || m_element.fault) return;
  const int depth = Depth();
  const bool isList = depth == 0 || (depth == 2 && m_isWindows);
  const bool isEntry = depth == 1 || (depth == 3 && m_isWindows);
  if (isList && is != Is::kArray && is != Is::kNull) m_element.fault = "the pages or windows are not a list";
  if (isEntry && is != Is::kObject) m_element.fault = "a page or window is not an object";
  if (IsWindowText() && is != Is::kText && is != Is::kNumber && is != Is::kNull) {
    m_element.fault = "a window's order or digital zoom is neither a text nor a number";
  }
  if (depth == 1) m_hasWindows = m_isWindows = false;
}

void ElementReader::AddField(Value value) {
  auto& allocator = m_element.fields.GetAllocator();
  m_element.fields.AddMember(Value(m_name.c_str(), allocator), value, allocator);
}

bool ElementReader::Null() {
  if (!m_isInside) return Skip();
  Check(Is::kNull);
  if (m_use == Use::kDocument) return IsWindowText() ? MakeText("") : m_writer.Null();
  if (m_use == Use::kField && Depth() == 0) AddField(Value());
  return true;
}

bool ElementReader::Bool(bool value) {
  if (!m_isInside) return Skip();
  Check(Is::kOther);
  if (m_use == Use::kDocument) return m_writer.Bool(value);
  if (m_use == Use::kField && Depth() == 0) AddField(Value(value));
  return true;
}

// A window's number becomes its shortest decimal text, whatever the locale.
template <class Number>
bool ElementReader::OnNumber(Number number, bool (rapidjson::Writer<Sink>::*write)(Number)) {
  if (!m_isInside) return Skip();
  Check(Is::kNumber);
  if (m_use == Use::kField && Depth() == 0) AddField(Value(number));
  if (m_use != Use::kDocument) return true;
  if (!IsWindowText()) return (m_writer.*write)(number);
  char text[40];
  const char* const end = std::to_chars(text, text + sizeof text, number).ptr;
  return MakeText({text, static_cast<size_t>(end - text)});
}

bool ElementReader::MakeText(std::string_view text) {
  m_element.hasMadeTexts = true;
  return m_writer.String(text.data(), static_cast<SizeType>(text.size()));
}

bool ElementReader::Int(int value) {
  return OnNumber(value, &rapidjson::Writer<Sink>::Int);
}

bool ElementReader::Uint(unsigned value) {
  return OnNumber(value, &rapidjson::Writer<Sink>::Uint);
}

bool ElementReader::Int64(int64_t value) {
  return OnNumber(value, &rapidjson::Writer<Sink>::Int64);
}

bool ElementReader::Uint64(uint64_t value) {
  return OnNumber(value, &rapidjson::Writer<Sink>::Uint64);
}

bool ElementReader::Double(double value) {
  return OnNumber(value, &rapidjson::Writer<Sink>::Double);
}

bool ElementReader::String(const char* text, SizeType length, bool copy) {
  if (!m_isInside) return Skip();
  Check(Is::kText);
  if (m_use == Use::kDocument) return m_writer.String(text, length, copy);
  if (m_use == Use::kField && Depth() == 0) AddField(Value(text, length, m_element.fields.GetAllocator()));
  return true;
}

bool ElementReader::StartObject() {
  Begin(Is::kObject);
  return true;
}

bool ElementReader::EndObject(SizeType) {
  End();
  return m_use != Use::kDocument || !m_isInside || m_writer.EndObject();
}

bool ElementReader::StartArray() {
  Begin(Is::kArray);
  return true;
}

bool ElementReader::EndArray(SizeType) {
  End();
  return m_use != Use::kDocument || !m_isInside || m_writer.EndArray();
}

void ElementReader::Begin(Is is) {
  if (m_isInside) {
    Check(is);
    if (m_use == Use::kDocument) is == Is::kObject ? m_writer.StartObject() : m_writer.StartArray();
    if (m_use == Use::kField && Depth() == 0) {
      AddField(Value(is == Is::kObject ? rapidjson::kObjectType : rapidjson::kArrayType));
    }
  } else if (std::exchange(m_isNext, false) && is == Is::kObject) {
    m_isInside = m_element.isThere = true;
  }
  ++m_depth;
}

void ElementReader::End() {
  --m_depth;
  if (Depth() < 0) m_isInside = false;
}

}  // namespace server
