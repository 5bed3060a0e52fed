// SPDX-License-Identifier: Apache-2.0
#include "drawing/Kinds.h"

#include <algorithm>

namespace drawing {
namespace {

struct KindWord {
  int type;
  WindowKind kind;
  const char* word;
};

constexpr KindWord kKinds[] = {{0, WindowKind::kEmpty, "empty"},          {1001, WindowKind::kCamera, "camera"},
                               {1002, WindowKind::kDoor, "door"},         {1005, WindowKind::kElevator, "elevator"},
                               {1006, WindowKind::kRadar, "radar"},       {7001, WindowKind::kMap, "map"},
                               {25001, WindowKind::kWebPage, "web page"}, {1027, WindowKind::kElement, "element"},
                               {2004, WindowKind::kElement, "element"},   {1012, WindowKind::kText, "text"},
                               {5001, WindowKind::kText, "text"}};
constexpr KindWord kRelatedKinds[] = {{0, WindowKind::kCamera, "camera"},
                                      {1, WindowKind::kMap, "map"},
                                      {4, WindowKind::kDoor, "door"},
                                      {5, WindowKind::kElement, "element"},
                                      {8, WindowKind::kElement, "element"}};

template <size_t N>
const KindWord* Find(const KindWord (&words)[N], int type) {
  const auto* found = std::find_if(words, words + N, [&](const KindWord& word) { return word.type == type; });
  return found == words + N ? nullptr : found;
}

}  // namespace

WindowKind KindOf(int resourceType) {
  const KindWord* found = Find(kKinds, resourceType);
  return found ? found->kind : WindowKind::kOther;
}

WindowKind KindOfRelated(int relatedType) {
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
