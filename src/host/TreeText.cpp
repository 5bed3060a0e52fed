// SPDX-License-Identifier: Apache-2.0
#include "host/TreeText.h"

#include "host/JsonText.h"
#include "host/Look.h"
#include "host/Terminal.h"

namespace host {
namespace {

// One folder that is being walked: what of it comes next.
struct Step {
  size_t folder;
  size_t next = 0;  // sub-folders first, then views
};

struct Branches {
  const char* beside;
  const char* next;
  const char* last;
};
constexpr Branches kBranches[] = {{"│   ", "├── ", "└── "}, {"|   ", "|-- ", "`-- "}};

size_t ContentCount(const TreeFolder& folder) {
  return folder.folders.size() + folder.views.size();
}

std::string ViewText(const TreeView& view) {
  return Printable(view.name) + "  (view " + view.id + (view.sharedWithUser ? ", shared with you)" : ")") +
         (view.note.empty() ? "" : "  " + view.note);
}

std::string CountText(const ViewTree& tree, size_t folder) {
  const TreeCount count = tree.CountIn(folder);
  return "  " + Counted(count.folders, "folder") + ", " + Counted(count.views, "view");
}

void DescribeContent(const ViewTree& tree, size_t top, bool withCounts, std::string& text) {
  // Two characters for each level: a tab, then '|' if the level has more entries, else ' '.
  const Branches& branches = kBranches[IsAscii() ? 1 : 0];
  std::string indent;
  std::vector<Step> path = {{top}};
  while (!path.empty()) {
    Step& step = path.back();
    const TreeFolder& folder = tree.folders[step.folder];
    if (step.next == ContentCount(folder)) {
      path.pop_back();
      if (!path.empty()) indent.resize(indent.rfind('\t'));
      continue;
    }
    const bool last = step.next + 1 == ContentCount(folder);
    std::string line;
    for (const char c : indent) line += c == '|' ? branches.beside : c == ' ' ? "    " : "";
    line += last ? branches.last : branches.next;
    if (step.next < folder.folders.size()) {
      const size_t below = folder.folders[step.next++];
      const TreeFolder& group = tree.folders[below];
      text += line + StyledOut(Style::kFolder, Printable(group.name) + "/") + "  (group " + group.id + ")";
      text += (withCounts ? CountText(tree, below) : "") + "\n";
      indent += last ? "\t " : "\t|";
      path.push_back({below});
    } else {
      const TreeView& view = folder.views[step.next++ - folder.folders.size()];
      text += line + ViewText(view) + "\n";
    }
  }
}

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

void WriteHead(const TreeFolder& folder, Writer& writer) {
  writer.StartObject();
  writer.Key("ID");
  WriteText(writer, folder.id);
  writer.Key("Name");
  WriteText(writer, folder.name);
  writer.Key("Type");
  writer.Int(folder.kind);
  writer.Key("Folders");
  writer.StartArray();
}

void WriteTail(const TreeFolder& folder, Writer& writer) {
  writer.EndArray();
  writer.Key("Views");
  writer.StartArray();
  for (const TreeView& view : folder.views) {
    const std::string entry =
        ObjectText().Add("ID", view.id).Add("Name", view.name).Add("Shared", view.sharedWithUser).Text();
    writer.RawValue(entry.data(), entry.size(), rapidjson::kObjectType);
  }
  writer.EndArray();
  writer.EndObject();
}

}  // namespace

std::string TreeJson(const ViewTree& tree) {
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  writer.StartArray();
  for (size_t top = 0; top < tree.folders.size() && tree.folders[top].parent == top; ++top) {
    std::vector<Step> path = {{top}};
    WriteHead(tree.folders[top], writer);
    while (!path.empty()) {
      const TreeFolder& folder = tree.folders[path.back().folder];
      if (path.back().next == folder.folders.size()) {
        WriteTail(folder, writer);
        path.pop_back();
      } else {
        const size_t below = folder.folders[path.back().next++];
        WriteHead(tree.folders[below], writer);
        path.push_back({below});
      }
    }
  }
  writer.EndArray();
  return std::string(buffer.GetString(), buffer.GetSize());
}

std::string DescribeTree(const ViewTree& tree, bool withCounts) {
  std::string text;
  for (size_t top = 0; top < tree.folders.size() && tree.folders[top].parent == top; ++top) {
    const TreeFolder& folder = tree.folders[top];
    text += StyledOut(Style::kFolder, Printable(folder.name) + (folder.id == "-1" ? "" : "/"));
    if (folder.id != "-1") text += "  (group " + folder.id + ")";
    text += (withCounts ? CountText(tree, top) : "") + "\n";
    DescribeContent(tree, top, withCounts, text);
  }
  return text;
}

}  // namespace host
