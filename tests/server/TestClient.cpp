// SPDX-License-Identifier: Apache-2.0
#include "TestClient.h"

#include <rapidjson/pointer.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "../Cases.h"
#include "base/system/Files.h"
#include "system/Sockets.h"

namespace server::test {

using rapidjson::Value;

namespace {

const Value kNull;

// Null where there is nothing.
const Value& At(const Value& json, const std::string& pointer) {
  const Value* const found = rapidjson::Pointer(pointer.c_str()).Get(json);
  return found ? *found : kNull;
}

const Value& Elements(const Value& json, const std::string& kind) {
  return At(json, "/ResponseStatus/Data/" + kind + "List/" + kind);
}

std::string Plain(const Value& value) {
  if (value.IsString()) return value.GetString();
  return value.IsInt() ? std::to_string(value.GetInt()) : "-";
}

std::string HeadOf(const std::string& method, const std::string& path, const std::string& token,
                   const std::string& more) {
  return Head(method + " " + kRoot + path, kClose + Bearer(token) + more);
}

int EndUnpacking(z_stream* stream) {
  const int result = inflateEnd(stream);
  delete stream;
  return result;
}

bool IsNote(const std::string& block) {
  return block.starts_with("id: ") && block.find('\n') == std::string::npos;
}

}  // namespace

Wire::Wire(uint16_t port, const std::string& first, const char* from) : m_socket(test_sockets::Connect(port, from)) {
  Send(first);
}

Wire::~Wire() {
  test_sockets::Close(m_socket);
}

void Wire::Send(const std::string& bytes) {
  for (size_t sent = 0; sent < bytes.size();) {
    const ptrdiff_t count = test_sockets::Send(m_socket, bytes.data() + sent, bytes.size() - sent);
    if (count <= 0) return;  // the server may have heard enough
    sent += static_cast<size_t>(count);
  }
}

bool Wire::Receive(std::string& received, std::chrono::milliseconds patience) {
  if (!test_sockets::IsReadableWithin(m_socket, static_cast<int>(patience.count()))) {
    throw std::runtime_error("nothing came from the server in time");
  }
  char piece[65536];
  const ptrdiff_t count = test_sockets::Receive(m_socket, piece, sizeof piece);
  if (count > 0) received.append(piece, static_cast<size_t>(count));
  return count > 0;
}

int Wire::NextStatus() {
  std::string received;
  return Receive(received) ? ParseAnswer(received + "\r\n\r\n").status : 0;
}

std::string Wire::ReceiveAll() {
  std::string received;
  while (Receive(received)) {
  }
  return received;
}

std::string Answer::Error() const {
  const Value& module = At(json, "/ResponseStatus/ErrorModule");
  const Value& code = At(json, "/ResponseStatus/ErrorCode");
  if (!module.IsInt() || !code.IsInt() || !Data().IsObject()) return "?";
  return Plain(module) + "/" + Plain(code);
}

std::string Answer::Outcome() const {
  return Error() + " " + std::to_string(status);
}

const Value& Answer::Data() const {
  return At(json, "/ResponseStatus/Data");
}

std::string Answer::DataText() const {
  const size_t begin = body.find("\"Data\":");
  return begin == std::string::npos ? "none" : body.substr(begin + 7, body.size() - begin - 9);
}

std::string Answer::Token() const {
  return Plain(At(Data(), "/Session/Token"));
}

std::string Answer::Ids(const std::string& kind) const {
  const Value& elements = Elements(json, kind);
  if (!elements.IsArray()) return "no list";
  std::string ids;
  for (const Value& entry : elements.GetArray()) ids += (ids.empty() ? "" : ",") + Plain(At(entry, "/ID"));
  return ids;
}

Answer ParseAnswer(const std::string& bytes) {
  Answer answer;
  const size_t end = bytes.find("\r\n\r\n");
  if (end == std::string::npos) return answer;
  answer.status = std::atoi(bytes.c_str() + 9);
  std::istringstream head(bytes.substr(bytes.find('\n') + 1, end - bytes.find('\n')));
  for (std::string line; std::getline(head, line);) {
    const size_t colon = line.find(": ");
    std::string name = line.substr(0, colon);
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    answer.headers[name] = line.substr(colon + 2, line.size() - colon - 3);
  }
  answer.body = bytes.substr(end + 4);
  answer.json.Parse(answer.body.c_str());
  return answer;
}

const Value& Event::Element() const {
  const Value& view = At(json, "/ResponseStatus/Data/ViewList/View/0");
  return view.IsNull() ? At(json, "/ResponseStatus/Data/ViewGroupList/ViewGroup/0") : view;
}

std::string Event::Brief() const {
  if (name.empty()) return "end";
  const Value& method = At(Element(), "/Method");
  return name + " " + (method.IsInt() ? "+*-"[method.GetInt()] : '?') + Plain(At(Element(), "/ID"));
}

EventStream::EventStream(uint16_t port, const std::string& token, int64_t after, const std::string& more, bool isPacked)
    : m_wire(std::make_unique<Wire>(port, HeadOf("GET", "V0/Changes?After=" + std::to_string(after) + more, token,
                                                 isPacked ? "Accept-Encoding: gzip\r\n" : ""))),
      m_unpacked(nullptr, EndUnpacking) {
  while (m_received.find("\r\n\r\n") == std::string::npos && m_wire->Receive(m_received)) {
  }
  const Answer head = ParseAnswer(m_received);
  m_status = head.status;
  if (const auto history = head.headers.find("resource-history"); history != head.headers.end()) {
    m_history = history->second;
  }
  m_received.erase(0, m_received.find("\r\n\r\n") + 4);
  if (!head.headers.contains("content-encoding")) return;
  constexpr int kGzip = 15 + 16;
  m_unpacked.reset(new z_stream{});
  if (inflateInit2(m_unpacked.get(), kGzip) != Z_OK) throw std::bad_alloc();
  m_packed.swap(m_received);
  Unpack();
}

bool EventStream::Receive() {
  if (!m_unpacked) return m_wire->Receive(m_received);
  if (!m_wire->Receive(m_packed)) return false;
  Unpack();
  return true;
}

void EventStream::Unpack() {
  m_unpacked->next_in = reinterpret_cast<Bytef*>(m_packed.data());
  m_unpacked->avail_in = static_cast<uInt>(m_packed.size());
  char piece[4096];
  do {
    m_unpacked->next_out = reinterpret_cast<Bytef*>(piece);
    m_unpacked->avail_out = sizeof piece;
    const int result = inflate(m_unpacked.get(), Z_SYNC_FLUSH);
    if (result != Z_OK && result != Z_BUF_ERROR) throw std::runtime_error("the stream cannot be unpacked");
    m_received.append(piece, sizeof piece - m_unpacked->avail_out);
  } while (m_unpacked->avail_out == 0);
  m_packed.clear();
}

std::string EventStream::NextBlock() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);  // signs of life do not put it off
  while (std::chrono::steady_clock::now() < deadline) {
    const size_t end = m_received.find("\n\n");
    if (end == std::string::npos) {
      if (!Receive()) return "";
      continue;
    }
    const std::string block = m_received.substr(0, end);
    m_received.erase(0, end + 2);
    if (block[0] != ':') return block;
  }
  throw std::runtime_error("no event came in time");
}

