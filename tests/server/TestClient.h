// SPDX-License-Identifier: Apache-2.0
// A small blocking client of the server, written from the protocol and sharing nothing with the server's own HTTP, and
// the fixture that runs a server in the process. Every wait is bounded; what does not come in time is a test failure.
#pragma once

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <zlib.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "server/ViewServer.h"

namespace server::test {

constexpr std::chrono::seconds kPatience{20};
// For a test's own connection to a store that is served: the server writes, too, when sessions were used.
constexpr int kStoreWaitMs = 10000;
inline const std::string kRoot = "/NXAPI/Vantorel/Platform/";

// A socket with bounded waits.
class Wire {
 public:
  // Sends `first`. `from`: its own address, one of 127.0.0.0/8.
  explicit Wire(uint16_t port, const std::string& first = "", const char* from = nullptr);
  ~Wire();
  void Send(const std::string& bytes);
  // Adds what comes next to `received`; false at the end of the connection.
  bool Receive(std::string& received, std::chrono::milliseconds patience = kPatience);
  int NextStatus();          // of the answer that comes next; 0 at the end of the connection
  std::string ReceiveAll();  // up to the end of the connection

 private:
  int m_socket;
};

struct Answer {
  int status = 0;
  std::map<std::string, std::string> headers;  // names in lower case
  std::string body;
  rapidjson::Document json;

  // "MODULE/CODE" of the envelope; "?" where there is none.
  std::string Error() const;
  std::string Outcome() const;           // the same and the HTTP status
  const rapidjson::Value& Data() const;  // "Data" of the envelope; null where there is none
  std::string DataText() const;          // the same as it was written
  std::string Token() const;             // that a log-in is answered with
  // The elements of that kind ("View": those of "ViewList") as "id,id,...".
  std::string Ids(const std::string& kind) const;
};

Answer ParseAnswer(const std::string& bytes);

struct Event {
  int64_t number = 0;
  std::string name;
  rapidjson::Document json;
  std::string text;  // the data

  const rapidjson::Value& Element() const;
  std::string Brief() const;  // "Views +7" (added; *: changed, -: removed); "end" where the stream ended
};

class EventStream {
 public:
  // `more` of the query: "&History=..."
  EventStream(uint16_t port, const std::string& token, int64_t after, const std::string& more = "",
              bool isPacked = false);
  int Status() const { return m_status; }
  const std::string& History() const { return m_history; }
  Event Next();                       // skips comments, and notes: an `id` alone
  int64_t NextNote();                 // the number of the next note; -1 where an event or the end comes first
  std::string NextBriefs(int count);  // their briefs joined by "; "

 private:
  std::string NextBlock();  // that is no comment; nothing at their end
  bool Receive();           // more of the events; false at their end
  void Unpack();

  std::unique_ptr<Wire> m_wire;
  std::unique_ptr<z_stream, int (*)(z_stream*)> m_unpacked;  // of a packed stream
  std::string m_packed;
  std::string m_received, m_history;
  int m_status = 0;
};

// A request's head, for who sends it without a Client. `fields` end with line ends.
std::string Head(const std::string& line, const std::string& fields = "");
inline const std::string kClose = "Connection: close\r\n";
std::string Bearer(const std::string& token);  // the field, or nothing without a token

std::string ViewBody(const std::string& name, int32_t folder, int32_t owner, const std::string& more = "");
std::string GroupBody(const std::string& name, int32_t parent, int32_t owner, int32_t isShared = -1);
std::string MoveBody(int type, int32_t folder, const std::string& ids);
std::string ShareBody(const std::string& users);
std::string Ballast(size_t size);  // a member of a body, and so long

// What the std::runtime_error that it throws says; nothing where it throws none.
std::string FailureOf(const std::function<void()>& action);
// What is written to stderr meanwhile.
std::string ErrorsOf(const std::function<void()>& action);
std::chrono::milliseconds TimeOf(const std::function<void()>& action);
// Whether it comes true in time.
bool Eventually(const std::function<bool()>& isTrue, std::chrono::seconds patience = kPatience);

// One session of one user.
class Client {
 public:
  Client() = default;
  Client(uint16_t port, std::string token) : m_port(port), m_token(std::move(token)) {}

