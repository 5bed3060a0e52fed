// SPDX-License-Identifier: Apache-2.0
#include "TestClient.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace server::test {

namespace asio = boost::asio;
using rapidjson::Value;

namespace {

const Value kNull;

const Value& Member(const Value& value, const char* key) {
  if (!value.IsObject()) return kNull;
  const auto it = value.FindMember(key);
  return it == value.MemberEnd() ? kNull : it->value;
}

const Value& DataOf(const Value& json) {
  return Member(Member(json, "ResponseStatus"), "Data");
}

std::string HeadOf(const std::string& method, const std::string& path, const std::string& token) {
  std::string head = method + " " + kRoot + path + " HTTP/1.1\r\nHost: test\r\nConnection: close\r\n";
  return token.empty() ? head : head + "Authorization: Bearer " + token + "\r\n";
}

}  // namespace

Wire::Wire(uint16_t port) : m_socket(m_io) {
  m_socket.connect({asio::ip::make_address("127.0.0.1"), port});
  m_socket.set_option(asio::ip::tcp::no_delay(true));
}

void Wire::Send(const std::string& bytes) {
  boost::system::error_code ignored;  // the server may have heard enough
  asio::write(m_socket, asio::buffer(bytes), ignored);
}

bool Wire::Receive(std::string& received, std::chrono::milliseconds patience) {
  char piece[65536];
  std::optional<size_t> count;
  m_socket.async_read_some(asio::buffer(piece),
                           [&count](boost::system::error_code error, size_t bytes) { count = error ? 0 : bytes; });
  m_io.restart();
  m_io.run_for(patience);
  if (!count) {
    m_socket.cancel();
    m_io.restart();
    m_io.run();
    throw std::runtime_error("nothing came from the server in time");
  }
  received.append(piece, *count);
  return *count > 0;
}

std::string Wire::ReceiveAll() {
  std::string received;
  while (Receive(received)) {
  }
  return received;
}

std::string Answer::Error() const {
  const Value& envelope = Member(json, "ResponseStatus");
  const Value& module = Member(envelope, "ErrorModule");
  const Value& code = Member(envelope, "ErrorCode");
  if (!module.IsInt() || !code.IsInt() || !Data().IsObject()) return "?";
  return std::to_string(module.GetInt()) + "/" + std::to_string(code.GetInt());
}

std::string Answer::Outcome() const {
  return Error() + " " + std::to_string(status);
}

const Value& Answer::Data() const {
  return DataOf(json);
}

std::string Answer::Ids(const char* list, const char* element) const {
  const Value& elements = Member(Member(Data(), list), element);
  if (!elements.IsArray()) return "no list";
  std::string ids;
  for (const Value& entry : elements.GetArray()) {
    const Value& id = Member(entry, "ID");
    ids += (ids.empty() ? "" : ",") + (id.IsInt() ? std::to_string(id.GetInt()) : "?");
  }
  return ids;
}

const Value& Answer::Element(const char* list, const char* element, int32_t id) const {
  const Value& elements = Member(Member(Data(), list), element);
  if (!elements.IsArray()) return kNull;
  for (const Value& entry : elements.GetArray()) {
    if (Member(entry, "ID") == Value(id)) return entry;
  }
  return kNull;
}

Answer ParseAnswer(const std::string& bytes) {
  Answer answer;
  size_t line = bytes.find("\r\n");
  if (line == std::string::npos) return answer;
  answer.status = std::atoi(bytes.c_str() + 9);
  for (size_t begin = line + 2; (line = bytes.find("\r\n", begin)) != begin && line != std::string::npos;
       begin = line + 2) {
    const size_t colon = bytes.find(": ", begin);
    std::string name = bytes.substr(begin, colon - begin);
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    answer.headers[name] = bytes.substr(colon + 2, line - colon - 2);
  }
  answer.body = bytes.substr(bytes.find("\r\n\r\n") + 4);
  answer.json.Parse(answer.body.c_str());
  return answer;
}

const Value& Event::Element() const {
  const Value& data = DataOf(json);
  for (const auto& [list, element] : {std::pair{"ViewList", "View"}, std::pair{"ViewGroupList", "ViewGroup"}}) {
    const Value& elements = Member(Member(data, list), element);
    if (elements.IsArray() && elements.Size() == 1) return elements[0];
  }
  return kNull;
}

std::string Event::Brief() const {
  if (name.empty()) return "end";
  const Value& id = Member(Element(), "ID");
  const Value& method = Member(Element(), "Method");
  if (!id.IsInt() || !method.IsInt()) return name + " ?";
  return name + " " + std::to_string(id.GetInt()) + " method " + std::to_string(method.GetInt());
}

EventStream::EventStream(uint16_t port, const std::string& token, int64_t after)
    : m_wire(std::make_unique<Wire>(port)) {
  m_wire->Send(HeadOf("GET", "V0/Changes?After=" + std::to_string(after), token) + "\r\n");
  while (m_received.find("\r\n\r\n") == std::string::npos && m_wire->Receive(m_received)) {
  }
  m_status = ParseAnswer(m_received).status;
  m_received.erase(0, m_received.find("\r\n\r\n") + 4);
}

