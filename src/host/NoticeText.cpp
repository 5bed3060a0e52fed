// SPDX-License-Identifier: Apache-2.0
#include "host/NoticeText.h"

#include "host/Names.h"
#include "host/Terminal.h"

namespace host {
namespace {

bool IsOfChild(const Notice& notice) {
  return notice.enum_state == kChildAdded || notice.enum_state == kChildRemoved;
}

std::string Event(const Notice& notice) {
  switch (notice.enum_state) {
    case kRenamed:
      return "renamed or changed, \"" + notice.name + "\" now";
    case kChildAdded:
      return "came";
    case kChildRemoved:
      return "went";
    case kChanged:
      return "changed";
    default:
      return "event " + std::to_string(notice.enum_state);
  }
}

}  // namespace

NoticeText::Paths NoticeText::PathsOf(const ViewTree& tree) {
  Paths paths;
  for (size_t i = 0; i < tree.folders.size(); ++i) {
    const TreeFolder& folder = tree.folders[i];
    paths[{false, folder.id}] = PathText(tree, i);
    for (const TreeView& view : folder.views) paths[{true, view.id}] = PathText(tree, {true, view.id, i, view.name});
  }
  return paths;
}

void NoticeText::Refresh() {
  m_before = std::exchange(m_now, PathsOf(ReadViewTree(m_plugin)));
}

std::string NoticeText::Line(const Notice& notice) const {
  const bool isView =
      IsOfChild(notice) ? notice.child_type == ResourceData::ResourceTypeView : notice.enum_state == kChanged;
  const std::pair key(isView, IsOfChild(notice) ? notice.child_id : notice.id);
  std::string path;
  for (const Paths* paths : {&m_now, &m_before}) {
    const auto found = paths->find(key);
    if (path.empty() && found != paths->end()) path = " " + found->second;
  }
  return Printable((isView ? "view " : "group ") + key.second + path + ": " + Event(notice));
}

}  // namespace host
