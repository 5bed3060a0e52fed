// SPDX-License-Identifier: Apache-2.0
// viewctl resources: what the server has for windows to show.
#include <algorithm>
#include <climits>
#include <cstdio>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/NamePattern.h"
#include "host/ResourceList.h"
#include "host/Table.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"

namespace host {
namespace {

struct ResourcesOptions {
  std::string kind;
  std::string name;
  FormatOptions format;
};

// Elements kind by kind, areas behind them.
int RankOf(const ListedResource& listed) {
  return listed.resource.type == kAreaType ? INT_MAX : listed.resource.type;
}

std::vector<ListedResource> ListWanted(const ResourcesOptions& wanted) {
  std::vector<ListedResource> listed = ListResources();
  if (!wanted.kind.empty()) {
    std::erase_if(listed, [type = KindOfWord(wanted.kind)](const auto& one) { return one.resource.type != type; });
  }
  if (!wanted.name.empty()) {
    std::erase_if(listed, [match = NamePattern(wanted.name)](const auto& one) { return !match.Fits(one.name); });
  }
  std::ranges::stable_sort(listed, {}, RankOf);
  return listed;
}

std::string ResourcesAsJson(const std::vector<ListedResource>& listed) {
  std::string lines;
  for (const ListedResource& one : listed) {
    ObjectText text;
    text.Add("Kind", KindWord(one.resource.type)).Add("ID", one.resource.id).Add("Name", one.name);
    lines += (lines.empty() ? "\n" : ",\n") + text.Add("Site", one.site).Text();
  }
  return "[" + lines + "]\n";
}

std::string ResourcesAsTable(const std::vector<ListedResource>& listed, bool isWide) {
  std::vector<std::string> heads = {"KIND", "ID", "NAME"};
  if (isWide) heads.insert(heads.end() - 1, "SITE");
  Table table(heads);
  for (const ListedResource& one : listed) {
    std::vector<std::string> row = {KindWord(one.resource.type), one.resource.id, Printable(one.name)};
    if (isWide) row.insert(row.end() - 1, one.site);
    table.Add(std::move(row));
  }
  return table.IsEmpty() ? "" : table.Text();
}

int RunResources(const GlobalOptions& options, const ResourcesOptions& wanted) {
  if (!wanted.kind.empty()) KindOfWord(wanted.kind);
  const Client client(options, Texts::kTranslated);
  const std::vector<ListedResource> listed = ListWanted(wanted);
  const Format format = wanted.format.Chosen();
  const std::string text =
      format == Format::kJson ? ResourcesAsJson(listed) : ResourcesAsTable(listed, format == Format::kWide);
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (listed.empty()) {
    Say(Printable("The server has no " + (wanted.kind.empty() ? "resource" : wanted.kind) +
                  (wanted.name.empty() ? "" : " \"" + wanted.name + "\"") + "; * stands for any part of a name"));
  }
  return kDone;
}

}  // namespace

void AddResourcesCommand(CLI::App& app, Run& chosen) {
  const auto [command, wanted] =
      AddCommand(app, chosen, "resources", "the cameras, doors and so on that views can show", RunResources);
  command->add_option("--kind", wanted->kind, "only this kind: camera, door, elevator, radar, map, area")
      ->type_name("KIND");
  command->add_option("--name", wanted->name, "only what fits; * and ? stand for parts of a name")
      ->type_name("PATTERN");
  AddFormatOptions(*command, wanted->format, "their sites too");
  command->footer("viewctl find says which views use one. Web pages are in views alone.");
}

}  // namespace host
