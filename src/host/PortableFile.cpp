// SPDX-License-Identifier: Apache-2.0
#include "host/PortableFile.h"

#include <rapidjson/prettywriter.h>

#include <algorithm>
#include <optional>

#include "host/Failure.h"
#include "host/JsonText.h"
#include "host/Terminal.h"

namespace host {
namespace {

using rapidjson::Value;

constexpr const char* kFormat = "viewctl-export";
constexpr int kVersion = 1;

std::string PathJson(const std::vector<std::string>& path) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.StartArray();
  for (const std::string& name : path) WriteText(writer, name);
  writer.EndArray();
  return buffer.GetString();
}

std::string JsonList(const std::vector<std::string>& entries) {
  std::string text = "[";
  for (const std::string& entry : entries) text += (text.size() > 1 ? "," : "") + entry;
  return text + "]";
}

// REQUIRES: `compact` is JSON of a small, fixed depth.
std::string Indented(const std::string& compact) {
  rapidjson::Document document;
  ParseJson(compact, document);
  rapidjson::StringBuffer buffer;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> writer(buffer);
  writer.SetIndent(' ', 1);
  document.Accept(writer);
  return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

Place ReadPlace(const Value& object, const std::string& where) {
  if (!object.IsObject()) throw Failure(kUsage, where + " is no object");
  const std::string kind = TextOf(object, "Kind");
  const auto found = std::find(kKindNames.begin(), kKindNames.end(), kind);
  if (found == kKindNames.end()) throw Failure(kUsage, where + ": \"Kind\" is not public, private or shared");
  Place place;
  place.kind = static_cast<FolderKind>(found - kKindNames.begin());
  const Value* path = Find(object, "Path");
  if (!path || !path->IsArray()) throw Failure(kUsage, where + ": \"Path\" is no list");
  for (const Value& name : path->GetArray()) {
    if (!name.IsString()) throw Failure(kUsage, where + ": \"Path\" holds something that is no name");
    place.path.emplace_back(name.GetString(), name.GetStringLength());
  }
  return place;
}

int ReadNumber(const Value& object, const char* key, const std::string& where) {
  const Value* number = Find(object, key);
  if (!number || !number->IsInt()) throw Failure(kUsage, where + ": \"" + key + "\" is no whole number of 32 bits");
  return number->GetInt();
}

PortableView ReadView(const Value& object, const std::string& where) {
  PortableView view;
  view.folder = ReadPlace(object, where);
  if (view.folder.kind == kShared && view.folder.path.empty()) {
    throw Failure(kUsage, where + ": a view cannot lie directly in the shared folder");
  }
  const Value* name = Find(object, "Name");
  if (!name || !name->IsString()) throw Failure(kUsage, where + ": \"Name\" is no text");
  view.name = TextOf(object, "Name");
  view.autoCycle = ReadNumber(object, "AutoCycle", where);
  view.roundTime = ReadNumber(object, "RoundTime", where);
  const Value* pages = Find(object, "PlanPages");
  if (!pages) throw Failure(kUsage, where + ": \"PlanPages\" is missing");
  view.pages = KeepPages(*pages, where);
  return view;
}

// The lists of the file, each of which must be there.
const Value& RequireList(const Value& file, const char* key) {
  const Value* list = Find(file, key);
  if (!list || !list->IsArray()) throw Failure(kUsage, std::string("The file has no list \"") + key + "\"");
  return *list;
}

std::string NamesText(const std::map<Resource, std::string>& names) {
  std::vector<std::string> entries;
  for (const auto& [resource, name] : names) {
    ObjectText entry;
    entry.Add("Kind", KindWord(resource.type)).Add("ID", resource.id).Add("Name", name);
    entries.push_back(entry.Text());
  }
  return JsonList(entries);
}

// Names of kinds that this viewctl does not know are of no use to it.
std::map<Resource, std::string> ReadNames(const Value& file) {
  std::map<Resource, std::string> names;
  for (const Value& entry : ListOf(file, "Names").GetArray()) {
    try {
      names[{KindOfWord(TextOf(entry, "Kind")), TextOf(entry, "ID")}] = TextOf(entry, "Name");
    } catch (const Failure&) {
      continue;
    }
  }
  return names;
}

}  // namespace

std::string PlaceText(const Place& place) {
  std::string text = kKindNames.at(place.kind);
  for (const std::string& name : place.path) text += " / " + Printable(name);
  return text;
}

std::string WritePortable(PortableFile file) {
  std::sort(file.folders.begin(), file.folders.end());
  file.folders.erase(std::unique(file.folders.begin(), file.folders.end()), file.folders.end());
  std::sort(file.views.begin(), file.views.end());

  std::vector<std::string> folders;
  for (const Place& folder : file.folders) {
    folders.push_back(
        ObjectText().Add("Kind", kKindNames.at(folder.kind)).AddRaw("Path", PathJson(folder.path)).Text());
  }
  std::vector<std::string> views;
  for (const PortableView& view : file.views) {
    views.push_back(ObjectText()
                        .Add("Kind", kKindNames.at(view.folder.kind))
                        .AddRaw("Path", PathJson(view.folder.path))
                        .Add("Name", view.name)
                        .Add("AutoCycle", view.autoCycle)
                        .Add("RoundTime", view.roundTime)
                        .AddRaw("PlanPages", view.pages)
                        .Text());
  }
  ObjectText text;
  text.Add("Format", kFormat).Add("Version", kVersion);
  text.AddRaw("Folders", JsonList(folders)).AddRaw("Views", JsonList(views));
  if (!file.names.empty()) text.AddRaw("Names", NamesText(file.names));
  return Indented(text.Text());
}

PortableFile ReadPortable(std::string_view text) {
  rapidjson::Document document;
  if (!ParseJson(text, document)) throw Failure(kUsage, "The file is not JSON; is it what viewctl export wrote?");
  if (TextOf(document, "Format") != kFormat) throw Failure(kUsage, "The file was not written by viewctl export");
  if (const int version = NumberOf(document, "Version"); version != kVersion) {
    throw Failure(kUsage, "The file is of version " + std::to_string(version) + ", and this viewctl knows version " +
                              std::to_string(kVersion) + "; use a viewctl as new as the one that wrote it");
  }
  PortableFile file;
  for (const Value& folder : RequireList(document, "Folders").GetArray()) {
    const std::string where = "Folders[" + std::to_string(file.folders.size() + 1) + "]";
    file.folders.push_back(ReadPlace(folder, where));
    if (file.folders.back().path.empty()) throw Failure(kUsage, where + ": \"Path\" is empty");
  }
  for (const Value& view : RequireList(document, "Views").GetArray()) {
    file.views.push_back(ReadView(view, "Views[" + std::to_string(file.views.size() + 1) + "]"));
  }
  file.names = ReadNames(document);
  return file;
}

PortableView ToPortable(const Value& detail, const Place& folder) {
  PortableView view;
  view.folder = folder;
  view.name = TextOf(detail, "Name");
  view.autoCycle = NumberOf(detail, "AutoCycle");
  view.roundTime = NumberOf(detail, "RoundTime");
  view.pages = KeepPages(ListOf(detail, "PlanPages"), "View " + TextOf(detail, "ID"));
  return view;
}

}  // namespace host