int64_t EventStream::NextNote() {
  const std::string block = NextBlock();
  return IsNote(block) ? std::stoll(block.substr(4)) : -1;
}

Event EventStream::Next() {
  std::string block = NextBlock();
  while (IsNote(block)) block = NextBlock();
  Event event;
  std::istringstream lines(block);
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("id: ", 0) == 0) event.number = std::stoll(line.substr(4));
    if (line.rfind("event: ", 0) == 0) event.name = line.substr(7);
    if (line.rfind("data: ", 0) == 0) event.text = line.substr(6);
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
  return ParseAnswer(Wire(m_port, Written(method, path, body)).ReceiveAll());
}

std::string Client::Written(const std::string& method, const std::string& path, const std::string& body) const {
  return HeadOf(method, path, m_token, "Content-Length: " + std::to_string(body.size()) + "\r\n") + body;
}

Answer Client::Do(const std::string& line) const {
  const size_t path = line.find(' ') + 1;
  const size_t end = std::min(line.find(' ', path), line.size());
  return Request(line.substr(0, path - 1), line.substr(path, end - path), line.substr(std::min(end + 1, line.size())));
}

std::string Client::Told(const std::string& line) const {
  std::istringstream words(line);
  std::string method, kind;
  int32_t id = 0;
  words >> method >> kind;
  if (method == "LIST") return Get("V0/" + kind + "s").Ids(kind);
  if (method == "SHOW") {
    words >> id;
    return Show(kind, id, std::vector<std::string>(std::istream_iterator<std::string>(words), {}));
  }
  const Answer answer = Do(line);
  return answer.Outcome() + " " + answer.DataText();
}

