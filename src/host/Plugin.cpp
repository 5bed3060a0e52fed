// SPDX-License-Identifier: Apache-2.0
#include "host/Plugin.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <thread>

#include "QorviViewPlugin/Functions.h"
#include "host/Failure.h"
#include "host/JsonText.h"

namespace host {
namespace {

QString Beside(const char* folder) {
  return QDir(QCoreApplication::applicationDirPath()).filePath(folder);
}

// The library beside the program: in the build tree, installed, and where libraries stand beside programs.
QString DefaultFile() {
  for (const char* folder : {"../lib", VIEWCTL_LIBRARY_FOLDER, "../lib/qorvi", "."}) {
    const QDir dir(Beside(folder));
    for (const QString& name : dir.entryList({"*QorviViewPlugin*"}, QDir::Files)) {
      if (QLibrary::isLibrary(name)) return dir.canonicalPath() + "/" + name;
    }
  }
  throw Failure(kUsage, "QorviViewPlugin was not found beside viewctl; name it with --plugin FILE");
}

}  // namespace

Plugin::Plugin(const std::string& file) {
  const QString path = file.empty() ? DefaultFile() : QFileInfo(QString::fromStdString(file)).absoluteFilePath();
  if (!QFileInfo::exists(path)) throw Failure(kUsage, "There is no plugin " + path.toStdString());
  m_library.setFileName(path);
  if (!m_library.load()) throw Failure(kUsage, m_library.errorString().toStdString());

  QorviViewPlugin::Functions functions;
  if (const char* missing = functions.Load([this](const char* name) { return m_library.resolve(name); })) {
    throw Failure(kUsage, path.toStdString() + " is not the plugin: it has no " + missing);
  }
#define QORVI_FUNCTION(name) m_functions.emplace(#name, functions.name);
  QORVI_EXPORTED_FUNCTIONS(QORVI_FUNCTION)
#undef QORVI_FUNCTION
}

Plugin::~Plugin() {
  m_library.unload();
}

const Plugin::Function* Plugin::Find(std::string_view name) const {
  const auto found = m_functions.find(name);
  return found == m_functions.end() ? nullptr : &found->second;
}

bool Plugin::Ask(std::string_view exchange, const std::string& request, std::string& response) const {
  return std::get<Exchange>(m_functions.at(exchange))(request, response);
}

bool Plugin::Ask(std::string_view exchange, const std::string& request, rapidjson::Document& response,
                 bool* isUtf8) const {
  std::string text;
  const bool done = Ask(exchange, request, text);
  if (isUtf8) *isUtf8 = IsUtf8(text);
  if (!ParseAnswer(text, response) && done) {
    throw Failure(kRefused, std::string(exchange) + ": The response is not JSON, so nothing is made of it");
  }
  return done;
}

bool Plugin::Ask(std::string_view question) const {
  return std::get<Question>(m_functions.at(question))();
}

void Plugin::Register(ResourceData::IResourceObserver* observer, const std::string& request) const {
  std::get<Registration>(m_functions.at("ViewRegisterResourceUpdate"))(observer, request);
}

bool Plugin::LoadViews(std::chrono::milliseconds limit) const {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (const char* step : {"IsInitViewGroupFinish", "IsInitViewFinish"}) {
    std::string response;
    while (!Ask(step, "", response)) {
      if (std::chrono::steady_clock::now() >= end) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
  return true;
}

}  // namespace host
