// SPDX-License-Identifier: Apache-2.0
// What the tests of the plugin's core share: an empty cache, a recorded log, a scripted server and a noting observer.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "ResourceStore/ResourceObserver.h"
#include "ResourceStore/ViewGroupManager.h"
#include "VantBase/Error.h"
#include "VantBase/Log.h"

namespace core_test {

using Vant::Base::Error::ErrorCode;

using Ids = std::vector<unsigned int>;
using Texts = std::vector<std::string>;
using LogLine = std::string;  // "<level> <module> <text>"

// A line of the plugin without its closing "[source file(line)]"; a line that has none keeps its whole text and thus
// equals no expected line.
std::string WithoutPlace(const std::string& text);

// Keeps the plugin's lines, without their places.
class LogRecorder : public Vant::Base::ILogSink {
 public:
  bool Wants(int) const override { return true; }
  void Write(int level, const char* module, const std::string& text) override;
  Texts Take();
  // Called with each line, on the thread that logs; to be set before anything is logged.
  std::function<void(const std::string& text)> onLine;

 private:
  std::mutex m_mutex;  // guards m_lines
  Texts m_lines;
};

LogLine InfoLine(const std::string& text);
LogLine ErrorLine(const std::string& text);

struct SentRequest {
  std::string method;
  std::string url;
  std::string body;
  std::string requestData;
  unsigned long timeout;
  bool operator==(const SentRequest&) const = default;
};
std::ostream& operator<<(std::ostream& out, const SentRequest& request);

// Stands in for the network: every request gets the same answer until another is set, at first none.
class ScriptedServer {
 public:
  ScriptedServer();
  ~ScriptedServer();
  void Answer(const std::string& body);
  void BreakDown(const ErrorCode& error);
  // Called with each request before it is answered.
  std::function<void()> onRequest;
  std::vector<SentRequest> Take();

 private:
  std::mutex m_mutex;  // guards what follows
  bool m_arrives = false;
  std::string m_body;
  ErrorCode m_error{1, 7, 0, ""};
  std::vector<SentRequest> m_requests;
};

// "main/sub/subsystem/text".
std::string Text(const ErrorCode& error);

// A reply or a downloaded document with this "Data", or with this status.
std::string Accepted(const std::string& data = "{}");
std::string Refused(int module, int code, const std::string& cascading = "");
// The same with a list of elements.
std::string ViewsDocument(const std::string& elements);
std::string GroupsDocument(const std::string& elements);

// Notes every notice as "id state type child_id/child_type name change_info".
class NotingObserver : public ResourceData::IResourceObserver {
 public:
  explicit NotingObserver(std::string name = "") : m_name(std::move(name)) {}
  virtual ~NotingObserver() = default;
  void UpdateResourceInfos(const Param& param) override;
  Texts Take();
  // Called after each notice has been noted, on the notifying thread.
  std::function<void(const Param&)> onNotice;

 private:
  std::string m_name;
  std::mutex m_mutex;  // guards m_notices
  Texts m_notices;
};

constexpr int kView = 16000;
constexpr int kViewGroup = 16001;
std::string RegistrationText(int type, const std::string& id, bool isRegister);
void Observe(ResourceData::IResourceObserver& observer, int type, const std::string& id);
void Unobserve(ResourceData::IResourceObserver& observer, int type, const std::string& id);

using Exchange = bool (*)(const std::string& request, std::string& response);
// "true <response>" or "false <response>", the response text having been "old".
std::string Call(Exchange exchange, const std::string& request = "");

QorviViewPlugin::ViewInfo View(unsigned int id, unsigned int groupId = QorviViewPlugin::kNoId,
                               const std::string& name = "");
QorviViewPlugin::ViewGroupInfo Group(unsigned int id, unsigned int parentId = QorviViewPlugin::kNoId,
                                     const std::string& name = "");

class CoreTest : public testing::Test {
 protected:
  CoreTest();
  ~CoreTest() override;

  static QorviViewPlugin::CViewGroupManager& Manager();
  static ResourceStore::CViewGroupManager& Downloads();
  // Puts objects into the cache without a notice.
  void CacheView(const QorviViewPlugin::ViewInfo& view);
  void CacheGroup(const QorviViewPlugin::ViewGroupInfo& group);
  // What is cached under ids up to 50 and all ones: "group 1 'name' in -1: 5 'member'; view 5 'name'; ".
  static std::string Cached();
  // Ids of a group's members in order; {} for a group that is not cached.
  static Ids Members(unsigned int groupId);
  // Names of the same.
  static Texts MemberNames(unsigned int groupId);
  // Name of the cached view or group, "(none)" without one.
  static std::string ViewName(unsigned int id);
  static std::string GroupName(unsigned int id);

  static void ForgetEverything();

  std::shared_ptr<LogRecorder> log = std::make_shared<LogRecorder>();
  ScriptedServer server;
};

}  // namespace core_test
