// SPDX-License-Identifier: Apache-2.0
// viewctl users: the users of the platform.
#include <cstdio>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

int RunUsers(const GlobalOptions& options) {
  Client client(options, Texts::kTranslated);
  client.Load();
  rapidjson::Document answer;
  if (!client.Functions().Ask("GetAllUserInfo", "", answer)) throw Failure(kRefused, TextOf(answer, "error_info"));
  std::printf("%-6s  %-7s  %-3s  %s\n", "ID", "ONLINE", "PTZ", "NAME");
  for (const auto& user : ListOf(answer, "user_detail_list").GetArray()) {
    std::printf("%-6d  %-7s  %-3d  %s\n", NumberOf(user, "user_id"), FlagOf(user, "user_online") ? "yes" : "no",
                NumberOf(user, "user_ptz_ability"), Printable(TextOf(user, "user_name")).c_str());
  }
  return kDone;
}

}  // namespace

void AddUsersCommand(CLI::App& app, Run& chosen) {
  AddCommand(app, chosen, "users", "the users that views can be shared with", RunUsers);
}

}  // namespace host
