// SPDX-License-Identifier: Apache-2.0
#include "CoreFixture.h"

#include <numeric>
#include <utility>

#include "BizShared/NetCommManager.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewObserverManager/ViewResourceUpdateManager.h"

namespace core_test {

using namespace QorviViewPlugin;

std::ostream& operator<<(std::ostream& out, const SentRequest& request) {
  return out << request.method << ' ' << request.url << " body " << request.body << " request data "
             << request.requestData << " time-out " << request.timeout;
}

std::string WithoutPlace(const std::string& text) {
  const size_t place = text.rfind("[src/QorviViewPlugin/");
  const bool hasPlace = place != std::string::npos && text.ends_with(")]") &&
                        text.find_first_of("123456789", text.rfind('(')) != std::string::npos;
  return hasPlace ? text.substr(0, place) : text;
}

void LogRecorder::Write(int level, const char* module, const std::string& text) {
  if (onLine) onLine(text);
  std::lock_guard<std::mutex> lock(m_mutex);
  m_lines.push_back(std::to_string(level) + " " + module + " " + WithoutPlace(text));
}

Texts LogRecorder::Take() {
  std::lock_guard<std::mutex> lock(m_mutex);
  return std::exchange(m_lines, {});
}

LogLine InfoLine(const std::string& text) {
  return "3 ClientVFPluginInfo " + text;
}
LogLine ErrorLine(const std::string& text) {
  return "5 ClientVFPluginError " + text;
}

ScriptedServer::ScriptedServer() {
  auto transport = [this](NetLink::CClientRecvInfo& recv, const NetLink::CClientSendInfo& send) {
    if (onRequest) onRequest();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_requests.push_back({send.GetVal_Method(), send.GetVal_URL(), send.GetVal_send_data(), send.GetVal_Request_Data(),
                          send.GetVal_Timeout()});
    recv.SetVal_Receive_Data(m_body);
    recv.SetVal_Error_code(m_error);
    return m_arrives;
  };
  Vant::Base::CSingleton<BizShared::CNetCommManager>::Instance().SetTransport(transport);
}

ScriptedServer::~ScriptedServer() {
  Vant::Base::CSingleton<BizShared::CNetCommManager>::Instance().SetTransport(nullptr);
}

void ScriptedServer::Answer(const std::string& body) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_arrives = true;
  m_body = body;
  m_error = ErrorCode();
}

void ScriptedServer::BreakDown(const ErrorCode& error) {
  std::lock_guard<std::mutex> lock(m_mutex);
  m_arrives = false;
  m_body = Accepted();  // must not be looked at
  m_error = error;
}

std::vector<SentRequest> ScriptedServer::Take() {
  std::lock_guard<std::mutex> lock(m_mutex);
  return std::exchange(m_requests, {});
}

std::string Text(const ErrorCode& error) {
  return std::to_string(error.GetMainError()) + "/" + std::to_string(error.GetSubError()) + "/" +
         std::to_string(error.GetSubSystemErrorCode()) + "/" + error.GetCasadingErrorInfo();
}

std::string Accepted(const std::string& data) {
  return R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"CascadingErrorInfo":"","Data":)" + data + "}}";
}

std::string Refused(int module, int code, const std::string& cascading) {
  return R"({"ResponseStatus":{"ErrorModule":)" + std::to_string(module) + R"(,"ErrorCode":)" + std::to_string(code) +
         R"(,"CascadingErrorInfo":")" + cascading + R"("}})";
}

std::string ViewsDocument(const std::string& elements) {
  return Accepted(R"({"ViewList":{"View":[)" + elements + "]}}");
}

std::string GroupsDocument(const std::string& elements) {
  return Accepted(R"({"ViewGroupList":{"ViewGroup":[)" + elements + "]}}");
}

void NotingObserver::UpdateResourceInfos(const Param& param) {
  {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_notices.push_back(m_name + param.id + " state " + std::to_string(param.enum_state) + " child '" + param.child_id +
                        "' " + std::to_string(param.child_type) + " name '" + param.name + "' reserved " +
                        std::to_string(param.reserved) + " info '" + param.other_change_info + "'");
  }
  if (onNotice) onNotice(param);
}

Texts NotingObserver::Take() {
  std::lock_guard<std::mutex> lock(m_mutex);
  return std::exchange(m_notices, {});
}

