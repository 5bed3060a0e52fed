// SPDX-License-Identifier: Apache-2.0
#include "host/edit/Undo.h"

#include "host/Failure.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/PortableFile.h"

namespace host {
namespace {

constexpr const char* kUndoFormat = "viewctl-undo";
constexpr int kUndoVersion = 1;

std::string ReadPages(const rapidjson::Value& view, const char* key, const std::string& where) {
  const rapidjson::Value* pages = Find(view, key);
  if (!pages || !pages->IsArray()) throw Failure(kUsage, where + ": \"" + key + "\" is no list");
  return KeepPages(*pages, where + "." + key);
}

}  // namespace

std::string WriteUndo(const UndoFile& file) {
  std::string views;
  for (const UndoView& view : file.views) {
    views += (views.empty() ? "\n" : ",\n") + ObjectText()
                                                  .Add("ID", view.id)
                                                  .Add("Name", view.name)
                                                  .AddRaw("Before", view.before)
                                                  .AddRaw("After", view.after)
                                                  .Text();
  }
  ObjectText text;
  text.Add("Format", kUndoFormat).Add("Version", kUndoVersion).Add("Server", file.server);
  return text.AddRaw("Views", "[" + views + "\n]").Text() + "\n";
}

UndoFile ReadUndo(std::string_view text) {
  rapidjson::Document document;
  if (!ParseJson(text, document) || TextOf(document, "Format") != kUndoFormat) {
    throw Failure(kUsage, "The file was not written by viewctl replace --undo");
  }
  if (const int version = NumberOf(document, "Version"); version != kUndoVersion) {
    throw Failure(kUsage, "The file is of version " + std::to_string(version) + ", and this viewctl knows version " +
                              std::to_string(kUndoVersion) + "; use a viewctl as new as the one that wrote it");
  }
  UndoFile file{TextOf(document, "Server"), {}};
  for (const rapidjson::Value& view : ListOf(document, "Views").GetArray()) {
    const std::string where = "Views[" + std::to_string(file.views.size() + 1) + "]";
    if (!IsId(TextOf(view, "ID"))) throw Failure(kUsage, where + ": \"ID\" is no id");
    file.views.push_back(
        {TextOf(view, "ID"), TextOf(view, "Name"), ReadPages(view, "Before", where), ReadPages(view, "After", where)});
  }
  return file;
}

}  // namespace host
