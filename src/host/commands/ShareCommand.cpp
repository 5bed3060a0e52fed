// SPDX-License-Identifier: Apache-2.0
// viewctl share: gives a view to other users.
#include <algorithm>
#include <map>
#include <thread>

#include "host/Client.h"
#include "host/Editing.h"
#include "host/Ids.h"
#include "host/JsonText.h"
#include "host/Names.h"
#include "host/Suggestion.h"
#include "host/Terminal.h"
#include "host/commands/Commands.h"
#include "host/commands/Format.h"
#include "host/edit/Destination.h"
#include "host/edit/Outcomes.h"

namespace host {
namespace {

struct ShareOptions {
  std::string view;
  std::vector<std::string> users;
  int retry = 0;
  bool json = false;
};

struct User {
  int id = 0;
  std::string name;
};

std::vector<User> ReadUsers(const Plugin& plugin) {
  rapidjson::Document answer;
  if (!plugin.Ask("GetAllUserInfo", "", answer)) throw Failure(kRefused, "The users: " + TextOf(answer, "error_info"));
  std::vector<User> users;
  for (const auto& user : ListOf(answer, "user_detail_list").GetArray()) {
    users.push_back({NumberOf(user, "user_id"), TextOf(user, "user_name")});
  }
  return users;
}

// By name, or else by id.
const User* FindUser(const std::vector<User>& users, const std::string& text) {
  auto found = std::ranges::find(users, text, &User::name);
  if (found == users.end() && IsId(text)) {
    found = std::ranges::find_if(users, [&](const User& user) { return std::to_string(user.id) == text; });
  }
  return found == users.end() ? nullptr : &*found;
}

std::string UnknownUser(const std::vector<User>& users, const std::string& text) {
  std::vector<std::string> names;
  names.reserve(users.size());
  for (const User& user : users) names.push_back(user.name);
  return "there is no such user" + Suggestion(text, names) + " (viewctl users lists them)";
}

// The reasons for those who did not get it, by id. One line of the answer's text stands for each of them.
std::map<int, std::string> ReasonsOf(const rapidjson::Value& answer) {
  std::map<int, std::string> reasons;
  std::string text = TextOf(answer, "error_info");
  for (const auto& user : ListOf(answer, "lst_user_data").GetArray()) {
    std::string line = text.substr(0, text.find('\n'));
    text.erase(0, std::min(line.size() + 1, text.size()));
    const std::string head = TextOf(user, "user_name") + ": ";
    if (line.starts_with(head)) line.erase(0, head.size());
    reasons[NumberOf(user, "user_id")] = line;
  }
  return reasons;
}

// Those who did not get it, with the reason. Empty where all did.
std::map<int, std::string> Share(const Plugin& plugin, const std::string& view, const std::vector<User>& users) {
  std::string ids;
  for (const User& user : users) ids += (ids.empty() ? "" : ",") + std::to_string(user.id);
  rapidjson::Document answer;
  if (plugin.Ask("ViewShareUsers", ObjectText().Add("share_users", ids).Add("view_id", view).Text(), answer)) return {};
  std::map<int, std::string> reasons = ReasonsOf(answer);
  if (reasons.empty()) {
    for (const User& user : users) reasons[user.id] = TextOf(answer, "error_info");
  }
  return reasons;
}

class Sharing {
 public:
  Sharing(const Plugin& plugin, const ShareOptions& options)
      : m_plugin(plugin),
        m_options(options),
        m_outcomes("Sharing", "shared", "", options.users.size(), {false, options.json}) {}

  int Run(const std::string& view) {
    std::vector<User> users = KnownUsers();
    for (int left = m_options.retry; !users.empty(); --left) {
      const std::map<int, std::string> reasons = Share(m_plugin, view, users);
      std::vector<User> again;
      for (const User& user : users) {
        const auto reason = reasons.find(user.id);
        if (reason == reasons.end()) {
          m_outcomes.Done(With(user));
        } else if (left > 0) {
          again.push_back(user);
        } else {
          m_outcomes.Failed(With(user), reason->second);
        }
      }
      users = std::move(again);
      if (!users.empty()) std::this_thread::sleep_for(kPause);
    }
    return m_outcomes.Sum("user");
  }

 private:
  static constexpr std::chrono::milliseconds kPause{500};

  static Subject With(const User& user) { return {"with " + user.name, "user", std::to_string(user.id)}; }

  std::vector<User> KnownUsers() {
    const std::vector<User> all = ReadUsers(m_plugin);
    std::vector<User> known;
    for (const std::string& text : m_options.users) {
      if (const User* user = FindUser(all, text)) {
        known.push_back(*user);
      } else {
        m_outcomes.Failed({"with " + text, "user", {}}, UnknownUser(all, text), false);
      }
    }
    return known;
  }

  const Plugin& m_plugin;
  const ShareOptions& m_options;
  Outcomes m_outcomes;
};

int RunShare(const GlobalOptions& options, const ShareOptions& share) {
  Client client(options, Texts::kTranslated);
  client.Load();
  const ViewTree tree = ReadViewTree(client.Functions());
  const Thing view = Names(tree).View(share.view);
  if (IsPublic(tree, view.folder)) {
    throw Failure(kRefused, "View " + view.id + " is public, so everybody has it; views of your own are shared");
  }
  SayWhatIsEdited(options);
  return Sharing(client.Functions(), share).Run(view.id);
}

}  // namespace

void AddShareCommand(CLI::App& app, Run& chosen) {
  const auto [command, share] = AddCommand(app, chosen, "share", "gives one of your views to other users", RunShare);
  command->add_option("VIEW", share->view, "its id, or its path: private/My rounds")->required();
  command->add_option("USER", share->users, "their names, or ids; viewctl users lists them")->required();
  command->add_option("--retry", share->retry, "tries again, so often, for those who did not get it")
      ->type_name("N")
      ->check(WholeNumber(0, 1000));
  AddOutcomesAsJson(*command, share->json);
}

}  // namespace host
