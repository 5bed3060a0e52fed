// SPDX-License-Identifier: Apache-2.0
// Damaged stores: the start ends, with or without success; lists and events are well-formed; edits end; the check of
// the store ends. Input: damages of a byte for the kind, then for the bytes of the file three bytes of the place and
// what is written there, 0xFF; or for a row a byte for the column, one for the row, one for the type, and the value,
// 0xFF.
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>
#include <rapidjson/document.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "FuzzInput.h"
#include "server/api/Api.h"
#include "server/commands/Commands.h"
#include "server/login/Secrets.h"
#include "server/site/Site.h"

namespace {

using namespace server;

// In memory where the system has such a folder: each input writes a file.
class Folder {
 public:
  Folder() {
    const std::filesystem::path memory = "/dev/shm";
    const auto parent = std::filesystem::exists(memory) ? memory : std::filesystem::temp_directory_path();
    std::string pattern = (parent / "damage-fuzz-XXXXXX").string();
    m_path = mkdtemp(pattern.data());
  }
  ~Folder() { std::filesystem::remove_all(m_path); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  std::string File(const std::string& name) const { return (m_path / name).string(); }

 private:
  std::filesystem::path m_path;
};

const LogLimits kLimits{100, 1 << 20};

struct SoundStore {
  std::vector<std::string> tokens;  // by user, from 1 on
  std::string content;
};

void Fill(Editor& editor, SoundStore& store) {
  for (const char* name : {"ann", "bob"}) {
    editor.AddUser(name, "");
    store.tokens.push_back(editor.OpenSession(static_cast<int32_t>(store.tokens.size()) + 1, "fuzz"));
  }
  const Caller ann{1, 1};
  const std::string document = R"(,"PlanPages":[{"SpliteType":4,"PlanViewItem":[{"Xtop":"0.25"}]}])";
  int32_t parent = kTopFolder;
  for (int i = 0; i < 4; ++i) {
    parent = editor.AddGroup(ann, {"group", parent, 1, false}).id;
    editor.AddView(ann, {"view", parent, 1, 0, 10, document});
    editor.AddView(ann, {"public", kTopFolder, kNobody, 0, 10, document});
  }
  editor.ShareView(ann, 1, {2});
  editor.DeleteView(ann, 3);
}

SoundStore MakeSoundStore(const Folder& folder) {
  SoundStore store;
  const std::string file = folder.File("sound");
  Site(file, kLimits, SecondsNow).Make([&](Editor& editor) { Fill(editor, store); });
  std::stringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  store.content = content.str();
  return store;
}

struct Column {
  const char* table;
  const char* column;
};
const Column kColumns[] = {{"groups", "id"},
                           {"groups", "name"},
                           {"groups", "parent_id"},
                           {"groups", "user_id"},
                           {"groups", "sequence"},
                           {"groups", "change_number"},
                           {"views", "id"},
                           {"views", "guid"},
                           {"views", "name"},
                           {"views", "group_id"},
                           {"views", "user_id"},
                           {"views", "cycle_time"},
                           {"views", "document_id"},
                           {"views", "change_number"},
                           {"documents", "id"},
                           {"documents", "text"},
                           {"users", "id"},
                           {"users", "name"},
                           {"users", "ptz"},
                           {"changes", "number"},
                           {"changes", "kind"},
                           {"changes", "object_id"},
                           {"changes", "before"},
                           {"changes", "after"},
                           {"changes", "head"},
                           {"changes", "shared_head"},
                           {"changes", "document_id"},
                           {"changes", "bytes"},
                           {"epochs", "number"},
                           {"epochs", "id"},
                           {"epochs", "first_change"},
                           {"sqlite_sequence", "seq"}};

void DamageRow(const std::string& file, fuzz::Input& input) {
  const Column& column = kColumns[input.Byte() % std::size(kColumns)];
  const std::string table = column.table;
  const int row = static_cast<int>(input.Byte() % 16);
  static const char* const types[] = {"TEXT", "INTEGER", "BLOB", "REAL"};
  const std::string type = types[input.Byte() % std::size(types)];
  const std::string value = input.Text();
  try {
    SQLite::Database database(file, SQLite::OPEN_READWRITE);
    SQLite::Statement update(database, "UPDATE OR IGNORE " + table + " SET " + column.column + " = CAST(? AS " + type +
                                           ") WHERE rowid IN (SELECT rowid FROM " + table + " LIMIT 1 OFFSET ?)");
    update.bindNoCopy(1, value.data(), static_cast<int>(value.size()));
    update.bind(2, row);
    update.exec();
  } catch (const SQLite::Exception&) {
    // Of what cannot stand there nothing does.
  }
}

void DamageBytes(const std::string& file, size_t size, fuzz::Input& input) {
  size_t at = input.Byte();
  at = at << 8 | input.Byte();
  at = (at << 8 | input.Byte()) % size;
  const std::string bytes = input.Text().substr(0, size - at);
  std::fstream stream(file, std::ios::binary | std::ios::in | std::ios::out);
  stream.seekp(static_cast<std::streamoff>(at));
  stream << bytes;
}

void RequireJson(const std::string& text) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(text.data(), text.size());
  fuzz::Require(!document.HasParseError() && document.IsObject(), "a list or an event is no JSON", text);
}

void LookAtList(Api& api, const std::string& token, const char* path) {
  HttpRequest request;
  request.method = "GET";
  request.path = std::string(kRoot) + path;
  request.token = token;
  const HttpReply reply = api.Handle(request);
  if (!reply.source) return RequireJson(reply.body);
  std::string body, chunk;
  while (reply.source->Next(chunk)) body += chunk;
  fuzz::Require(body.size() == reply.source->Length(), "a list has another length than promised");
  RequireJson(body);
}

// Where the file itself cannot be read, an operation fails, as a request would.
template <class Action>
void Try(const Action& action) {
  try {
    action();
  } catch (const SQLite::Exception&) {
  } catch (const Refusal&) {
  }
}

void LookAtEvents(Site& site, const Caller& caller) {
  const auto feed = site.OpenFeed(caller, 0);
  std::vector<Text> events;
  while (feed->Take(events) && (feed->HasMore() || !events.empty())) {
    for (const Text& event : events) {
      const size_t data = event->find("data: ");
      if (data != std::string::npos) RequireJson(event->substr(data + 6, event->size() - data - 8));
    }
    events.clear();
  }
}

void LookAt(Site& site, const std::vector<std::string>& tokens) {
  Api api(site);
  for (size_t i = 0; i < tokens.size(); ++i) {
    for (const char* path : {"V0/ViewGroups", "V0/Views", "V0/Users", "V0/Elements", "V0/Areas"}) {
      LookAtList(api, tokens[i], path);
    }
    const Caller caller{static_cast<int32_t>(i) + 1, static_cast<int64_t>(i) + 1};
    Try([&] { LookAtEvents(site, caller); });
  }
}

void MakeEdits(Site& site) {
  const Caller ann{1, 1};
  const std::function<void(Editor&)> edits[] = {
      [&](Editor& editor) {
        editor.MoveGroups(ann, {4, {1}});
      },
      [&](Editor& editor) {
        editor.MoveGroups(ann, {kTopFolder, {3, 2}});
      },
      [&](Editor& editor) {
        editor.AddView(ann, {"new", 2, 1, 0, 10, ""});
      },
      [&](Editor& editor) { editor.DeleteGroup(ann, 1); },
  };
  for (const auto& edit : edits) Try([&] { site.Make(edit); });
  try {
    site.FollowAccounts();
  } catch (const std::runtime_error&) {
  }
}

void Run(const std::string& file, const std::vector<std::string>& tokens) {
  std::unique_ptr<Site> site;
  try {
    std::ostringstream found;
    CheckStore(file, found);
    site = std::make_unique<Site>(file, kLimits, SecondsNow);
  } catch (const std::runtime_error&) {
    return;
  }
  LookAt(*site, tokens);
  MakeEdits(*site);
  LookAt(*site, tokens);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool ready = (InitSecrets(), true);
  (void)ready;
  static const Folder folder;
  static const SoundStore sound = MakeSoundStore(folder);
  const std::string file = folder.File("damaged");
  for (const char* end : {"-wal", "-shm"}) std::filesystem::remove(file + end);
  std::ofstream(file, std::ios::binary) << sound.content;

  fuzz::Input input(data, size);
  for (int damages = 0; !input.AtEnd() && damages < 10; ++damages) {
    input.Byte() % 4 == 0 ? DamageBytes(file, sound.content.size(), input) : DamageRow(file, input);
  }
  Run(file, sound.tokens);
  return 0;
}