int32_t Client::Add(const std::string& kind, const std::string& body) const {
  const Answer answer = Post("V0/" + kind + "s", body);
  const Value& id = At(answer.Data(), "/" + kind + "/ID");
  if (!id.IsInt()) throw std::runtime_error("cannot add " + body + ": " + answer.Error());
  return id.GetInt();
}

std::string Client::Show(const std::string& kind, int32_t id, const std::vector<std::string>& keys) const {
  const Answer list = Get("V0/" + kind + "s");
  const Value& elements = Elements(list.json, kind);
  if (!elements.IsArray()) return "no list";
  for (const Value& entry : elements.GetArray()) {
    if (At(entry, "/ID") != Value(id)) continue;
    std::string text;
    for (const std::string& key : keys) text += (text.empty() ? "" : " ") + Plain(At(entry, "/" + key));
    return text;
  }
  return "gone";
}

int64_t Client::Sequence() const {
  return std::stoll(Get("V0/ViewGroups").headers.at("resource-sequence"));
}

std::string Head(const std::string& line, const std::string& fields) {
  return line + " HTTP/1.1\r\nHost: t\r\n" + fields + "\r\n";
}

std::string Bearer(const std::string& token) {
  return token.empty() ? "" : "Authorization: Bearer " + token + "\r\n";
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

std::string Ballast(size_t size) {
  return R"(,"Ballast":")" + std::string(size, 'x') + '"';
}

namespace {

// The content of a store with the three users. Hashing their passwords takes its time, so it is made once.
const std::string& StoreWithUsers() {
  static const std::string s_store = [] {
    const TestFolder folder(true);
    ViewServerOptions options;
    options.dataFile = folder.Path("site.db");
    options.seedFile = folder.WriteFile("users.json", R"({"Users":[
        {"ID":1,"Name":"ann","Password":"a","PTZControlPermission":5},
        {"ID":2,"Name":"bob","Password":"b"},{"ID":3,"Name":"cid","Password":"c"}]})");
    { ViewServer server(options); }
    return Bytes(options.dataFile);
  }();
  return s_store;
}

}  // namespace

TestFolder::TestFolder(bool isInMemory) : m_folder(base::PathOf(base::MakeTemporaryFolder("viewserver-test-"))) {
  if (!isInMemory || std::filesystem::path::preferred_separator != '/') return;
  const std::filesystem::path inMemory = std::filesystem::path("/dev/shm") / m_folder.filename();
  std::error_code none;
  if (!std::filesystem::create_directory(inMemory, none)) return;
  std::filesystem::remove(m_folder);
  m_folder = inMemory;
}

TestFolder::~TestFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(m_folder, ignored);
}

std::string TestFolder::WriteFile(const std::string& name, const std::string& text) const {
  std::ofstream(m_folder / name, std::ios::binary) << text;
  return Path(name);
}

ServerTest::ServerTest() : TestFolder(true) {
  WriteFile("site.db", StoreWithUsers());
  Restart(Options());
}

ViewServerOptions ServerTest::Options() const {
  ViewServerOptions options;
  options.dataFile = Path("site.db");
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

std::string Bytes(const std::string& file) {
  std::ostringstream bytes;
  if (std::filesystem::exists(file)) bytes << std::ifstream(file, std::ios::binary).rdbuf();
  return bytes.str();
}

std::string FailureOf(const std::function<void()>& action) {
  try {
    action();
  } catch (const std::runtime_error& e) {
    return e.what();
  }
  return "";
}

std::string ErrorsOf(const std::function<void()>& action) {
  testing::internal::CaptureStderr();
  action();
  return testing::internal::GetCapturedStderr();
}

std::chrono::milliseconds TimeOf(const std::function<void()>& action) {
  const auto began = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - began);
}

bool Eventually(const std::function<bool()>& isTrue, std::chrono::seconds patience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!isTrue()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

Client ServerTest::LogIn(const std::string& user) const {
  const auto session = m_server->OpenLocalSession(user);
  return session ? Client(m_server->Port(), session->token) : Client();
}

void ServerTest::Play(const char* file) const {
  for (const auto& [line, expected] : testing_support::Cases(file)) {
    const std::map<std::string, const Client*> clients = {{"ann ", &ann}, {"bob ", &bob}, {"cid ", &cid}};
    EXPECT_EQ(clients.at(line.substr(0, 4))->Told(line.substr(4)), expected.at(0)) << line << ": " << expected.back();
  }
}

}  // namespace server::test
