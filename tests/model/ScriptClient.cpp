// SPDX-License-Identifier: Apache-2.0
#include "ScriptClient.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <QElapsedTimer>
#include <QProcessEnvironment>
#include <stdexcept>

namespace {

constexpr int kWaitMs = 40000;

std::string TextAt(const rapidjson::Value& object, const char* key) {
  const auto member = object.FindMember(key);
  return member != object.MemberEnd() && member->value.IsString() ? member->value.GetString() : std::string();
}

int NumberAt(const rapidjson::Value& object, const char* key) {
  const auto member = object.FindMember(key);
  return member != object.MemberEnd() && member->value.IsInt() ? member->value.GetInt() : 0;
}

}  // namespace

std::string Quoted(const std::string& text) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
  return buffer.GetString();
}

ScriptClient::ScriptClient(const std::string& serverUrl, const std::string& user, const std::string& password) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert("VIEWCTL_PASSWORD", QString::fromStdString(password));
  m_process.setProcessEnvironment(environment);
  m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  m_process.start(VIEWCTL_FILE, {"--server", QString::fromStdString(serverUrl), "--user", QString::fromStdString(user),
                                 "script", "-"});
  if (!m_process.waitForStarted(kWaitMs)) throw std::runtime_error("viewctl did not start");
  Load();
}

void ScriptClient::Load() {
  const rapidjson::Document loaded = Exchange(R"({"load":true})");
  const auto result = loaded.FindMember("result");
  if (result == loaded.MemberEnd() || !result->value.IsTrue()) throw std::runtime_error("viewctl did not load");
}

void ScriptClient::Kill() {
  m_process.kill();
  m_process.waitForFinished(kWaitMs);
}

ScriptClient::~ScriptClient() {
  m_process.closeWriteChannel();
  if (!m_process.waitForFinished(kWaitMs)) m_process.kill();
}

void ScriptClient::Reload() {
  Exchange(R"({"call":"ClearViewData"})");
  Load();
}

ScriptClient::Answer ScriptClient::Call(const std::string& function, const std::string& request) {
  Begin(function, request);
  return Finish();
}

void ScriptClient::Begin(const std::string& function, const std::string& request) {
  m_process.write((R"({"call":)" + Quoted(function) + R"(,"request":)" + request + "}\n").c_str());
  m_process.waitForBytesWritten(kWaitMs);
}

ScriptClient::Answer ScriptClient::Finish() {
  const rapidjson::Document line = ReadAnswer();
  const auto result = line.FindMember("result");
  if (result == line.MemberEnd()) throw std::runtime_error("no result in an answer");
  Answer answer;
  answer.result = result->value.IsTrue();
  answer.text = TextAt(line, "response");
  answer.response.Parse(answer.text.c_str());
  if (answer.response.HasParseError()) throw std::runtime_error("answered no JSON: " + answer.text);
  return answer;
}

void ScriptClient::Observe(int resourceType, const std::string& id) {
  Exchange(R"({"observe":{"ResourceType":)" + std::to_string(resourceType) + R"(,"ID":)" + Quoted(id) + "}}");
}

void ScriptClient::AwaitNotice(const std::string& id, const std::string& name) {
  for (Notice notice = NextNotice(); notice.id != id || notice.name != name;) notice = NextNotice();
}

Notice ScriptClient::NextNotice() {
  while (m_notices.empty()) {
    if (!TakeNotice(ReadLine())) throw std::runtime_error("an answer where a notice was awaited");
  }
  const Notice notice = m_notices.front();
  m_notices.pop_front();
  return notice;
}

rapidjson::Document ScriptClient::Exchange(const std::string& line) {
  m_process.write((line + "\n").c_str());
  return ReadAnswer();
}

rapidjson::Document ScriptClient::ReadAnswer() {
  for (;;) {
    rapidjson::Document answer = ReadLine();
    if (!TakeNotice(answer)) return answer;
  }
}

rapidjson::Document ScriptClient::ReadLine() {
  QElapsedTimer timer;
  timer.start();
  while (!m_process.canReadLine()) {
    const int left = kWaitMs - static_cast<int>(timer.elapsed());
    if (left <= 0 || !m_process.waitForReadyRead(left)) throw std::runtime_error("viewctl does not answer");
  }
  const QByteArray line = m_process.readLine();
  rapidjson::Document document;
  document.Parse(line.constData(), static_cast<size_t>(line.size()));
  if (document.HasParseError() || !document.IsObject()) {
    throw std::runtime_error("not a JSON line: " + line.toStdString());
  }
  return document;
}

bool ScriptClient::TakeNotice(const rapidjson::Document& line) {
  const auto member = line.FindMember("notice");
  if (member == line.MemberEnd() || !member->value.IsObject()) return false;
  const rapidjson::Value& notice = member->value;
  m_notices.push_back(
      {TextAt(notice, "id"), NumberAt(notice, "enum_state"), TextAt(notice, "name"), TextAt(notice, "child_id")});
  return true;
}
