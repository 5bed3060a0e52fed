// SPDX-License-Identifier: Apache-2.0
// A file that says how views were before an edit and after it, so that the edit can be taken back.
//
//   {"Format":"viewctl-undo","Version":1,"Server":"https://host:8090",
//    "Views":[{"ID":"110","Name":"Forecourt","Before":[...],"After":[...]}]}
//
// The lists are "PlanPages" in the form of an export.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace host {

struct UndoView {
  std::string id;
  std::string name;
  std::string before;  // pages in the one form of KeepPages
  std::string after;
};

struct UndoFile {
  std::string server;  // empty: the own one
  std::vector<UndoView> views;
};

std::string WriteUndo(const UndoFile& file);
// Throws Failure kUsage, naming the place, when the text is not such a file.
UndoFile ReadUndo(std::string_view text);

}  // namespace host
