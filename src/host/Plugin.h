// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <rapidjson/document.h>

#include <QLibrary>
#include <chrono>
#include <map>
#include <string>
#include <string_view>
#include <variant>

#include "ResourceStore/ResourceObserver.h"

namespace host {

// Where the library is looked for, in words.
std::string PluginFolders();

// QorviViewPlugin, loaded at run time, with its 23 functions by name. Its functions may be called from any thread.
class Plugin {
 public:
  using Exchange = bool (*)(const std::string& request, std::string& response);
  using Question = bool (*)();
  using Command = void (*)();
  using Registration = void (*)(ResourceData::IResourceObserver* observer, std::string request);
  using Function = std::variant<Exchange, Question, Command, Registration>;

  // Loads `file`, or the first that is found in PluginFolders() when `file` is empty. Throws Failure kUsage when there
  // is none, or it is not the plugin.
  explicit Plugin(const std::string& file);
  // Unloads. REQUIRES: no call is running, and the platform's download is stopped.
  ~Plugin();

  // Null when there is no function of that name.
  const Function* Find(std::string_view name) const;

  // The four below REQUIRE the name of a function of that kind.
  bool Ask(std::string_view exchange, const std::string& request, std::string& response) const;
  // The same, with the response read; bytes that are no UTF-8, which a server may hold, read as U+FFFD. Throws Failure
  // kRefused when the answer is true and the response cannot be read. When the answer is false, `response` may be null.
  // `isUtf8`, if given, becomes whether the response was valid UTF-8.
  bool Ask(std::string_view exchange, const std::string& request, rapidjson::Document& response,
           bool* isUtf8 = nullptr) const;
  bool Ask(std::string_view question) const;
  void Register(ResourceData::IResourceObserver* observer, const std::string& request) const;

  // Polls the first load, groups and then views, until both answer true or `limit` has passed; answers whether they
  // did.
  bool LoadViews(std::chrono::milliseconds limit) const;

  // The file that was loaded.
  std::string File() const { return m_library.fileName().toStdString(); }

 private:
  QLibrary m_library;
  std::map<std::string_view, Function> m_functions;
};

}  // namespace host
