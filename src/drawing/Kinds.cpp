// SPDX-License-Identifier: Apache-2.0
#include "drawing/Kinds.h"

#include <algorithm>

namespace drawing {
namespace {

struct KindWord {
  int type;
  Kind kind;
  const char* word;
};

constexpr KindWord kKinds[] = {
    {0, Kind::kEmpty, "empty"},          {1001, Kind::kCamera, "camera"},   {1002, Kind::kDoor, "door"},
    {1005, Kind::kElevator, "elevator"}, {1006, Kind::kRadar, "radar"},     {7001, Kind::kMap, "map"},
    {25001, Kind::kWebPage, "web page"}, {1027, Kind::kElement, "element"}, {2004, Kind::kElement, "element"},
    {1012, Kind::kText, "text"},         {5001, Kind::kText, "text"}};
constexpr KindWord kRelatedKinds[] = {{0, Kind::kCamera, "camera"},
                                      {1, Kind::kMap, "map"},
                                      {4, Kind::kDoor, "door"},
                                      {5, Kind::kElement, "element"},
                                      {8, Kind::kElement, "element"}};

template <size_t N>
const KindWord* Find(const KindWord (&words)[N], int type) {
  const auto* found = std::find_if(words, words + N, [&](const KindWord& word) { return word.type == type; });
  return found == words + N ? nullptr : found;
}

}  // namespace

Kind KindOf(int resourceType) {
  const KindWord* found = Find(kKinds, resourceType);
  return found ? found->kind : Kind::kOther;
}

Kind KindOfRelated(int relatedType) {
  const KindWord* found = Find(kRelatedKinds, relatedType);
  return found ? found->kind : KindOf(relatedType);
}

// Relations pass on the numbers of other kinds as they are.
QString WordOfRelated(int relatedType) {
  const KindWord* found = Find(kRelatedKinds, relatedType);
  if (!found) found = Find(kKinds, relatedType);
  return found ? found->word : "resource of type " + QString::number(relatedType);
}

QString WordOf(int resourceType) {
  const KindWord* found = Find(kKinds, resourceType);
  return found ? found->word : "resource";
}

}  // namespace drawing
