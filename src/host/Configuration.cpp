// SPDX-License-Identifier: Apache-2.0
#include "host/Configuration.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <sstream>

#include "host/Failure.h"
#include "host/InputFile.h"
#include "host/Suggestion.h"

namespace host {
namespace {

std::string Trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r");
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

class ConfigurationReader {
 public:
  explicit ConfigurationReader(std::string file) { m_read.file = std::move(file); }

  Configuration Read(std::string_view text) {
    std::istringstream lines{std::string(text)};
    for (std::string line; std::getline(lines, line);) {
      ++m_line;
      TakeLine(Trimmed(line));
    }
    RequireUrls();
    return std::move(m_read);
  }

 private:
  void TakeLine(const std::string& line) {
    if (line.empty() || line.front() == '#') return;
    if (line.front() == '[') return BeginServer(line);
    const size_t equals = line.find('=');
    if (equals == std::string::npos) Refuse("\"" + line + "\" is neither [NAME] nor KEY = VALUE");
    TakeValue(Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)));
  }

  void BeginServer(const std::string& line) {
    const std::string name = Trimmed(line.substr(1, line.size() - 2));
    if (line.back() != ']' || name.empty()) Refuse("a server's name stands between [ and ]");
    if (name.find("://") != std::string::npos) Refuse("a server's name is no address; that is its url");
    if (!m_read.servers.emplace(name, NamedServer()).second) Refuse("there are two servers " + name);
    m_server = &m_read.servers[name];
  }

  void TakeValue(const std::string& key, const std::string& value) {
    if (value.empty()) Refuse(key + " has no value");
    if (key == "password") Refuse("no password is kept here; password-command names a program that prints it");
    std::string& place = PlaceOf(key);
    if (!place.empty()) Refuse(key + " is said twice");
    place = key == "ca-file" ? QFileInfo(QString::fromStdString(m_read.file))
                                   .dir()
                                   .absoluteFilePath(QString::fromStdString(value))
                                   .toStdString()
                             : value;
  }

  std::string& PlaceOf(const std::string& key) {
    std::map<std::string, std::string*> places = {{"default", &m_read.defaultName}};
    if (m_server) {
      places = {{"url", &m_server->url},
                {"user", &m_server->user},
                {"ca-file", &m_server->caFile},
                {"password-command", &m_server->passwordCommand}};
    }
    const auto found = places.find(key);
    if (found != places.end()) return *found->second;
    std::vector<std::string> keys;
    keys.reserve(places.size());
    for (const auto& place : places) keys.push_back(place.first);
    Refuse("there is no key " + key + (m_server ? " of a server" : " before the first server") + Suggestion(key, keys));
  }

  void RequireUrls() const {
    for (const auto& [name, server] : m_read.servers) {
      if (server.url.empty()) throw Failure(kUsage, m_read.file + ": server " + name + " has no url");
    }
    if (m_read.defaultName.empty() || m_read.servers.contains(m_read.defaultName)) return;
    throw Failure(kUsage, m_read.file + ": there is no server " + m_read.defaultName + ", which is to be the default");
  }

  [[noreturn]] void Refuse(const std::string& what) const {
    throw Failure(kUsage, m_read.file + ", line " + std::to_string(m_line) + ": " + what);
  }

  Configuration m_read;
  NamedServer* m_server = nullptr;  // the one that lines are about
  int m_line = 0;
};

}  // namespace

std::string ConfigurationFile() {
  const QString file = qEnvironmentVariable("VIEWCTL_CONFIG");
  if (!file.isEmpty()) return file.toStdString();
  const QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
  return folder.filePath("viewctl/config").toStdString();
}

Configuration ReadConfiguration(const std::string& file) {
  const bool isNamed = qEnvironmentVariableIsSet("VIEWCTL_CONFIG");
  if (!isNamed && !QFileInfo::exists(QString::fromStdString(file))) return {file, {}, {}};
  return ParseConfiguration(file, ReadInput(file));
}

Configuration ParseConfiguration(const std::string& file, std::string_view text) {
  return ConfigurationReader(file).Read(text);
}

}  // namespace host
