// SPDX-License-Identifier: Apache-2.0
// viewctl tree: the folders and the views in them.
#include <cstdio>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Names.h"
#include "host/Terminal.h"
#include "host/TreePart.h"
#include "host/TreeText.h"
#include "host/ViewTree.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"

namespace host {
namespace {

struct TreeOptions {
  std::string folder;
  std::optional<int> depth;
  std::string name;
  bool counts = false;
  FormatOptions format;
};

std::string SizeText(const rapidjson::Value& detail) {
  const rapidjson::Value& pages = ListOf(detail, "PlanPages");
  size_t windows = 0;
  for (const auto& page : pages.GetArray()) windows += ListOf(page, "PlanItems").Size();
  return Counted(pages.Size(), "page") + ", " + Counted(windows, "window");
}

// Notes beside each view how much is in it.
void NoteSizes(const Plugin& plugin, ViewTree& tree) {
  for (TreeFolder& folder : tree.folders) {
    for (TreeView& view : folder.views) {
      rapidjson::Document detail;
      const std::string request = ObjectText().Add("ID", view.id).Add("NeedResourceName", false).Text();
      if (plugin.Ask("GetPlanDetail", request, detail)) view.note = SizeText(detail);
    }
  }
}

int RunTree(const GlobalOptions& options, const TreeOptions& wanted) {
  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  TreeChoices choices{std::nullopt, wanted.depth, wanted.name};
  if (!wanted.folder.empty()) choices.below = Names(tree).Folder(wanted.folder, true).folder;
  ViewTree part = PartOf(tree, choices);
  const Format format = wanted.format.Chosen();
  const bool isWide = format == Format::kWide;
  if (isWide) NoteSizes(client.Functions(), part);
  const std::string text =
      format == Format::kJson ? TreeJson(part) + "\n" : DescribeTree(part, wanted.counts || isWide);
  std::fwrite(text.data(), 1, text.size(), stdout);
  return kDone;
}

}  // namespace

void AddTreeCommand(CLI::App& app, Run& chosen) {
  const auto [command, tree] = AddCommand(app, chosen, "tree", "the folders and the views in them", RunTree);
  command->add_option("FOLDER", tree->folder, "only this one, by id or path, and what lies in it");
  command->add_option("--depth", tree->depth, "how many levels below the top are shown")
      ->type_name("N")
      ->check(WholeNumber(0, 1000000));
  command
      ->add_option("--name", tree->name, "only what fits, and the folders above it; * and ? stand for parts of a name")
      ->type_name("PATTERN");
  command->add_flag("--counts", tree->counts, "how much lies in each folder, all below it included");
  AddFormatOptions(*command, tree->format, "--counts, and how many pages and windows each view has");
}

}  // namespace host
