// SPDX-License-Identifier: Apache-2.0
// viewctl tree: the folders and the views in them.
#include <cstdio>

#include "host/Client.h"
#include "host/Names.h"
#include "host/TreePart.h"
#include "host/TreeText.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct TreeOptions {
  std::string folder;
  std::optional<int> depth;
  std::string name;
  bool counts = false;
  bool json = false;
};

int RunTree(const GlobalOptions& options, const TreeOptions& wanted) {
  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  TreeChoices choices{std::nullopt, wanted.depth, wanted.name};
  if (!wanted.folder.empty()) choices.below = Names(tree).Folder(wanted.folder, true).folder;
  const ViewTree part = PartOf(tree, choices);
  const std::string text = wanted.json ? TreeJson(part) + "\n" : DescribeTree(part, wanted.counts);
  std::fwrite(text.data(), 1, text.size(), stdout);
  return kDone;
}

}  // namespace

void AddTreeCommand(CLI::App& app, Run& chosen) {
  const auto [command, tree] = AddCommand(app, chosen, "tree", "the folders and the views in them", RunTree);
  command->add_option("FOLDER", tree->folder, "only this one, by id or path, and what lies in it");
  command->add_option("--depth", tree->depth, "how many levels below the top are shown")
      ->type_name("N")
      ->check(CLI::Range(0, 1000000));
  command
      ->add_option("--name", tree->name, "only what fits, and the folders above it; * and ? stand for parts of a name")
      ->type_name("PATTERN");
  command->add_flag("--counts", tree->counts, "how much lies in each folder, all below it included");
  command->add_flag("--json", tree->json, "as JSON");
}

}  // namespace host