Event EventStream::Next() {
  Event event;
  size_t end = 0;
  while ((end = m_received.find("\n\n")) == std::string::npos || m_received[0] == ':') {
    if (end != std::string::npos) {
      m_received.erase(0, end + 2);
    } else if (!m_wire->Receive(m_received)) {
      return event;
    }
  }
  std::string block = m_received.substr(0, end);
  m_received.erase(0, end + 2);
  for (size_t begin = 0; begin < block.size();) {
    const size_t stop = std::min(block.find('\n', begin), block.size());
    const std::string line = block.substr(begin, stop - begin);
    if (line.rfind("id: ", 0) == 0) event.number = std::stoll(line.substr(4));
    if (line.rfind("event: ", 0) == 0) event.name = line.substr(7);
    if (line.rfind("data: ", 0) == 0) event.text = line.substr(6);
    begin = stop + 1;
  }
  event.json.Parse(event.text.c_str());
  return event;
}

std::string EventStream::NextBriefs(int count) {
  std::string briefs;
  for (int i = 0; i < count; ++i) briefs += (i == 0 ? "" : "; ") + Next().Brief();
  return briefs;
}

Answer Client::Request(const std::string& method, const std::string& path, const std::string& body) const {
  Wire wire(m_port);
  wire.Send(HeadOf(method, path, m_token) + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
  return ParseAnswer(wire.ReceiveAll());
}

int32_t Client::AddView(const std::string& name, int32_t folder, int32_t owner, const std::string& more) const {
  const Answer answer = Post("V0/Views", ViewBody(name, folder, owner, more));
  const Value& id = Member(Member(answer.Data(), "View"), "ID");
  if (!id.IsInt()) throw std::runtime_error("cannot add view " + name + ": " + answer.Error());
  return id.GetInt();
}

int32_t Client::AddGroup(const std::string& name, int32_t parent, int32_t owner) const {
  const Answer answer = Post("V0/ViewGroups", GroupBody(name, parent, owner));
  const Value& id = Member(Member(answer.Data(), "ViewGroup"), "ID");
  if (!id.IsInt()) throw std::runtime_error("cannot add group " + name + ": " + answer.Error());
  return id.GetInt();
}

int64_t Client::Sequence() const {
  return std::stoll(Get("V0/ViewGroups").headers.at("resource-sequence"));
}

std::string ViewBody(const std::string& name, int32_t folder, int32_t owner, const std::string& more) {
  return R"({"View":{"ID":-1,"Name":")" + name + R"(","ViewGroupID":)" + std::to_string(folder) + R"(,"UserID":)" +
         std::to_string(owner) + R"(,"SequenceIndex":-1,"AutoCycle":0,"CycleTime":10)" + more + "}}";
}

std::string GroupBody(const std::string& name, int32_t parent, int32_t owner, int32_t isShared) {
  return R"({"ViewGroup":{"ID":-1,"Name":")" + name + R"(","ParentViewGroupID":)" + std::to_string(parent) +
         R"(,"UserID":)" + std::to_string(owner) + R"(,"IsSharedView":)" + std::to_string(isShared) +
         R"(,"SequenceIndex":-1}})";
}

std::string MoveBody(int type, int32_t folder, const std::string& ids) {
  return R"({"ViewMoveRequest":{"Type":)" + std::to_string(type) + R"(,"ViewGroupID":)" + std::to_string(folder) +
         R"(,"UserID":-1,"IDs":")" + ids + "\"}}";
}

std::string ShareBody(const std::string& users) {
  return R"({"ViewShare":{"ShareUsers":")" + users + "\"}}";
}

namespace {

std::filesystem::path NewFolder() {
  static std::atomic<int> s_count{0};
  const std::string name = "viewserver-test-" + std::to_string(getpid()) + "-" + std::to_string(s_count++);
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / name;
  std::filesystem::create_directories(folder);
  return folder;
}

// The content of a store with the three users. Hashing their passwords takes its time, so it is made once.
const std::string& StoreWithUsers() {
  static const std::string s_store = [] {
    const std::filesystem::path folder = NewFolder();
    ViewServerOptions options;
    options.dataFile = (folder / "site.db").string();
    options.seedFile = (folder / "users.json").string();
    std::ofstream(options.seedFile) << R"({"Users":[{"ID":1,"Name":"ann","Password":"a","PTZControlPermission":5},
        {"ID":2,"Name":"bob","Password":"b"},{"ID":3,"Name":"cid","Password":"c"}]})";
    { ViewServer server(options); }
    std::stringstream content;
    content << std::ifstream(options.dataFile, std::ios::binary).rdbuf();
    std::filesystem::remove_all(folder);
    return content.str();
  }();
  return s_store;
}

}  // namespace

ServerTest::ServerTest() : m_folder(NewFolder()) {
  WriteFile("site.db", StoreWithUsers());
  Restart(Options());
}

ServerTest::~ServerTest() {
  m_server.reset();
  std::error_code ignored;
  std::filesystem::remove_all(m_folder, ignored);
}

ViewServerOptions ServerTest::Options() const {
  ViewServerOptions options;
  options.dataFile = (m_folder / "site.db").string();
  return options;
}

void ServerTest::Restart(const ViewServerOptions& options) {
  m_server.reset();
  m_server = std::make_unique<ViewServer>(options);
  m_server->Start();
  ann = LogIn("ann");
  bob = LogIn("bob");
  cid = LogIn("cid");
}

std::string ServerTest::WriteFile(const std::string& name, const std::string& text) const {
  const std::filesystem::path file = m_folder / name;
  std::ofstream(file, std::ios::binary) << text;
  return file.string();
}

Client ServerTest::LogIn(const std::string& user) const {
  const auto session = m_server->OpenLocalSession(user);
  return session ? Client(m_server->Port(), session->token) : Client();
}

}  // namespace server::test
