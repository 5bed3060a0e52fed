// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/document/UsualText.h"
#include "json/NameMark.h"

namespace QorviViewPlugin {

// A position in an object of a JSON text: the reads of PathCursor, without paths and without a document, each value
// going from the text into the model as it is asked for. It reads only the usual: what UsualText reads, values of
// exactly the kind asked for, a name once in an object. At anything else it stops: all further reads are of nothing,
// and End says so. Read the object again with a PathCursor then, because the platform's document decides what it means.
//
// The order of the questions matters to the cost, and with Order::AsAsked to whether it can read the object at all:
// whatever is not there where it is asked for is taken as absent, and if it comes later, the cursor stops. With
// Order::Any it looks further, and goes through what it passes over once more when it is asked for. Ask for no name
// twice, but for Count before Enter.
//
// One thread at a time; the text must outlive the cursor.
class TextCursor {
 public:
  enum class Order { AsAsked, Any };

  explicit TextCursor(UsualText& text);
  TextCursor(const TextCursor&) = delete;
  TextCursor& operator=(const TextCursor&) = delete;

  // The cursor stands in the object that begins there. Texts in place hold until this is called again.
  void Begin(const char* object, Order order);
  // Passes over what is left of that object, and answers the place behind it; null if it is not a usual one.
  const char* End();
  // Whether the order may have been the reason, so that the object may be usual with Order::Any.
  bool MayBeInOtherOrder() const { return m_mayBeInOtherOrder; }

  // Leaves the level that it entered when it goes out of scope. Levels are left in the reverse order.
  class Level {
   public:
    Level(const Level&) = delete;
    ~Level() {
      if (const char* const end = m_cursor.Leave()) m_cursor.Took(end);
    }

   private:
    friend class TextCursor;
    explicit Level(TextCursor& cursor) : m_cursor(cursor) {}
    TextCursor& m_cursor;
  };

  // As PathCursor's.
  [[nodiscard]] Level Enter(std::string_view key) {
    Push(Find(key));
    return Level(*this);
  }
  int Number(std::string_view key, int absent = -1);
  std::string Text(std::string_view key) { return std::string(TextInPlace(key)); }
  // The text as it stands, without a copy.
  std::string_view TextInPlace(std::string_view key);
  // Of an object, or of nothing: for lists there is ReadEach.
  int Count(std::string_view key) {
    const char* const value = Find(key);
    return value ? CountValue(value) : 0;
  }
  // This member will not be read.
  void PassOver(std::string_view key) { Find(key); }

  // The elements of a list, one after another, each of which is entered by Next and left by the next one. An object in
  // place of a list is its only element.
  class List {
   public:
    List(TextCursor& cursor, std::string_view key);
    List(const List&) = delete;
    ~List();
    bool Next();
    // How many elements the last list of that name had, which is a guess at those of this one.
    std::uint32_t& LastCount() const { return m_cursor.m_lastCounts[m_mark]; }

   private:
    void LeaveElement();

    TextCursor& m_cursor;
    const std::uint8_t m_mark;
    const char* m_next = nullptr;  // the element
    const char* m_end = nullptr;   // behind the list
    bool m_isSingle = false;
    bool m_isInElement = false;
  };

 private:
  // An object. Of anything else there are no members.
  struct Place {
    const char* at = nullptr;     // the next member's name; null behind the last
    const char* end = nullptr;    // behind the object, once that is reached
    const char* value = nullptr;  // of the member that was found last, while it has not been read
    std::string_view key;         // its name
    bool wasPassed = false;       // `at` is beyond that value already
    std::size_t firstMember = 0;
    std::array<std::uint64_t, 4> marks{};  // of the names that were asked for, or with Order::Any have been seen
  };
  struct Member {
    std::string_view name;
    const char* value;  // null once it has been read
  };

  static bool HasMark(const Place& place, std::uint8_t mark) { return (place.marks[mark / 64] >> mark % 64 & 1) != 0; }
  static void SetMark(Place& place, std::uint8_t mark) { place.marks[mark / 64] |= std::uint64_t{1} << mark % 64; }

  void Push(const char* object);
  const char* Leave();
  void Stop();
  const char* Find(std::string_view key);
  const char* FindSlowly(std::string_view key);
  const char* FindInAnyOrder(Place& place, std::string_view key);
  int TakeNumber(const char* value, int absent);
  std::string_view TakeText(const char* value);
  int CountValue(const char* value);
  const char* NextName(Place& place, std::string_view& name);
  Member* FindMember(const Place& place, std::string_view name);
  void Took(const char* end);
  void Advance(Place& place, const char* end);

  UsualText& m_text;
  Order m_order = Order::AsAsked;
  bool m_isStopped = false;
  bool m_mayBeInOtherOrder = false;
  std::vector<Place> m_places;                    // the innermost last
  std::vector<Member> m_members;                  // with Order::Any, those that `at` is beyond, of all levels
  std::array<std::uint32_t, 256> m_lastCounts{};  // of lists, by their names' marks
};

// As PathCursor's. No more memory is kept than the list needs.
template <class Entry, class Read>
void ReadEach(TextCursor& at, std::string_view key, std::vector<Entry>& entries, const Read& read) {
  TextCursor::List list(at, key);
  while (list.Next()) {
    if (entries.empty()) entries.reserve(list.LastCount());
    read(entries.emplace_back());
  }
  if (entries.size() != entries.capacity()) entries.shrink_to_fit();
  constexpr std::size_t kMost = 64;  // more are not provided for by a guess
  if (!entries.empty()) list.LastCount() = static_cast<std::uint32_t>(std::min(entries.size(), kMost));
}

// What finds a member is put where it is asked for, so that its name's length and mark are known to the compiler.

[[gnu::always_inline]] inline const char* TextCursor::Find(std::string_view key) {
  Place& place = m_places.back();
  if (place.value || m_order == Order::Any) return FindSlowly(key);
  SetMark(place, json::NameMark(key));
  place.key = key;
  return place.value = place.at ? m_text.Expect(place.at, key) : nullptr;
}

[[gnu::always_inline]] inline int TextCursor::Number(std::string_view key, int absent) {
  const char* const value = Find(key);
  return value ? TakeNumber(value, absent) : absent;
}

[[gnu::always_inline]] inline std::string_view TextCursor::TextInPlace(std::string_view key) {
  const char* const value = Find(key);
  return value ? TakeText(value) : std::string_view();
}

}  // namespace QorviViewPlugin
