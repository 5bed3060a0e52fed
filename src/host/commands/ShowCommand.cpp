// SPDX-License-Identifier: Apache-2.0
// viewctl show: one view in full.
#include <algorithm>
#include <cstdio>

#include "host/Client.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/ViewText.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct ShowOptions {
  std::string id;
  bool json = false;
};

// The names of the folders that a view lies in; only the top-level one when its folder is not to be seen.
std::vector<std::string> FolderOf(const ViewTree& tree, const rapidjson::Value& detail) {
  const size_t folder = tree.FindFolder(TextOf(detail, "GroupID"));
  if (folder == tree.folders.size()) {
    const int type = NumberOf(detail, "Type");
    return {tree.folders.at(static_cast<size_t>(std::clamp<int>(type, kPublic, kShared))).name};
  }
  std::vector<std::string> names = tree.PathOf(folder);
  names.insert(names.begin(), tree.folders.at(tree.folders[folder].kind).name);
  return names;
}

int RunShow(const GlobalOptions& options, const ShowOptions& show) {
  RequireId(show.id, "view");
  Client client(options, Texts::kTranslated);
  client.Load();
  const std::string request = ObjectText().Add("ID", show.id).Text();
  std::string response;
  rapidjson::Document detail;
  const bool done = show.json ? client.Functions().Ask("GetPlanDetail", request, response)
                              : client.Functions().Ask("GetPlanDetail", request, detail);
  if (show.json) {
    std::printf("%s\n", ValidUtf8(response).c_str());
    ParseAnswer(response, detail);
  }
  if (!done) throw Failure(kRefused, "View " + show.id + ": " + TextOf(detail, "ErrorInfo"));
  if (!show.json) {
    const std::string text = DescribeView(detail, FolderOf(ReadViewTree(client.Functions()), detail));
    std::fwrite(text.data(), 1, text.size(), stdout);
  }
  return kDone;
}

}  // namespace

void AddShowCommand(CLI::App& app, Run& chosen) {
  const auto [command, show] = AddCommand(app, chosen, "show", "one view in full", RunShow);
  command->add_option("ID", show->id, "the view")->required();
  command->add_flag("--json", show->json, "as the plugin answers it, in UTF-8");
}

}  // namespace host
