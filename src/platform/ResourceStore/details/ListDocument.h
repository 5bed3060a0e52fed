// SPDX-License-Identifier: Apache-2.0
// For this library and the platform's tests, not for hosts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ResourceStore/Export.h"

namespace ResourceStore::details {

// What distinguishes the two kinds of list: the names in "/ResponseStatus/Data/<list>/<element>".
struct ListNames {
  const char* list;
  const char* element;
};
inline constexpr ListNames kViewNames{"ViewList", "View"};
inline constexpr ListNames kViewGroupNames{"ViewGroupList", "ViewGroup"};

struct ListElement {
  std::optional<uint32_t> id;  // empty when the element has none that is a number
  int method = 0;              // 0 added, 1 changed, 2 removed; others may occur
  uint64_t number = 0;         // "ChangeNumber": of the object's last change; 0 without one
  std::string text;            // the element as it stood in the document, without its "Method" and "ChangeNumber"
};

struct ListDocument {
  int errorModule = -1;
  int errorCode = -1;
  bool saysNumber = false;
  uint64_t number = 0;  // of the last change that the list holds; 0 before the first, and where it does not say
  std::vector<ListElement> elements;
};

// Reads a list reply or change document in one pass, without a tree and at any depth. With `withElements` false the
// elements are not collected. False when the text is not JSON; `document` is unspecified then. A lone object reads as
// a list of one; elements that are no objects are left out.
RESOURCESTORE_API bool ReadListDocument(const std::string& text, const ListNames& names, bool withElements,
                                        ListDocument& document);

// A number of a change, as documents and headers hold it: decimal digits and nothing else.
RESOURCESTORE_API std::optional<uint64_t> ToChangeNumber(std::string_view text);

// What stands before and after the elements of a list that is complete up to that change. Number 0: it does not say so.
std::string ListHead(const ListNames& names, uint64_t number = 0);
std::string ListTail();

}  // namespace ResourceStore::details
