// SPDX-License-Identifier: Apache-2.0
// viewctl show: views in full.
#include <algorithm>
#include <cstdio>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Names.h"
#include "host/ViewText.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct ShowOptions {
  std::vector<std::string> views;
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

void Show(const Plugin& plugin, const ViewTree& tree, const std::string& id, bool asJson) {
  const std::string request = ObjectText().Add("ID", id).Text();
  std::string response;
  const bool done = plugin.Ask("GetPlanDetail", request, response);
  rapidjson::Document detail;
  const bool isJson = ParseAnswer(response, detail);
  if (asJson) std::printf("%s\n", ValidUtf8(response).c_str());
  if (!done) throw Failure(kRefused, "View " + id + ": " + TextOf(detail, "ErrorInfo"));
  if (asJson) return;
  if (!isJson) throw Failure(kRefused, "GetPlanDetail: The response is not JSON, so nothing is made of it");
  const std::string text = DescribeView(detail, FolderOf(tree, detail));
  std::fwrite(text.data(), 1, text.size(), stdout);
}

int RunShow(const GlobalOptions& options, const ShowOptions& show) {
  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  std::vector<std::string> ids;
  for (const std::string& view : show.views) ids.push_back(Names(tree).View(view).id);
  for (size_t i = 0; i < ids.size(); ++i) {
    if (i > 0 && !show.json) std::fputc('\n', stdout);
    Show(client.Functions(), tree, ids[i], show.json);
  }
  return kDone;
}

}  // namespace

void AddShowCommand(CLI::App& app, Run& chosen) {
  const auto [command, show] = AddCommand(app, chosen, "show", "views in full", RunShow);
  command->add_option("VIEW", show->views, "ids, or paths: Station/Forecourt")->required();
  command->add_flag("--json", show->json, "as the plugin answers it, in UTF-8, a line for each");
}

}  // namespace host
