// SPDX-License-Identifier: Apache-2.0
#include "host/Names.h"

#include <algorithm>

#include "host/Ids.h"
#include "host/Suggestion.h"
#include "host/Terminal.h"

namespace host {
namespace {

// Takes the prefix off, where the text begins with it.
bool Strip(std::string_view& text, std::string_view prefix) {
  const bool begins = text.starts_with(prefix);
  if (begins) text.remove_prefix(prefix.size());
  return begins;
}

void Keep(bool views, std::vector<Thing>& found) {
  std::erase_if(found, [&](const Thing& thing) { return thing.isView != views; });
}

void DropTop(std::vector<Thing>& found) {
  std::erase_if(found, [](const Thing& thing) { return thing.id == "-1"; });
}

std::string WithoutPrefix(std::string_view text) {
  for (const char* prefix : {"view:", "group:", "folder:"}) {
    if (Strip(text, prefix)) break;
  }
  return std::string(text);
}

Failure WrongKind(const std::string& text, const Thing& thing) {
  const std::string other = thing.isView ? " is a view" : " is a folder";
  const std::string command = thing.isView ? "viewctl show " : "viewctl tree ";
  return {kRefused, text + other + "; " + command + (thing.id == "-1" ? "\"" + text + "\"" : thing.id) + " shows it"};
}

}  // namespace

std::string EscapedName(const std::string& name) {
  std::string text;
  for (const char c : name) {
    if (c == '/' || c == '\\') text += '\\';
    text += c;
  }
  return text;
}

std::vector<std::string> SplitPath(std::string_view text) {
  std::vector<std::string> names(1);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '/') {
      names.emplace_back();
    } else {
      if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '/' || text[i + 1] == '\\')) ++i;
      names.back() += text[i];
    }
  }
  std::erase(names, "");
  return names;
}

std::string PathText(FolderKind kind, const std::vector<std::string>& path) {
  std::string text = kKindNames.at(kind);
  for (const std::string& name : path) text += "/" + EscapedName(name);
  return text;
}

std::string PathText(const ViewTree& tree, size_t folder) {
  return PathText(tree.folders[folder].kind, tree.PathOf(folder));
}

std::string PathText(const ViewTree& tree, const Thing& view) {
  return PathText(tree, view.folder) + (view.isView ? "/" + EscapedName(view.name) : "");
}

std::vector<Thing> Names::ById(const std::string& id) const {
  std::vector<Thing> found;
  for (size_t i = 0; i < m_tree.folders.size(); ++i) {
    const TreeFolder& folder = m_tree.folders[i];
    if (folder.id == id) found.push_back({false, id, i, folder.name});
    for (const TreeView& view : folder.views) {
      if (view.id == id) found.push_back({true, id, i, view.name});
    }
  }
  return found;
}

std::vector<size_t> Names::Below(size_t folder, const std::string& name) const {
  std::vector<size_t> found = m_tree.folders[folder].folders;
  std::erase_if(found, [&](size_t below) { return m_tree.folders[below].name != name; });
  return found;
}

void Names::AddContent(size_t folder, const std::string& name, std::vector<Thing>& found) const {
  for (const size_t below : Below(folder, name)) found.push_back({false, m_tree.folders[below].id, below, name});
  for (const TreeView& view : m_tree.folders[folder].views) {
    if (view.name == name) found.push_back({true, view.id, folder, name});
  }
}

std::vector<Thing> Names::ByPath(const std::string& text) const {
  const std::vector<std::string> names = SplitPath(text);
  std::vector<Thing> found;
  if (names.empty()) return found;
  for (size_t top = 0; top < m_tree.folders.size() && m_tree.folders[top].parent == top; ++top) {
    const bool isNamed = names[0] == kKindNames.at(m_tree.folders[top].kind) || names[0] == m_tree.folders[top].name;
    if (isNamed && names.size() == 1) found.push_back({false, "-1", top, m_tree.folders[top].name});
    for (size_t first = 0; first <= (isNamed && names.size() > 1 ? 1u : 0u); ++first) {
      std::vector<size_t> reached = {top};
      for (size_t i = first; i + 1 < names.size(); ++i) {
        std::vector<size_t> next;
        for (const size_t folder : reached) {
          for (const size_t below : Below(folder, names[i])) next.push_back(below);
        }
        reached = std::move(next);
      }
      for (const size_t folder : reached) AddContent(folder, names.back(), found);
    }
  }
  if (text.ends_with('/') && !text.ends_with("\\/")) Keep(false, found);
  return found;
}