  Answer Request(const std::string& method, const std::string& path, const std::string& body = "") const;
  // The same request, for who sends it otherwise.
  std::string Written(const std::string& method, const std::string& path, const std::string& body = "") const;
  Answer Get(const std::string& path) const { return Request("GET", path); }
  Answer Post(const std::string& path, const std::string& body) const { return Request("POST", path, body); }
  Answer Put(const std::string& path, const std::string& body) const { return Request("PUT", path, body); }
  Answer Delete(const std::string& path) const { return Request("DELETE", path); }
  // The same as one line: "PUT V0/Views/1 {...}".
  Answer Do(const std::string& line) const;
  // Outcome and data of such a line; the ids that "LIST View" lists; what is shown by "SHOW View 1 Name UserID".
  std::string Told(const std::string& line) const;
  // Opens another session.
  Answer LogIn(const std::string& name, const std::string& password) const {
    return Post("V0/Sessions", R"({"Session":{"UserName":")" + name + R"(","Password":")" + password + "\"}}");
  }

  int32_t AddView(const std::string& name, int32_t folder, int32_t owner, const std::string& more = "") const {
    return Add("View", ViewBody(name, folder, owner, more));
  }
  int32_t AddGroup(const std::string& name, int32_t parent, int32_t owner) const {
    return Add("ViewGroup", GroupBody(name, parent, owner));
  }
  std::string ViewIds() const { return Get("V0/Views").Ids("View"); }
  std::string GroupIds() const { return Get("V0/ViewGroups").Ids("ViewGroup"); }
  // The values of some keys of a listed "View" or "ViewGroup", with blanks between them and "-" for what is not there.
  std::string Show(const std::string& kind, int32_t id, const std::vector<std::string>& keys) const;
  Answer Share(int32_t view, const std::string& users) const {
    return Post("V1/View/" + std::to_string(view) + "/Share", ShareBody(users));
  }
  int64_t Sequence() const;
  EventStream Listen(int64_t after, const std::string& more = "") const { return {m_port, m_token, after, more}; }
  EventStream ListenPacked(int64_t after) const { return {m_port, m_token, after, "", true}; }
  EventStream Listen() const { return Listen(Sequence()); }

 private:
  int32_t Add(const std::string& kind, const std::string& body) const;

  uint16_t m_port = 0;
  std::string m_token;
};

// All that is in a file; nothing where there is none.
std::string Bytes(const std::string& file);

// Goes with all that is in it.
class TestFolder {
 public:
  // In memory where that can be had: waiting for a disk, edit by edit, would be most of the tests' time.
  explicit TestFolder(bool isInMemory = false);
  ~TestFolder();
  std::string Path(const std::string& name) const { return (m_folder / name).string(); }
  std::string WriteFile(const std::string& name, const std::string& text) const;

 protected:
  std::filesystem::path m_folder;
};

// A server with the users ann (1), bob (2) and cid (3), and nothing else.
class ServerTest : public ::testing::Test, protected TestFolder {
 protected:
  static constexpr int32_t kAnn = 1, kBob = 2, kPublic = -1;

  ServerTest();

  ViewServerOptions Options() const;
  void Restart(const ViewServerOptions& options);
  void RestartWith(const std::function<void(ViewServerOptions&)>& change) {
    ViewServerOptions options = Options();
    change(options);
    Restart(options);
  }
  void RestartWithSeed(const std::string& text) {
    RestartWith([&](auto& options) { options.seedFile = WriteFile("seed.json", text); });
  }
  std::string File() const { return Options().dataFile; }  // the store
  Client LogIn(const std::string& user) const;             // a new session
  // Of each line of the running test's table ("ann LIST View") what that client is told, and perhaps why.
  void Play(const char* file) const;

  std::unique_ptr<ViewServer> m_server;
  Client ann, bob, cid;
};

}  // namespace server::test
