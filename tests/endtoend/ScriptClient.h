// SPDX-License-Identifier: Apache-2.0
// A whole client, run as `viewctl script` in a process of its own. One thread at a time; every wait is bounded and
// throws std::runtime_error when it is over.
#pragma once

#include <rapidjson/document.h>

#include <deque>
#include <string>

#include "ViewctlRunner.h"

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
  ScriptClient(const std::string& serverUrl, const std::string& user, const std::string& password);
  ~ScriptClient() { m_process.Finish(); }

  struct Answer {
    bool result = false;
    std::string text;  // the response as it stands
    rapidjson::Document response;
  };
  // `request` is JSON.
  Answer Call(const std::string& function, const std::string& request);
  // The same in two halves, so that several clients may be busy at once.
  void Begin(const std::string& function, const std::string& request);
  Answer Finish();
  // Ends it without a word to the server.
  void Kill() { m_process.Kill(); }

  // Clears and loads again.
  void Reload();

  void Observe(int resourceType, const std::string& id);
  Notice NextNotice();

 private:
  void Load();
  // The next line that is no notice; notices on the way are kept.
  rapidjson::Document ReadAnswer();
  rapidjson::Document ReadLine();
  bool TakeNotice(const rapidjson::Document& line);

  Running m_process;
  std::deque<Notice> m_notices;
};

}  // namespace test
