// SPDX-License-Identifier: Apache-2.0
#include "host/Plugin.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <thread>

#include "QorviViewPlugin/QorviViewPlugin.h"
#include "host/Failure.h"
#include "host/JsonText.h"

namespace host {
namespace {

QString Beside(const char* folder) {
  return QDir(QCoreApplication::applicationDirPath()).filePath(folder);
}

// The library beside the program: in the build tree, installed, and where libraries stand beside programs.
QString DefaultFile() {
  for (const char* folder : {"../lib", "../lib/qorvi", "."}) {
    const QDir dir(Beside(folder));
    for (const QString& name : dir.entryList({"*QorviViewPlugin*"}, QDir::Files)) {
      if (QLibrary::isLibrary(name)) return dir.canonicalPath() + "/" + name;
    }
  }
  throw Failure(kUsage, "QorviViewPlugin was not found beside viewctl; name it with --plugin FILE");
}

template <class F>
std::pair<const std::string_view, Plugin::Function> Resolve(QLibrary& library, const char* name) {
  const QFunctionPointer address = library.resolve(name);
  if (!address) throw Failure(kUsage, library.fileName().toStdString() + " is not the plugin: it has no " + name);
  return {name, reinterpret_cast<F>(address)};
}

}  // namespace

Plugin::Plugin(const std::string& file) {
  const QString path = file.empty() ? DefaultFile() : QFileInfo(QString::fromStdString(file)).absoluteFilePath();
  if (!QFileInfo::exists(path)) throw Failure(kUsage, "There is no plugin " + path.toStdString());
  m_library.setFileName(path);
  if (!m_library.load()) throw Failure(kUsage, m_library.errorString().toStdString());

// The header gives each function its type; nothing is linked.
#define QORVI_FUNCTION(name) Resolve<decltype(&::name)>(m_library, #name)
  m_functions = {
      QORVI_FUNCTION(InitEnvir),
      QORVI_FUNCTION(UnInitEnvir),
      QORVI_FUNCTION(ClearViewData),
      QORVI_FUNCTION(IsViewResourceDownFinish),
      QORVI_FUNCTION(IsSupportPlanChangeOrder),
      QORVI_FUNCTION(IsInitViewGroupFinish),
      QORVI_FUNCTION(IsInitViewFinish),
      QORVI_FUNCTION(GetPlanGroups),
      QORVI_FUNCTION(AddPlanGroup),
      QORVI_FUNCTION(UpdatePlanGroup),
      QORVI_FUNCTION(DeletePlanGroup),
      QORVI_FUNCTION(GetPlansInGroup),
      QORVI_FUNCTION(GetPlanDetail),
      QORVI_FUNCTION(GetPlanConfig),
      QORVI_FUNCTION(AddPlan),
      QORVI_FUNCTION(UpdatePlan),
      QORVI_FUNCTION(DeletePlan),
      QORVI_FUNCTION(GetCurrentUser),
      QORVI_FUNCTION(GetAllUserInfo),
      QORVI_FUNCTION(ViewShareUsers),
      QORVI_FUNCTION(GetClientViewConfig),
      QORVI_FUNCTION(SetClientViewConfig),
      QORVI_FUNCTION(ViewRegisterResourceUpdate),
  };
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
