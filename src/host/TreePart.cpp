// SPDX-License-Identifier: Apache-2.0
#include "host/TreePart.h"

#include "host/NamePattern.h"

namespace host {
namespace {

class Pruner {
 public:
  Pruner(const ViewTree& tree, const TreeChoices& choices)
      : m_tree(tree), m_choices(choices), m_pattern(choices.name), m_kept(tree.folders.size(), true) {}

  ViewTree Prune() {
    if (!m_choices.name.empty()) KeepNamed();
    if (m_choices.below) {
      AddTop(*m_choices.below);
    } else {
      for (size_t top = 0; top < m_tree.folders.size() && m_tree.folders[top].parent == top; ++top) AddTop(top);
    }
    AddBelow();
    return std::move(m_part);
  }

 private:
  struct Source {
    size_t folder;
    int level;
  };

  // Folders stand behind those they lie in, so from the end each has been seen before the one above it.
  void KeepNamed() {
    for (size_t i = m_tree.folders.size(); i-- > 0;) {
      const TreeFolder& folder = m_tree.folders[i];
      bool isKept = m_pattern.Fits(folder.name);
      for (const TreeView& view : folder.views) isKept = isKept || m_pattern.Fits(view.name);
      for (const size_t below : folder.folders) isKept = isKept || m_kept[below];
      m_kept[i] = isKept;
    }
  }

  void AddTop(size_t folder) { Add(folder, m_part.folders.size(), 0); }

  void Add(size_t folder, size_t parent, int level) {
    const TreeFolder& whole = m_tree.folders[folder];
    TreeFolder& part = m_part.folders.emplace_back(TreeFolder{whole.id, whole.name, whole.kind, parent, {}, {}});
    m_sources.push_back({folder, level});
    if (m_choices.depth && level >= *m_choices.depth) return;
    const bool isWhole = m_choices.name.empty() || m_pattern.Fits(whole.name);
    for (const TreeView& view : whole.views) {
      if (isWhole || m_pattern.Fits(view.name)) part.views.push_back(view);
    }
  }

  // Appended while the list is walked, so that depth costs no stack.
  void AddBelow() {
    for (size_t i = 0; i < m_part.folders.size(); ++i) {
      const auto [folder, level] = m_sources[i];
      if (m_choices.depth && level >= *m_choices.depth) continue;
      for (const size_t below : m_tree.folders[folder].folders) {
        if (!m_kept[below]) continue;
        m_part.folders[i].folders.push_back(m_part.folders.size());
        Add(below, i, level + 1);
      }
    }
  }

  const ViewTree& m_tree;
  const TreeChoices& m_choices;
  const NamePattern m_pattern;
  std::vector<bool> m_kept;
  std::vector<Source> m_sources;  // where each folder of the part comes from
  ViewTree m_part;
};

}  // namespace

ViewTree PartOf(const ViewTree& tree, const TreeChoices& choices) {
  return Pruner(tree, choices).Prune();
}

}  // namespace host
