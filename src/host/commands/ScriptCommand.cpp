// SPDX-License-Identifier: Apache-2.0
// viewctl script: JSON lines in, JSON lines out.
#include <fstream>
#include <iostream>

#include "base/system/Files.h"
#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Notices.h"
#include "host/ScriptLine.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

class Script {
 public:
  explicit Script(const GlobalOptions& options) : m_client(options, Texts::kAsKeys) {}

  int Run(std::istream& in) {
    std::string line;
    while (std::getline(in, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      m_line = line;
      m_out.Write(std::visit([this](const auto& parsed) { return Answer(parsed); }, ParseScriptLine(line)));
    }
    return m_hadWrongLine ? kRefused : kDone;
  }

 private:
  std::string Answer(const CallLine& line) {
    const Plugin::Function* function = m_client.Functions().Find(line.function);
    if (!function) return Answer(WrongLine{"there is no function " + line.function});
    std::string response = line.response;
    const std::optional<bool> result =
        std::visit([&](auto address) { return Call(address, line.request, response); }, *function);
    ObjectText answer;
    answer.Add("call", line.function);
    if (result) {
      answer.Add("result", *result);
    } else {
      answer.AddNull("result");
    }
    return answer.Add("response", response).Text();
  }

  std::string Answer(const LoadLine&) {
    const bool loaded = m_client.TryLoad();
    return ObjectText().Add("load", true).Add("result", loaded).Text();
  }

  std::string Answer(const ObserveLine& line) {
    m_client.Functions().Register(&m_observer, line.request);
    return m_line;
  }

  std::string Answer(const SettleLine& line) {
    m_observer.WaitUntilQuiet(std::chrono::milliseconds(line.milliseconds));
    return m_line;
  }

  std::string Answer(const WrongLine& line) {
    m_hadWrongLine = true;
    return ObjectText().Add("error", line.reason).Text();
  }

  std::optional<bool> Call(Plugin::Exchange exchange, const std::string& request, std::string& response) {
    return exchange(request, response);
  }
  std::optional<bool> Call(Plugin::Question question, const std::string&, std::string&) { return question(); }
  std::optional<bool> Call(Plugin::Command command, const std::string&, std::string&) {
    command();
    return std::nullopt;
  }
  std::optional<bool> Call(Plugin::Registration registration, const std::string& request, std::string&) {
    registration(&m_observer, request);
    return std::nullopt;
  }

  LineWriter m_out;
  NoticePrinter m_observer{m_out};  // outlives the client, which notifies it
  Client m_client;
  std::string m_line;
  bool m_hadWrongLine = false;
};

struct ScriptOptions {
  std::string file = "-";
};

int RunScript(const GlobalOptions& options, const ScriptOptions& script) {
  const std::string& file = script.file;
  std::ifstream stream;
  if (file != "-") {
    stream.open(base::PathOf(file), std::ios::binary);
    // A folder opens, but nothing can be read from it.
    if (!stream || (stream.peek(), stream.bad()))
      throw Failure(kUsage, "The script " + file + " cannot be read: is it there, and yours to read?");
    stream.clear();
  }
  return Script(options).Run(file == "-" ? std::cin : stream);
}

}  // namespace

void AddScriptCommand(CLI::App& app, Run& chosen) {
  const auto [command, script] =
      AddCommand(app, chosen, "script", "JSON lines, each answered with one line on stdout", RunScript);
  command->add_option("FILE", script->file, "the lines; \"-\" or nothing reads them from stdin");
}

}  // namespace host
