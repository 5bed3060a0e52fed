// SPDX-License-Identifier: Apache-2.0
// viewctl tree: the folders and the views in them.
#include <cstdio>

#include "host/Client.h"
#include "host/TreeText.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct TreeOptions {
  bool json = false;
};

int RunTree(const GlobalOptions& options, const TreeOptions& wanted) {
  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  const std::string text = wanted.json ? TreeJson(tree) + "\n" : DescribeTree(tree);
  std::fwrite(text.data(), 1, text.size(), stdout);
  return kDone;
}

}  // namespace

void AddTreeCommand(CLI::App& app, Run& chosen) {
  const auto [command, tree] = AddCommand(app, chosen, "tree", "the folders and the views in them", RunTree);
  command->add_flag("--json", tree->json, "as JSON");
}

}  // namespace host
