// SPDX-License-Identifier: Apache-2.0
// What the tests of the plugin's core share: an empty cache, a recorded log, a scripted server and a noting observer.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "BizShared/NetCommManager.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"
#include "ResourceStore/Element.h"
#include "ResourceStore/OrlUserManager.h"
#include "ResourceStore/ResourceObserver.h"
#include "ResourceStore/ViewGroupManager.h"
#include "VantBase/Error.h"
#include "VantBase/Log.h"

namespace core_test {

using Vant::Base::Error::ErrorCode;

using Texts = std::vector<std::string>;
using Exchange = bool (*)(const std::string& request, std::string& response);

template <class Singleton>
Singleton& The() {
  return Vant::Base::CSingleton<Singleton>::Instance();
}

// Texts noted on any thread, to be taken once.
class Notes {
 public:
  void Add(std::string text) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_texts.push_back(std::move(text));
  }
  Texts Take() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_texts, {});
  }

 private:
  std::mutex m_mutex;  // guards m_texts
  Texts m_texts;
};

// Keeps the plugin's lines as "<level> <module> <text>", without their closing "[source file(line)]"; a line that has
// none keeps its whole text and thus equals no expected line.
class LogRecorder : public Vant::Base::ILogSink, public Notes {
 public:
  bool Wants(int) const override { return true; }
  void Write(int level, const char* module, const std::string& text) override {
    if (onFill && text.find("init view_messgae data") != std::string::npos) onFill();
    const size_t place = text.rfind("[src/QorviViewPlugin/");
    const bool hasPlace = place != std::string::npos && text.ends_with(")]") &&
                          text.find_first_of("123456789", text.rfind('(')) != std::string::npos;
    Add(std::to_string(level) + " " + module + " " + (hasPlace ? text.substr(0, place) : text));
  }
  // Called by a load of views between the text that it is handed and the fill; to be set before anything is logged.
  std::function<void()> onFill;
};

inline std::string InfoLine(const std::string& text) {
  return "3 ClientVFPluginInfo " + text;
}
inline std::string ErrorLine(const std::string& text) {
  return "5 ClientVFPluginError " + text;
}

// A reply or a downloaded document with this "Data", or with this status.
inline std::string Accepted(const std::string& data = "{}") {
  return R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"CascadingErrorInfo":"","Data":)" + data + "}}";
}
inline std::string Refused(int module, int code, const std::string& cascading = "") {
  return R"({"ResponseStatus":{"ErrorModule":)" + std::to_string(module) + R"(,"ErrorCode":)" + std::to_string(code) +
         R"(,"CascadingErrorInfo":")" + cascading + R"("}})";
}
// The same with a list of elements.
inline std::string ViewsDocument(const std::string& elements) {
  return Accepted(R"({"ViewList":{"View":[)" + elements + "]}}");
}
inline std::string GroupsDocument(const std::string& elements) {
  return Accepted(R"({"ViewGroupList":{"ViewGroup":[)" + elements + "]}}");
}

// Elements of such lists, up to the closing brace; the number of their change, where it is not 0.
inline std::string Number(QorviViewPlugin::ChangeNumber number) {
  return number == 0 ? "" : R"(,"ChangeNumber":")" + std::to_string(number) + '"';
}
inline std::string ViewElement(int id, const std::string& name, int group, QorviViewPlugin::ChangeNumber number) {
  return "{\"ID\":" + std::to_string(id) + R"(,"Name":")" + name + R"(","ViewGroupID":)" + std::to_string(group) +
         Number(number);
}
inline std::string GroupElement(int id, const std::string& name, int parent, QorviViewPlugin::ChangeNumber number) {
  return "{\"ID\":" + std::to_string(id) + R"(,"Name":")" + name + R"(","ParentViewGroupID":)" +
         std::to_string(parent) + Number(number);
}
// The list, complete up to that change.
inline std::string Numbered(QorviViewPlugin::ChangeNumber number, std::string list) {
  const std::string data = R"("Data":{)";
  return list.insert(list.find(data) + data.size(), R"("ChangeNumber":")" + std::to_string(number) + R"(",)");
}

// Stands in for the network: every request gets the same answer until another is set, at first none. Requests are noted
// as "<method> <url> <body>", those that ask for a list with " asks <request data> within <time-out>".
class ScriptedServer : public Notes {
 public:
  ScriptedServer() {
    The<BizShared::CNetCommManager>().SetTransport(
        [this](NetLink::CClientRecvInfo& recv, const NetLink::CClientSendInfo& send) {
          if (onRequest) onRequest();
          std::string text = send.GetVal_Method() + " " + send.GetVal_URL() + " " + send.GetVal_send_data();
          const std::string list = send.GetVal_Request_Data() + " within " + std::to_string(send.GetVal_Timeout());
          Add(text + (list == " within 0" ? "" : " asks " + list));
          recv.SetVal_Receive_Data(m_body);
          recv.SetVal_Error_code(m_error);
          return m_arrives;
        });
  }
  ~ScriptedServer() { The<BizShared::CNetCommManager>().SetTransport(nullptr); }

  void Answer(const std::string& body, bool arrives = true, const ErrorCode& error = ErrorCode()) {
    m_arrives = arrives;
    m_body = body;
    m_error = error;
  }
  // The body must not be looked at.
  void BreakDown(const ErrorCode& error) { Answer(Accepted(), false, error); }
  // Called with each request before it is answered.
  std::function<void()> onRequest;

 private:
  bool m_arrives = false;
  std::string m_body;
  ErrorCode m_error{1, 7, 0, ""};
};

