// SPDX-License-Identifier: Apache-2.0
// Reads an element while it is parsed, so that a large one needs no tree, which takes many times the text's memory.
#pragma once

#include <rapidjson/document.h>
#include <rapidjson/writer.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace server {

struct ElementContent {
  bool isThere = false;        // an object it is
  rapidjson::Document fields;  // the first of each member that was asked for; of a list or object only its kind
  // Of a view: the members that are the client's own, each as `,"name":value`, in their order. Windows' order and
  // digital zoom are texts there.
  std::string document;
  const char* fault = nullptr;  // what is wrong with the view's pages or windows
  bool hasServersOwn = false;   // members that are the server's were left out of the document
  bool hasMadeTexts = false;    // a window's order or digital zoom was none before
};

// Takes the events of RapidJSON's reader, or those of a value's Accept.
class ElementReader {
 public:
  using Ch = char;

  // `member`: the element is that member of the whole, the first of the name; empty: it is the whole.
  ElementReader(std::string_view member, std::initializer_list<const char*> fields, bool hasDocument);
  // For the events of so long a text.
  void Expect(size_t bytes) { m_element.document.reserve(m_hasDocument ? bytes : 0); }

  // REQUIRES: the events are over.
  ElementContent Take();

  bool Null();
  bool Bool(bool value);
  bool Int(int value);
  bool Uint(unsigned value);
  bool Int64(int64_t value);
  bool Uint64(uint64_t value);
  bool Double(double value);
  bool String(const char* text, rapidjson::SizeType length, bool copy);
  bool Key(const char* text, rapidjson::SizeType length, bool copy);
  bool StartObject();
  bool EndObject(rapidjson::SizeType members);
  bool StartArray();
  bool EndArray(rapidjson::SizeType elements);

 private:
  // Writes behind a text.
  struct Sink {
    using Ch = char;
    std::string& out;
    void Put(char c) { out += c; }
    void Flush() {}
  };
  enum class Is { kNull, kNumber, kText, kObject, kArray, kOther };
  enum class Use { kNone, kField, kDocument };

  int Depth() const { return m_depth - m_membersDepth; }  // 0: among the element's members
  void OnMember(std::string_view name);
  // A value that is no list or object stands outside the element.
  bool Skip() {
    m_isNext = false;
    return true;
  }
  // A value begins. Tells what is wrong with it as a page, a window or a part of one.
  void Check(Is is);
  // REQUIRES: it is a text of a window and stands in the document.
  bool MakeText(std::string_view text);
  bool IsWindowText() const { return m_isPages && m_isWindows && m_isText && Depth() == 4; }
  void AddField(rapidjson::Value value);
  void Begin(Is is);
  void End();
  template <class Number>
  bool OnNumber(Number number, bool (rapidjson::Writer<Sink>::*write)(Number));

  const std::string_view m_member;
  const std::vector<std::string_view> m_fields;
  const bool m_hasDocument;
  const int m_membersDepth;  // how many lists and objects are open around a member of the element

  ElementContent m_element;
  Sink m_sink{m_element.document};
  rapidjson::Writer<Sink> m_writer{m_sink};
  int m_depth = 0;
  bool m_isInside = false;  // the element has begun and not ended
  bool m_isNext = false;    // it begins with the next value, if that is an object
  bool m_isFound = false;
  Use m_use = Use::kNone;                         // of the present member
  std::string m_name;                             // its name, where it is a field
  bool m_hasPages = false, m_hasWindows = false;  // the first ones have come: of the element, of the page
  bool m_isPages = false, m_isWindows = false, m_isText = false;  // the present member is that
};

}  // namespace server
