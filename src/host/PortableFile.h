// SPDX-License-Identifier: Apache-2.0
// Views and folders as a file that fits any server: no ids of views or folders, no owners, no GUIDs and no names that a
// server looks up. What a window shows stays named by the resource's own id.
//
//   {"Format":"viewctl-export","Version":1,
//    "Folders":[{"Kind":"public","Path":["Station","Platforms"]}],
//    "Views":[{"Kind":"public","Path":["Station"],"Name":"Forecourt","AutoCycle":1,"RoundTime":20,"PlanPages":[...]}],
//    "Names":[{"Kind":"camera","ID":"118","Name":"North gate"}]}
//
// "Names" are there when they were asked for; an import uses them for what people read, and for a map by name.
// "PlanPages" is what AddPlan takes, reduced to what a server keeps. The same content always gives the same bytes.
#pragma once

#include <rapidjson/document.h>

#include <compare>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "host/Resources.h"
#include "host/ViewTree.h"

namespace host {

// A place in the tree: a top-level folder, and names from there down.
struct Place {
  FolderKind kind = kPublic;
  std::vector<std::string> path;

  auto operator<=>(const Place&) const = default;  // NOLINT(modernize-use-nullptr)
};

// "public / Station / Platforms", safe to print.
std::string PlaceText(const Place& place);

struct PortableView {
  Place folder;
  std::string name;
  int autoCycle = 0;
  int roundTime = 0;
  std::string pages = "[]";  // JSON text in the one form that KeepPages writes

  auto operator<=>(const PortableView&) const = default;  // NOLINT(modernize-use-nullptr)
};

struct PortableFile {
  std::vector<Place> folders;
  std::vector<PortableView> views;
  // The names of what the views show, where the file has them. Not needed to make the views elsewhere.
  std::map<Resource, std::string> names;
};

// The file's text: sorted, indented, with a line end at its end.
std::string WritePortable(PortableFile file);

// Throws Failure kUsage, naming the place, when the text is not such a file.
PortableFile ReadPortable(std::string_view text);

// A view as GetPlanDetail answers it, lying in `folder`.
PortableView ToPortable(const rapidjson::Value& detail, const Place& folder);

// What of "PlanPages" survives on a server, in fixed order with every kept key written. `where` begins the message
// of the Failure kUsage that a value of the wrong kind throws.
std::string KeepPages(const rapidjson::Value& pages, const std::string& where);

}  // namespace host
