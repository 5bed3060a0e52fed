// SPDX-License-Identifier: Apache-2.0
#include "ScriptClient.h"

#include <stdexcept>

#include "host/JsonText.h"

namespace test {

using namespace host;

ScriptClient::ScriptClient(const std::string& serverUrl, const std::string& user, const std::string& password)
    : m_process({"--server", QString::fromStdString(serverUrl), "--user", QString::fromStdString(user), "script"},
                password) {
  Load();
}

void ScriptClient::Load() {
  m_process.Write("{\"load\":true}\n");
  if (!FlagOf(ReadAnswer(), "result")) throw std::runtime_error("viewctl did not load");
}

void ScriptClient::Reload() {
  m_process.Write("{\"call\":\"ClearViewData\"}\n");
  ReadAnswer();
  Load();
}

ScriptClient::Answer ScriptClient::Call(const std::string& function, const std::string& request) {
  Begin(function, request);
  return Finish();
}

void ScriptClient::Begin(const std::string& function, const std::string& request) {
  m_process.Write(ObjectText().Add("call", function).AddRaw("request", request).Text() + "\n");
}

ScriptClient::Answer ScriptClient::Finish() {
  const rapidjson::Document line = ReadAnswer();
  if (!line.HasMember("result")) throw std::runtime_error("no result in an answer");
  Answer answer{FlagOf(line, "result"), TextOf(line, "response"), {}};
  if (!ParseJson(answer.text, answer.response)) throw std::runtime_error("answered no JSON: " + answer.text);
  return answer;
}

void ScriptClient::Observe(int resourceType, const std::string& id) {
  const std::string what = ObjectText().Add("ResourceType", resourceType).Add("ID", id).Text();
  m_process.Write(ObjectText().AddRaw("observe", what).Text() + "\n");
  ReadAnswer();
}

Notice ScriptClient::NextNotice() {
  while (m_notices.empty()) {
    if (!TakeNotice(ReadLine())) throw std::runtime_error("an answer where a notice was awaited");
  }
  const Notice notice = m_notices.front();
  m_notices.pop_front();
  return notice;
}

rapidjson::Document ScriptClient::ReadAnswer() {
  for (;;) {
    rapidjson::Document answer = ReadLine();
    if (!TakeNotice(answer)) return answer;
  }
}

rapidjson::Document ScriptClient::ReadLine() {
  const std::string line = m_process.NextLine(40000);
  rapidjson::Document document;
  if (!ParseJson(line, document) || !document.IsObject()) throw std::runtime_error("viewctl answers '" + line + "'");
  return document;
}

bool ScriptClient::TakeNotice(const rapidjson::Document& line) {
  if (!line.HasMember("notice")) return false;
  const rapidjson::Value& notice = ObjectOf(line, "notice");
  m_notices.push_back(
      {TextOf(notice, "id"), NumberOf(notice, "enum_state"), TextOf(notice, "name"), TextOf(notice, "child_id")});
  return true;
}

}  // namespace test