// "main/sub/subsystem/text".
inline std::string Text(const ErrorCode& error) {
  return std::to_string(error.GetMainError()) + "/" + std::to_string(error.GetSubError()) + "/" +
         std::to_string(error.GetSubSystemErrorCode()) + "/" + error.GetCasadingErrorInfo();
}

class NotingObserver : public ResourceData::IResourceObserver, public Notes {
 public:
  explicit NotingObserver(std::string name = "") : m_name(std::move(name)) {}
  virtual ~NotingObserver() = default;
  void UpdateResourceInfos(const Param& param) override {
    Add(m_name + param.id + " state " + std::to_string(param.enum_state) + " child '" + param.child_id + "' " +
        std::to_string(param.child_type) + " name '" + param.name + "' reserved " + std::to_string(param.reserved) +
        " info '" + param.other_change_info + "'");
    if (onNotice) onNotice(param);
  }
  // Called after each notice has been noted, on the notifying thread.
  std::function<void(const Param&)> onNotice;

 private:
  std::string m_name;
};

constexpr int kView = 16000;
constexpr int kViewGroup = 16001;

inline std::string RegistrationText(int type, const std::string& id, bool isRegister) {
  return R"({"ResourceType":)" + std::to_string(type) + R"(,"ID":")" + id + R"(","IsRegister":)" +
         (isRegister ? "true}" : "false}");
}
inline void Observe(ResourceData::IResourceObserver& observer, int type, const std::string& id) {
  ViewRegisterResourceUpdate(&observer, RegistrationText(type, id, true));
}
inline void Unobserve(ResourceData::IResourceObserver& observer, int type, const std::string& id) {
  ViewRegisterResourceUpdate(&observer, RegistrationText(type, id, false));
}

// "true <response>" or "false <response>", the response text having been "old".
inline std::string Call(Exchange exchange, const std::string& request = "") {
  std::string response = "old";
  const bool result = exchange(request, response);
  return (result ? "true " : "false ") + response;
}

inline QorviViewPlugin::ViewInfo View(unsigned int id, unsigned int groupId = QorviViewPlugin::kNoId,
                                      const std::string& name = "", int type = 0) {
  QorviViewPlugin::ViewInfo view;
  view.idView = id;
  view.idViewGroup = groupId;
  view.strName = name;
  view.enumViewType = type;
  return view;
}

inline QorviViewPlugin::ViewGroupInfo Group(unsigned int id, unsigned int parentId = QorviViewPlugin::kNoId,
                                            const std::string& name = "", int type = 0) {
  return {id, QorviViewPlugin::kNoId, parentId, name, type};
}

class CoreTest : public testing::Test {
 protected:
  CoreTest() {
    ForgetEverything();
    Vant::Base::SetLogSink(log);
  }
  ~CoreTest() override {
    ForgetEverything();
    Vant::Base::SetLogSink(nullptr);
  }

  static QorviViewPlugin::CViewGroupManager& Manager() { return The<QorviViewPlugin::CViewGroupManager>(); }
  static ResourceStore::CViewGroupManager& Downloads() { return The<ResourceStore::CViewGroupManager>(); }
  static ResourceStore::COrlUserManager& Users() { return The<ResourceStore::COrlUserManager>(); }
  static ResourceStore::CElementManager& Elements() { return The<ResourceStore::CElementManager>(); }
  // A first load, where the download has ended.
  static bool LoadWhatIsDownloaded() {
    std::string groups;
    std::string views;
    return IsInitViewGroupFinish("", groups) && IsInitViewFinish("", views);
  }
  // Puts objects into the cache without a notice.
  static void CacheView(const QorviViewPlugin::ViewInfo& view) { EXPECT_TRUE(Manager().InsertViewToCache(view, true)); }
  static void CacheGroup(const QorviViewPlugin::ViewGroupInfo& group) { Manager().InsertViewGroupToCache(group); }

  // A group's members in order, "5'five' 6'six' "; nothing for a group that is not cached.
  static std::string Members(unsigned int groupId) {
    std::vector<std::shared_ptr<QorviViewPlugin::CView>> views;
    if (const auto group = Manager().GetViewGroupByID(groupId)) group->GetMemberViews(views);
    std::string text;
    for (const auto& view : views) text += std::to_string(view->GetID()) + "'" + view->GetName() + "' ";
    return text;
  }
  // Name of the cached view or group, "(none)" without one.
  static std::string ViewName(unsigned int id) {
    const auto view = Manager().GetViewByID(id);
    return view ? view->GetName() : "(none)";
  }
  static std::string GroupName(unsigned int id) {
    const auto group = Manager().GetViewGroupByID(id);
    return group ? group->Info()->strName : "(none)";
  }
  // What is cached under ids up to 50: "group 1'one' in -1: 5'five' ; view 5'five'; ".
  static std::string Cached() {
    std::string text;
    for (unsigned int id = 0; id <= 50; ++id) {
      const auto group = Manager().GetViewGroupByID(id);
      if (!group) continue;
      text += "group " + std::to_string(id) + "'" + GroupName(id) + "' in " +
              std::to_string(static_cast<int>(group->GetParentID())) + ": " + Members(id) + "; ";
    }
    for (unsigned int id = 0; id <= 50; ++id) {
      if (Manager().GetViewByID(id)) text += "view " + std::to_string(id) + "'" + ViewName(id) + "'; ";
    }
    return text;
  }

  static void ForgetEverything() {
    Downloads().SetViewsUpdateCallback(nullptr);
    Downloads().SetViewGroupsUpdateCallback(nullptr);
    Downloads().SetDownloadedData("", "", false);
    Users().ResetDownload();
    Elements().Clear();
    ClearViewData();
  }

  std::shared_ptr<LogRecorder> log = std::make_shared<LogRecorder>();
  ScriptedServer server;
};

}  // namespace core_test
