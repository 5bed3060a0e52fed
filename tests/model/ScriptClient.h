// SPDX-License-Identifier: Apache-2.0
// A whole client, run as `viewctl script` in a process of its own. One thread at a time; every wait is bounded and
// throws std::runtime_error when it is over.
#pragma once

#include <rapidjson/document.h>

#include <QProcess>
#include <deque>
#include <string>

struct Notice {
  std::string id;
  int state = 0;
  std::string name;
  std::string childId;
};

class ScriptClient {
 public:
  // Starts, logs in and loads.
  ScriptClient(const std::string& serverUrl, const std::string& user, const std::string& password);
  ~ScriptClient();

  struct Answer {
    bool result = false;
    std::string text;
    rapidjson::Document response;
  };
  Answer Call(const std::string& function, const std::string& request);
  // The same in two halves, so that several clients may be busy at once.
  void Begin(const std::string& function, const std::string& request);
  Answer Finish();
  // Ends it without a word to the server.
  void Kill();

  // Clears and loads again.
  void Reload();

  void Observe(int resourceType, const std::string& id);
  // Waits for a notice of that resource and name; those before it are dropped.
  void AwaitNotice(const std::string& id, const std::string& name);
  Notice NextNotice();

 private:
  void Load();
  // Writes one line and waits for its answer; notices on the way are kept.
  rapidjson::Document Exchange(const std::string& line);
  rapidjson::Document ReadAnswer();
  rapidjson::Document ReadLine();
  bool TakeNotice(const rapidjson::Document& line);

  QProcess m_process;
  std::deque<Notice> m_notices;
};

std::string Quoted(const std::string& text);
