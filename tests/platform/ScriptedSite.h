// SPDX-License-Identifier: Apache-2.0
// A scripted server with the lists and the change stream of a management server.
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <memory>

#include "ScriptedServer.h"

namespace testing_support {

// Number 0: the list does not say how far it goes.
inline std::string ListOf(const std::string& kind, const std::string& elements, int number = 0) {
  const std::string said = number == 0 ? "" : R"("ChangeNumber":")" + std::to_string(number) + R"(",)";
  return Envelope("{" + said + '"' + kind + R"(List":{")" + kind + R"(":[)" + elements + "]}}");
}
inline std::string Views(const std::string& elements, int number = 0) {
  return ListOf("View", elements, number);
}
inline std::string Groups(const std::string& elements, int number = 0) {
  return ListOf("ViewGroup", elements, number);
}
inline constexpr const char* kAdminsSession = R"({"Session":{"Token":"t","UserID":1,"UserName":"admin"}})";
inline std::string Event(int number, const std::string& type, const std::string& data) {
  return "id: " + std::to_string(number) + "\nevent: " + type + "\ndata: " + data + "\n\n";
}

// What a request is answered with.
using Answer = std::function<void(const Request&, Connection&)>;
inline Answer Replying(int status, const std::string& body = {}, const std::string& headers = {}) {
  return [=](const Request&, Connection& connection) { connection.Reply(status, body, headers); };
}
inline Answer ReplyingData(const std::string& data) {
  return Replying(200, Envelope(data));
}
inline Answer Refusing(int status, int module, int code) {
  return [=](const Request&, Connection& connection) { connection.ReplyError(status, module, code); };
}
inline Answer Stalling() {
  return [](const Request&, Connection& connection) { connection.Stall(); };
}

// Whoever logs in is its admin.
class ScriptedSite {
 public:
  ScriptedSite() : m_server([this](const Request& request, Connection& connection) { Serve(request, connection); }) {}
  ~ScriptedSite() {
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      m_allEnd = true;
      m_changed.notify_all();
    }
    m_server.Stop();
  }

  std::string Url() const { return m_server.Url(); }
  const ScriptedServer& Server() const { return m_server; }

  // The lists and the number of the last change that each contains.
  void SetGroups(const std::string& elements, int number) { SetList("V0/ViewGroups", Groups(elements), number); }
  void SetViews(const std::string& elements, int number) { SetList("V0/Views", Views(elements), number); }
  // The same for both, which say their number.
  void SetNumbered(const std::string& groups, const std::string& views, int number) {
    SetList("V0/ViewGroups", Groups(groups, number), number);
    SetList("V0/Views", Views(views, number), number);
  }

  // The next requests for `name` ("V0/Views", "V0/Changes", ...) are answered by these, one each, instead.
  void AnswerOnce(const std::string& name, Answer answer) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_answers.emplace(name, std::move(answer));
  }

  // Sends text on the change stream that is open; waits for one.
  void Stream(const std::string& text) {
    ASSERT_TRUE(Eventually([&] { return Streams() > 0; })) << "no change stream was opened";
    std::lock_guard<std::mutex> lock(m_mutex);
    m_text += text;
    m_changed.notify_all();
  }
  // Ends the stream that is open once what was streamed before has been sent.
  void EndStream() {
    ASSERT_TRUE(Eventually([&] { return Streams() > 0; })) << "no change stream was opened";
    std::unique_lock<std::mutex> lock(m_mutex);
    m_end = true;
    m_changed.notify_all();
    ASSERT_TRUE(m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return !m_end; }));
  }
  // Names the history that its lists and streams are of from now on; none before.
  void SetHistory(const std::string& name) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_history = "Resource-History: " + name + "\r\n";
  }
  // Ends the stream, of which the server then has forgotten too much, and waits for the next.
  void LoseChanges() {
    const int opened = StreamsOpened();
    AnswerOnce("V0/Changes", Refusing(410, 100, 6));
    EndStream();
    ASSERT_TRUE(Eventually([&] { return StreamsOpened() > opened; }));
  }
  // Streams that are open; one that its client has left is ended by the next.
  int Streams() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_streams;
  }
  // Streams that were opened so far.
  int StreamsOpened() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_newestStream;
  }

  int Count(const std::string& name) const { return static_cast<int>(Targets(name).size()); }
  // The targets of the requests for `name`, queries included.
  std::vector<std::string> Targets(const std::string& name) const {
    std::vector<std::string> targets;
    for (const Request& request : m_server.Requests()) {
      if (Name(request) == name) targets.push_back(request.target);
    }
    return targets;
  }

 private:
  struct List {
    std::string text;
    int number = 0;
  };

  static std::string Name(const Request& request) {
    static constexpr size_t kPrefix = std::string_view("/NXAPI/Vantorel/Platform/").size();
    return request.target.substr(0, request.target.find('?')).substr(std::min(kPrefix, request.target.size()));
  }

  void SetList(const std::string& name, const std::string& text, int number) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_lists[name] = {text, number};
  }

  void Serve(const Request& request, Connection& connection) {
    const std::string name = Name(request);
    Answer answer;
    List list;
    std::string history;
    {
      std::lock_guard<std::mutex> lock(m_mutex);
      if (auto found = m_answers.find(name); found != m_answers.end()) answer = m_answers.extract(found).mapped();
      list = m_lists[name];
      history = m_history;
    }
    if (answer) {
      answer(request, connection);
    } else if (name == "V0/Changes") {
      ServeStream(connection, history);
    } else {
      connection.Reply(200, list.text, "Resource-Sequence: " + std::to_string(list.number) + "\r\n" + history);
    }
  }

  void ServeStream(Connection& connection, const std::string& history) {
    connection.Close();
    connection.Send("HTTP/1.1 200 OK\r\nContent-Type: text/event-stream\r\n" + history + "\r\n");
    std::unique_lock<std::mutex> lock(m_mutex);
    ++m_streams;
    const int self = ++m_newestStream;
    m_changed.notify_all();
    while (true) {
      m_changed.wait(lock, [&] { return !m_text.empty() || m_end || m_allEnd || self != m_newestStream; });
      if (self != m_newestStream) {
        --m_streams;
        return;
      }
      std::string text = std::move(m_text);
      m_text.clear();
      lock.unlock();
      bool sent = connection.Send(text);
      lock.lock();
      if (!sent || m_end || m_allEnd) break;
    }
    --m_streams;
    m_end = false;
    m_changed.notify_all();
  }

  mutable std::mutex m_mutex;  // guards all but the server
  std::condition_variable m_changed;
  std::map<std::string, List> m_lists{{"V0/Sessions", {Envelope(kAdminsSession), 0}},
                                      {"V0/Areas", {ListOf("Area", R"({"ID":3,"Name":"Yard"})"), 0}},
                                      {"V0/ViewGroups", {Groups(R"({"ID":1,"Name":"g"})"), 10}},
                                      {"V0/Views", {Views(R"({"ID":5,"Name":"v"})"), 12}}};
  std::multimap<std::string, Answer> m_answers;
  std::string m_text, m_history;
  int m_streams = 0;
  int m_newestStream = 0;
  bool m_end = false;
  bool m_allEnd = false;
  ScriptedServer m_server;
};

}  // namespace testing_support
