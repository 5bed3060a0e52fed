// SPDX-License-Identifier: Apache-2.0
// viewctl demo: a tour over the sample site.
#include <QFile>
#include <QTemporaryDir>

#include "base/system/StopSignal.h"
#include "host/commands/Commands.h"
#include "host/demo/Tour.h"

namespace host {
namespace {

constexpr const char* kOwnUser = "maria";
constexpr const char* kOtherUser = "kenji";

// The sample site, which is part of the program.
QByteArray SampleSite() {
  QFile file(":/site.json");
  if (!file.open(QIODevice::ReadOnly)) throw Failure(kRefused, "The sample site is not in the program");
  return file.readAll();
}

std::string SamplePassword(const QByteArray& site, const std::string& user) {
  rapidjson::Document document;
  ParseJson({site.constData(), static_cast<size_t>(site.size())}, document);
  for (const auto& entry : ListOf(document, "Users").GetArray()) {
    if (TextOf(entry, "Name") == user) return TextOf(entry, "Password");
  }
  throw Failure(kRefused, "The sample site has no user " + user);
}

void WriteSeed(const QString& name, const QByteArray& site) {
  QFile file(name);
  if (!file.open(QIODevice::WriteOnly) || file.write(site) != site.size()) {
    throw Failure(kRefused, "The sample site cannot be written to " + name.toStdString());
  }
}

int RunDemo(const GlobalOptions& options) {
  if (!options.server.empty() || !options.dataDir.empty()) {
    throw Failure(kUsage, "demo makes a server of its own, so --server and --data do not go with it");
  }
  base::WatchForStop();
  const QByteArray site = SampleSite();
  QTemporaryDir folder;
  if (!folder.isValid()) throw Failure(kRefused, "No folder for the demo: " + folder.errorString().toStdString());

  server::ViewServerOptions embedded;
  embedded.dataFile = folder.filePath("views.db").toStdString();
  embedded.seedFile = folder.filePath("site.json").toStdString();
  WriteSeed(folder.filePath("site.json"), site);

  GlobalOptions own = options;
  own.user = kOwnUser;
  NoticeQueue notices;  // outlives the client, which notifies it
  Client client(own, StartEmbeddedServer(embedded, [](const std::string&) {}), Texts::kTranslated);
  client.Load();
  OwnSide maria(kOwnUser, client.Functions(), notices);
  ScriptSide kenji(kOtherUser, SamplePassword(site, kOtherUser), client.Server().EmbeddedServer()->Url(),
                   client.Functions().File());
  Tour(maria, kenji, client.Functions()).Run();
  return kDone;
}

}  // namespace

void AddDemoCommand(CLI::App& app, Run& chosen) {
  AddCommand(app, chosen, "demo", "a tour over a sample site, with a server and two users of its own", RunDemo);
}

}  // namespace host
