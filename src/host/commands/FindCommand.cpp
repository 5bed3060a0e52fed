// SPDX-License-Identifier: Apache-2.0
// viewctl find: which views, pages and windows use a resource.
#include <cstdio>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Table.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/find/Search.h"

namespace host {
namespace {

struct FindOptions {
  std::string resource;
  std::string kind;
  FormatOptions format;
};

std::string UsesAsTable(const ViewTree& tree, const std::vector<ViewUses>& found, bool isWide) {
  std::vector<std::string> heads = {"VIEW", "PAGE", "WINDOW", "ROLE", "KIND", "ID", "RESOURCE", "PATH"};
  if (isWide) heads.insert(heads.end() - 1, {"SITE", "SHARED"});
  Table table(heads);
  for (const ViewUses& view : found) {
    for (const Use& use : view.uses) {
      std::vector<std::string> row = {view.view.id,
                                      std::to_string(use.page),
                                      std::to_string(use.window),
                                      RoleWord(use.role),
                                      KindWord(use.resource.type),
                                      use.resource.id,
                                      Printable(NameOfResource(use.resource)),
                                      Printable(PathText(tree, view.view))};
      if (isWide) row.insert(row.end() - 1, {SiteOfResource(use.resource), view.isShared ? "yes" : "no"});
      table.Add(std::move(row));
    }
  }
  return table.IsEmpty() ? "" : table.Text();
}

std::string UsesAsJson(const ViewTree& tree, const std::vector<ViewUses>& found) {
  std::string lines;
  for (const ViewUses& view : found) {
    for (const Use& use : view.uses) {
      lines += (lines.empty() ? "\n" : ",\n") + ObjectText()
                                                    .Add("View", view.view.id)
                                                    .Add("Page", use.page)
                                                    .Add("Window", use.window)
                                                    .Add("Role", RoleWord(use.role))
                                                    .Add("Kind", KindWord(use.resource.type))
                                                    .Add("ID", use.resource.id)
                                                    .Add("Name", NameOfResource(use.resource))
                                                    .Add("Site", SiteOfResource(use.resource))
                                                    .Add("Shared", view.isShared)
                                                    .Add("Path", PathText(tree, view.view))
                                                    .Text();
    }
  }
  return "[" + lines + "]\n";
}

int RunFind(const GlobalOptions& options, const FindOptions& find) {
  Wanted wanted{find.resource, std::nullopt};
  if (!find.kind.empty()) wanted.type = KindOfWord(find.kind);
  if (find.resource.empty()) throw Failure(kUsage, "The resource is empty: is a variable not set?");
  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  const std::vector<ViewUses> found = FindUses(client.Functions(), tree, wanted);
  const Format format = find.format.Chosen();
  const std::string text =
      format == Format::kJson ? UsesAsJson(tree, found) : UsesAsTable(tree, found, format == Format::kWide);
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (found.empty()) {
    Say(Printable("No view uses " + (find.kind.empty() ? "" : find.kind + " ") +
                  (wanted.IsById() ? find.resource
                                   : "\"" + find.resource + "\"; * stands for any part of a name, as in \"*gate*\"")));
  }
  return kDone;
}

}  // namespace

void AddFindCommand(CLI::App& app, Run& chosen) {
  const auto [command, find] =
      AddCommand(app, chosen, "find", "which views, pages and windows use a resource", RunFind);
  command->add_option("RESOURCE", find->resource, "its id or name; * and ? stand for parts of a name")->required();
  command->add_option("--kind", find->kind, "only of this kind: camera, door, elevator, radar, map, area, web-page")
      ->type_name("KIND");
  AddFormatOptions(*command, find->format, "the resource's site, and whether the view is somebody else's, too");
}

}  // namespace host
