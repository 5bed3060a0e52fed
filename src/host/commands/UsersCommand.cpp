// SPDX-License-Identifier: Apache-2.0
// viewctl users: the users of the platform.
#include <cstdio>

#include "host/Client.h"
#include "host/JsonText.h"
#include "host/Look.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"

namespace host {
namespace {

struct UsersOptions {
  bool json = false;
};

std::string UsersAsJson(const rapidjson::Value& users) {
  std::string lines;
  for (const auto& user : users.GetArray()) {
    ObjectText text;
    text.Add("ID", NumberOf(user, "user_id")).Add("Online", FlagOf(user, "user_online"));
    text.Add("PTZ", NumberOf(user, "user_ptz_ability")).Add("Name", TextOf(user, "user_name"));
    lines += (lines.empty() ? "\n" : ",\n") + text.Text();
  }
  return "[" + lines + "]\n";
}

void PrintUsers(const rapidjson::Value& users) {
  std::printf("%s\n", StyledOut(Style::kHead, "ID      ONLINE   PTZ  NAME").c_str());
  for (const auto& user : users.GetArray()) {
    std::printf("%-6d  %-7s  %-3d  %s\n", NumberOf(user, "user_id"), FlagOf(user, "user_online") ? "yes" : "no",
                NumberOf(user, "user_ptz_ability"), Printable(TextOf(user, "user_name")).c_str());
  }
}

int RunUsers(const GlobalOptions& options, const UsersOptions& wanted) {
  Client client(options, Texts::kTranslated);
  client.Load();
  rapidjson::Document answer;
  if (!client.Functions().Ask("GetAllUserInfo", "", answer)) throw Failure(kRefused, TextOf(answer, "error_info"));
  const rapidjson::Value& users = ListOf(answer, "user_detail_list");
  if (wanted.json) {
    std::fputs(UsersAsJson(users).c_str(), stdout);
  } else {
    PrintUsers(users);
  }
  return kDone;
}

}  // namespace

void AddUsersCommand(CLI::App& app, Run& chosen) {
  const auto [command, wanted] = AddCommand(app, chosen, "users", "the users that views can be shared with", RunUsers);
  command->add_flag("--json", wanted->json, "as JSON");
}

}  // namespace host
