// SPDX-License-Identifier: Apache-2.0
// A whole client, run as `viewctl script` in a process of its own. One thread at a time; every wait is bounded and
// throws std::runtime_error when it is over.
#pragma once

#include <deque>
#include <stdexcept>

#include "ViewctlRunner.h"
#include "host/JsonText.h"

namespace test {

struct Notice {
  std::string id;
  int state = 0;
  std::string name;
  std::string childId;
};

class ScriptClient {
 public:
  // Starts, logs in and loads.
  ScriptClient(const std::string& serverUrl, const std::string& user, const std::string& password,
               const QStringList& options = {})
      : m_process(QStringList{"--server", QString::fromStdString(serverUrl), "--user", QString::fromStdString(user)} +
                      options + QStringList{"script"},
                  password) {
    BeginLoad();
    FinishLoad();
  }
  ~ScriptClient() { m_process.Finish(); }

  struct Answer {
    bool result = false;
    std::string text;  // the response as it stands
    rapidjson::Document response;
  };
  // `request` is JSON.
  Answer Call(const std::string& function, const std::string& request) {
    Begin(function, request);
    return Finish();
  }
  // The same in two halves, so that several clients may be busy at once.
  void Begin(const std::string& function, const std::string& request) {
    m_process.Write(host::ObjectText().Add("call", function).AddRaw("request", request).Text() + "\n");
  }
  Answer Finish() {
    const rapidjson::Document line = ReadAnswer();
    if (!line.HasMember("result")) throw std::runtime_error("no result in an answer");
    Answer answer{host::FlagOf(line, "result"), host::TextOf(line, "response"), {}};
    if (!host::ParseJson(answer.text, answer.response)) throw std::runtime_error("answered no JSON: " + answer.text);
    return answer;
  }
  // Ends it without a word to the server.
  void Kill() { m_process.Kill(); }

  // Clears and loads again. It forgets what it observed.
  void Reload() {
    BeginReload();
    FinishReload();
  }
  void BeginReload() {
    m_process.Write("{\"call\":\"ClearViewData\"}\n");
    BeginLoad();
  }
  void FinishReload() {
    ReadAnswer();
    FinishLoad();
  }

  void Observe(int resourceType, const std::string& id) {
    BeginObserve(resourceType, id);
    FinishObserve();
  }
  void BeginObserve(int resourceType, const std::string& id) {
    const std::string what = host::ObjectText().Add("ResourceType", resourceType).Add("ID", id).Text();
    m_process.Write(host::ObjectText().AddRaw("observe", what).Text() + "\n");
  }
  void FinishObserve() { ReadAnswer(); }

  Notice NextNotice() {
    while (m_notices.empty()) {
      if (!TakeNotice(ReadLine())) throw std::runtime_error("an answer where a notice was awaited");
    }
    Notice notice = m_notices.front();
    m_notices.pop_front();
    return notice;
  }

 private:
  void BeginLoad() { m_process.Write("{\"load\":true}\n"); }
  void FinishLoad() {
    if (!host::FlagOf(ReadAnswer(), "result")) throw std::runtime_error("viewctl did not load");
  }
  // The next line that is no notice; notices on the way are kept.
  rapidjson::Document ReadAnswer() {
    for (;;) {
      rapidjson::Document answer = ReadLine();
      if (!TakeNotice(answer)) return answer;
    }
  }
  rapidjson::Document ReadLine() {
    const std::string line = m_process.NextLine(40000);
    rapidjson::Document document;
    if (!host::ParseJson(line, document) || !document.IsObject()) {
      throw std::runtime_error("viewctl answers '" + line + "'");
    }
    return document;
  }
  bool TakeNotice(const rapidjson::Document& line) {
    if (!line.HasMember("notice")) return false;
    const rapidjson::Value& notice = host::ObjectOf(line, "notice");
    m_notices.push_back({host::TextOf(notice, "id"), host::NumberOf(notice, "enum_state"), host::TextOf(notice, "name"),
                         host::TextOf(notice, "child_id")});
    return true;
  }

  Running m_process;
  std::deque<Notice> m_notices;
};

}  // namespace test
