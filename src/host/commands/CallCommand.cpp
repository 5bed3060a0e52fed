// SPDX-License-Identifier: Apache-2.0
// viewctl call: one exchange, as a program would make it.
#include <cstdio>
#include <iostream>
#include <iterator>

#include "host/Client.h"
#include "host/Editing.h"
#include "host/JsonText.h"
#include "host/Suggestion.h"
#include "host/Terminal.h"
#include "host/calls/RequestCheck.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct CallOptions {
  std::string function;
  std::string request;
  bool isRaw = false;
};

bool HasExchange(const Plugin& plugin, const std::string& name) {
  const Plugin::Function* function = plugin.Find(name);
  return function && std::holds_alternative<Plugin::Exchange>(*function);
}

void RefuseFaults(const CallOptions& call, const std::string& request) {
  const std::vector<std::string> faults = FaultsOf(call.function, request);
  if (faults.empty()) return;
  for (size_t i = 0; i + 1 < faults.size(); ++i) Say("viewctl: " + Printable(call.function + ": " + faults[i]));
  throw Failure(kUsage, call.function + ": " + faults.back() + " (nothing was sent; --raw sends it as it stands)");
}

int RunCall(const GlobalOptions& options, const CallOptions& call) {
  std::string request = call.request;
  if (request == "-") request.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());

  // A wrong name is told without a server.
  if (!HasExchange(Plugin(options.plugin), call.function)) {
    throw Failure(kUsage, "There is no exchange " + call.function + Suggestion(call.function, ExchangeNames()) +
                              " (docs/exchanges.md lists them)");
  }
  if (!call.isRaw) RefuseFaults(call, request);

  Client client(options, Texts::kAsKeys);
  client.Load();
  if (IsEdit(call.function)) SayWhatIsEdited(options);
  if (!request.empty() && !IsReadAsRequest(request))
    Say("viewctl: The request is not JSON, so the defaults of its keys count");
  std::string response;
  const bool done = client.Functions().Ask(call.function, request, response);
  response = ValidUtf8(response);
  std::fwrite(response.data(), 1, response.size(), stdout);
  std::fputc('\n', stdout);
  return done ? kDone : kRefused;
}

}  // namespace

void AddCallCommand(CLI::App& app, Run& chosen) {
  const auto [command, call] = AddCommand(app, chosen, "call", "one exchange; its response on stdout", RunCall);
  command->add_option("FUNCTION", call->function, "its name")->required();
  command->add_option("JSON", call->request, "the request; \"-\" reads it from stdin");
  command->add_flag("--raw", call->isRaw, "sends the request as it stands, whatever is wrong with its keys");
}

}  // namespace host
