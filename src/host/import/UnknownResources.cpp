// SPDX-License-Identifier: Apache-2.0
#include "host/import/UnknownResources.h"

#include "host/JsonText.h"
#include "host/Names.h"
#include "host/Terminal.h"

namespace host {

std::vector<UnknownUse> FindUnknown(const PortableFile& file) {
  std::vector<UnknownUse> uses;
  std::set<Resource> resources;
  for (size_t i = 0; i < file.views.size(); ++i) {
    rapidjson::Document pages;
    ParseJson(file.views[i].pages, pages);
    for (const Use& use : UsesIn(pages)) {
      if (CanBeFetched(use.resource.type)) uses.push_back({i, use});
      resources.insert(use.resource);
    }
  }
  FetchResources(resources);
  std::erase_if(uses, [](const UnknownUse& one) { return HasResource(one.use.resource); });
  return uses;
}

std::string DescribeUnknown(const PortableFile& file, const UnknownUse& unknown, const std::optional<Place>& into) {
  const PortableView& view = file.views[unknown.view];
  const auto name = file.names.find(unknown.use.resource);
  const Place place = PlaceIn(into, view.folder);
  const std::string path = PathText(place.kind, place.path) + "/" + EscapedName(view.name);
  return Printable(path) + ", page " + std::to_string(unknown.use.page) + ", window " +
         std::to_string(unknown.use.window) + ": " + KindWord(unknown.use.resource.type) + " " +
         unknown.use.resource.id + (name == file.names.end() ? "" : " \"" + Printable(name->second) + "\"") +
         " is not on this server";
}

std::set<Resource> ResourcesOf(const std::vector<UnknownUse>& unknown) {
  std::set<Resource> resources;
  for (const UnknownUse& one : unknown) resources.insert(one.use.resource);
  return resources;
}

}  // namespace host
