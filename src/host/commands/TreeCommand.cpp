// SPDX-License-Identifier: Apache-2.0
// viewctl tree: the folders and the views in them.
#include <cstdio>
#include <memory>

#include "host/Client.h"
#include "host/TreeText.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

int RunTree(const GlobalOptions& options, bool json) {
  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  const std::string text = json ? TreeJson(tree) + "\n" : DescribeTree(tree);
  std::fwrite(text.data(), 1, text.size(), stdout);
  return kDone;
}

}  // namespace

void AddTreeCommand(CLI::App& app, Run& chosen) {
  const auto json = std::make_shared<bool>(false);
  CLI::App* command = AddCommand(app, chosen, "tree", "the folders and the views in them",
                                 [json](const GlobalOptions& options) { return RunTree(options, *json); });
  command->add_flag("--json", *json, "as JSON");
}

}  // namespace host