std::string RegistrationText(int type, const std::string& id, bool isRegister) {
  return R"({"ResourceType":)" + std::to_string(type) + R"(,"ID":")" + id + R"(","IsRegister":)" +
         (isRegister ? "true}" : "false}");
}

void Observe(ResourceData::IResourceObserver& observer, int type, const std::string& id) {
  Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().RegisterResourceUpdate(
      &observer, RegistrationText(type, id, true));
}
void Unobserve(ResourceData::IResourceObserver& observer, int type, const std::string& id) {
  Vant::Base::CSingleton<CViewResourceUpdateManager>::Instance().RegisterResourceUpdate(
      &observer, RegistrationText(type, id, false));
}

std::string Call(Exchange exchange, const std::string& request) {
  std::string response = "old";
  const bool result = exchange(request, response);
  return (result ? "true " : "false ") + response;
}

ViewInfo View(unsigned int id, unsigned int groupId, const std::string& name) {
  ViewInfo view;
  view.idView = id;
  view.idViewGroup = groupId;
  view.strName = name;
  return view;
}

ViewGroupInfo Group(unsigned int id, unsigned int parentId, const std::string& name) {
  ViewGroupInfo group;
  group.idViewGroup = id;
  group.idParent = parentId;
  group.strName = name;
  return group;
}

namespace {

std::vector<std::shared_ptr<CView>> MemberViews(unsigned int groupId) {
  std::vector<std::shared_ptr<CView>> views;
  if (const auto group = Vant::Base::CSingleton<CViewGroupManager>::Instance().GetViewGroupByID(groupId)) {
    group->GetMemberViews(views);
  }
  return views;
}

}  // namespace

void CoreTest::ForgetEverything() {
  Downloads().SetViewsUpdateCallback(nullptr);
  Downloads().SetViewGroupsUpdateCallback(nullptr);
  Downloads().SetDownloadedData("", "", false);
  ClearViewData();
}

CoreTest::CoreTest() {
  ForgetEverything();
  Vant::Base::SetLogSink(log);
}

CoreTest::~CoreTest() {
  ForgetEverything();
  Vant::Base::SetLogSink(nullptr);
}

CViewGroupManager& CoreTest::Manager() {
  return Vant::Base::CSingleton<CViewGroupManager>::Instance();
}

ResourceStore::CViewGroupManager& CoreTest::Downloads() {
  return Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
}

void CoreTest::CacheView(const ViewInfo& view) {
  Manager().InsertViewToCache(view, true);
}
void CoreTest::CacheGroup(const ViewGroupInfo& group) {
  Manager().InsertViewGroupToCache(group);
}

std::string CoreTest::Cached() {
  Ids ids(51);
  std::iota(ids.begin(), ids.end(), 0);
  ids.push_back(kNoId);
  std::string text;
  for (const unsigned int id : ids) {
    const auto group = Manager().GetViewGroupByID(id);
    if (!group) continue;
    text += "group " + std::to_string(id) + " '" + GroupName(id) + "' in " +
            std::to_string(static_cast<int>(group->GetParentID()));
    const char* before = ": ";
    for (const auto& view : MemberViews(id)) {
      text += before + std::to_string(view->GetID()) + " '" + view->GetName() + "'";
      before = ", ";
    }
    text += "; ";
  }
  for (const unsigned int id : ids) {
    if (Manager().GetViewByID(id)) text += "view " + std::to_string(id) + " '" + ViewName(id) + "'; ";
  }
  return text;
}

Ids CoreTest::Members(unsigned int groupId) {
  Ids ids;
  for (const auto& view : MemberViews(groupId)) ids.push_back(view->GetID());
  return ids;
}

Texts CoreTest::MemberNames(unsigned int groupId) {
  Texts names;
  for (const auto& view : MemberViews(groupId)) names.push_back(view->GetName());
  return names;
}

std::string CoreTest::ViewName(unsigned int id) {
  const auto view = Manager().GetViewByID(id);
  return view ? view->GetName() : "(none)";
}

std::string CoreTest::GroupName(unsigned int id) {
  const auto group = Manager().GetViewGroupByID(id);
  return group ? group->Info()->strName : "(none)";
}

}  // namespace core_test
