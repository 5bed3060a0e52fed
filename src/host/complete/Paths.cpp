// SPDX-License-Identifier: Apache-2.0
#include "host/complete/Paths.h"

#include "host/Names.h"

namespace host {
namespace {

class PathFinder {
 public:
  PathFinder(const ViewTree& tree, const std::string& text, PathsOf wanted)
      : m_tree(tree), m_text(text), m_wanted(wanted), m_parent(text.substr(0, LastSlash(text))) {}

  std::vector<Candidate> Find() {
    if (m_parent.empty()) {
      for (size_t top = 0; top < m_tree.folders.size() && m_tree.folders[top].parent == top; ++top) {
        AddContent(top);
        Add(kKindNames.at(m_tree.folders[top].kind) + std::string("/"), m_tree.folders[top].name);
      }
    } else {
      for (const Thing& thing : Names(m_tree).All(m_parent)) {
        if (!thing.isView) AddContent(thing.folder);
      }
    }
    return std::move(m_found);
  }

 private:
  // Behind the last slash that is none of a name's; 0 where there is none.
  static size_t LastSlash(const std::string& text) {
    for (size_t i = text.size(); i-- > 0;) {
      if (text[i] == '/' && (i == 0 || text[i - 1] != '\\')) return i + 1;
    }
    return 0;
  }

  void AddContent(size_t folder) {
    for (const size_t below : m_tree.folders[folder].folders) {
      Add(m_parent + EscapedName(m_tree.folders[below].name) + "/", "group " + m_tree.folders[below].id);
    }
    if (m_wanted == PathsOf::kFolders) return;
    for (const TreeView& view : m_tree.folders[folder].views) Add(m_parent + EscapedName(view.name), "view " + view.id);
  }

  void Add(const std::string& path, const std::string& about) {
    if (path.starts_with(m_text) && CanBeTyped(path)) m_found.push_back({path, about});
  }

  const ViewTree& m_tree;
  const std::string& m_text;
  const PathsOf m_wanted;
  const std::string m_parent;
  std::vector<Candidate> m_found;
};

}  // namespace

std::vector<Candidate> PathsBeginning(const ViewTree& tree, const std::string& text, PathsOf wanted) {
  return PathFinder(tree, text, wanted).Find();
}

}  // namespace host
