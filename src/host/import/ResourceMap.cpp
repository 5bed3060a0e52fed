// SPDX-License-Identifier: Apache-2.0
#include "host/import/ResourceMap.h"

#include "host/Failure.h"
#include "host/Ids.h"
#include "host/JsonText.h"

namespace host {
namespace {

constexpr const char* kMapFormat = "viewctl-map";
constexpr int kMapVersion = 1;

MapEntry ReadEntry(const rapidjson::Value& object, const std::string& where) {
  MapEntry entry{0, TextOf(object, "ID"), TextOf(object, "Name"), TextOf(object, "To")};
  if (entry.id.empty() && entry.name.empty()) throw Failure(kUsage, where + ": it has neither \"ID\" nor \"Name\"");
  if (!entry.id.empty() && !IsId(entry.id)) throw Failure(kUsage, where + ": \"ID\" is no id");
  for (const std::string& id : {entry.id, entry.to}) {
    if (id.empty() || IsOfSomething(id)) continue;
    throw Failure(kUsage, std::string(where).append(": the id ").append(id).append(" stands for none"));
  }
  try {
    entry.type = KindOfWord(TextOf(object, "Kind"));
  } catch (const Failure& failure) {
    throw Failure(kUsage, where + ": " + failure.what());
  }
  return entry;
}

std::string Described(const MapEntry& entry) {
  return KindWord(entry.type) + " " + (entry.id.empty() ? "\"" + entry.name + "\"" : entry.id);
}

// The file's resources that the entry is about.
std::vector<Resource> Meant(const MapEntry& entry, const PortableFile& file) {
  if (!entry.id.empty()) return {{entry.type, entry.id}};
  std::vector<Resource> meant;
  for (const auto& [resource, name] : file.names) {
    if (resource.type == entry.type && name == entry.name) meant.push_back(resource);
  }
  if (!meant.empty()) return meant;
  throw Failure(kUsage, "The map's " + Described(entry) +
                            " is not among the export's names: give its \"ID\", or export " + "--with-names");
}

Resource Target(const MapEntry& entry, const Plugin& plugin, const ViewTree& tree) {
  Resource target = RequireKnown(plugin, tree, {entry.to, entry.type});
  FetchResources({target});
  if (!CanBeFetched(target.type) || HasResource(target)) return target;
  throw Failure(kRefused, "The map's " + Described(entry) + " becomes " + KindWord(target.type) + " " + target.id +
                              ", which the server does not have; nothing was imported");
}

}  // namespace

std::string WriteMap(const std::vector<MapEntry>& entries) {
  std::string lines;
  for (const MapEntry& entry : entries) {
    ObjectText line;
    line.Add("Kind", KindWord(entry.type)).Add("ID", entry.id).Add("Name", entry.name).Add("To", entry.to);
    lines += (lines.empty() ? "\n" : ",\n") + line.Text();
  }
  ObjectText text;
  text.Add("Format", kMapFormat).Add("Version", kMapVersion).AddRaw("Resources", "[" + lines + "\n]");
  return text.Text() + "\n";
}

std::vector<MapEntry> ReadMap(std::string_view text) {
  rapidjson::Document document;
  if (!ParseJson(text, document)) throw Failure(kUsage, "The map is not JSON");
  if (TextOf(document, "Format") != kMapFormat || NumberOf(document, "Version") != kMapVersion) {
    throw Failure(kUsage, "The map is none of version 1; viewctl import --write-map makes one to fill in");
  }
  std::vector<MapEntry> entries;
  for (const rapidjson::Value& entry : ListOf(document, "Resources").GetArray()) {
    entries.push_back(ReadEntry(entry, "Resources[" + std::to_string(entries.size() + 1) + "]"));
  }
  return entries;
}

Substitutes ResolveMap(const std::vector<MapEntry>& entries, const PortableFile& file, const Plugin& plugin,
                       const ViewTree& tree) {
  Substitutes substitutes;
  for (const MapEntry& entry : entries) {
    if (entry.to.empty()) continue;
    const Resource target = Target(entry, plugin, tree);
    for (const Resource& resource : Meant(entry, file)) {
      substitutes[resource] = {target, SiteOfResource(target), NameOfResource(target)};
    }
  }
  return substitutes;
}

}  // namespace host