std::vector<Thing> Names::All(const std::string& text) const {
  std::string_view rest = text;
  const bool onlyView = Strip(rest, "view:");
  const bool onlyFolder = !onlyView && (Strip(rest, "group:") || Strip(rest, "folder:"));
  const std::string name(rest);
  if (name.empty()) throw Failure(kUsage, "The name of a view or folder is empty: is a variable not set?");
  std::vector<Thing> found = IsId(name) ? ById(name) : ByPath(name);
  if (onlyView || onlyFolder) Keep(onlyView, found);
  return found;
}

Thing Names::View(const std::string& text) const {
  const std::vector<Thing> all = All(text);
  std::vector<Thing> found = all;
  Keep(true, found);
  if (found.empty() && !all.empty()) throw WrongKind(text, all.front());
  if (found.empty()) throw NotThere(text, Wanted::kView);
  if (found.size() > 1) RefuseSeveral(text, found);
  return found.front();
}

Thing Names::Folder(const std::string& text, bool withTop) const {
  const std::vector<Thing> all = All(text);
  std::vector<Thing> found = all;
  Keep(false, found);
  if (found.empty() && !all.empty()) throw WrongKind(text, all.front());
  if (!withTop) DropTop(found);
  if (found.empty()) throw NotThere(text, Wanted::kFolder);
  if (found.size() > 1) RefuseSeveral(text, found);
  return found.front();
}

Thing Names::Either(const std::string& text, bool withTop) const {
  std::vector<Thing> found = All(text);
  if (!withTop) DropTop(found);
  if (found.empty()) throw NotThere(text, Wanted::kEither);
  if (found.size() == 2 && found[0].isView != found[1].isView && IsId(text)) {
    throw Failure(kUsage, text + " is a view and a group: say view:" + text + " or group:" + text);
  }
  if (found.size() > 1) RefuseSeveral(text, found);
  return found.front();
}

std::vector<std::string> Names::NamesIn(const std::string& path, Wanted wanted) const {
  std::vector<std::string> names;
  const auto add = [&](size_t folder) {
    for (const size_t below : m_tree.folders[folder].folders) {
      if (wanted != Wanted::kView) names.push_back(m_tree.folders[below].name);
    }
    for (const TreeView& view : m_tree.folders[folder].views) {
      if (wanted != Wanted::kFolder) names.push_back(view.name);
    }
  };
  if (path.empty()) {
    if (wanted != Wanted::kView) names.assign(kKindNames.begin(), kKindNames.end());
    for (size_t top = 0; top < m_tree.folders.size() && m_tree.folders[top].parent == top; ++top) add(top);
  }
  for (const Thing& thing : ByPath(path)) {
    if (!thing.isView) add(thing.folder);
  }
  return names;
}

std::string Names::NearPath(const std::string& text, Wanted wanted) const {
  std::string path;
  const std::vector<std::string> names = SplitPath(text);
  for (size_t i = 0; i < names.size(); ++i) {
    const std::vector<std::string> inside = NamesIn(path, i + 1 < names.size() ? Wanted::kFolder : wanted);
    const bool isThere = std::ranges::find(inside, names[i]) != inside.end();
    const std::string name = isThere ? names[i] : Nearest(names[i], inside);
    if (name.empty()) return {};
    path += (path.empty() ? "" : "/") + EscapedName(name);
  }
  return path;
}

Failure Names::NotThere(const std::string& text, Wanted wanted) const {
  constexpr const char* kWords[] = {"view", "group", "view or group"};
  const std::string what = kWords[static_cast<int>(wanted)];
  const std::string name = WithoutPrefix(text);
  if (IsId(name)) return {kRefused, "There is no " + what + " " + text + "; viewctl tree lists what there is"};
  const std::string nearest = NearPath(name, wanted);
  const std::string advice =
      nearest.empty() || nearest == name
          ? ": it takes an id or a path from the top, such as Station/Forecourt; viewctl tree lists them"
          : "; did you mean \"" + nearest + "\"? (viewctl tree lists them)";
  return {kUsage, "There is no " + what + " \"" + text + "\"" + advice};
}

void Names::RefuseSeveral(const std::string& text, const std::vector<Thing>& found) const {
  std::string list;
  for (const Thing& thing : found) {
    const std::string id = thing.id == "-1" ? PathText(m_tree, thing.folder) : thing.id;
    list += (list.empty() ? "" : ", ") + std::string(thing.isView ? "view:" : thing.id == "-1" ? "" : "group:") + id;
  }
  throw Failure(kUsage, "\"" + text + "\" may be any of " + list + ": name one of them");
}

}  // namespace host
