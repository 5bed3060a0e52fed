// SPDX-License-Identifier: Apache-2.0
// Ids are texts that hosts pass on. Whatever stands in one, what is sent is one well-formed request to the place that
// the call is about, or nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "../../platform/ScriptedServer.h"
#include "BizShared/NetCommManager.h"
#include "QorviViewPlugin/QorviViewPlugin.h"

namespace {

using testing_support::Connection;
using testing_support::Request;
using testing_support::ScriptedServer;

const std::string kPlatform = "/NXAPI/Vantorel/Platform/";

bool IsPlain(const std::string& target) {
  if (target.rfind(kPlatform, 0) != 0 || ("/" + target + "/").find("/../") != std::string::npos) return false;
  return std::none_of(target.begin(), target.end(),
                      [](unsigned char c) { return c <= 0x20 || c == 0x7f || c == '?' || c == '#' || c == '\\'; });
}

TEST(IdTexts, SmuggleNothingIntoAddressOrHeader) {
  ScriptedServer server([](const Request&, Connection& connection) { connection.ReplyData("{}"); });
  BizShared::CNetCommManager::Instance().SetServer(server.Url());
  BizShared::CNetCommManager::Instance().SetToken("token");
  // As they stand in JSON.
  std::vector<std::string> ids{std::string(100000, '7')};
  for (const char* id : {"7", "", " ", "7?x=1", "7#x", "..", "../..", R"(..\\..\\x)", "7;x", "\x7f", "\xff\xfe", "-1",
                         "0x7", "7,8", R"(\"}},{\")", "\xe2\x80\xa8"}) {
    ids.push_back(id);
  }
  for (const char* id : {R"(7\u0000X)", R"(7\r\nX-Evil: yes)", R"(7\nX-Evil: yes)", "7%0d%0aX-Evil:yes",
                         "7/../../../V0/Users", "../../V0/Sessions/Current#", "%2e%2e/%2e%2e", "@evil.example/",
                         "//evil.example/", "99999999999999999999", R"(7 HTTP/1.1\r\nX-Evil: yes\r\n\r\nGET /evil)"}) {
    ids.push_back(id);
  }
  const struct {
    bool (*call)(const std::string&, std::string&);
    std::string request;       // up to the id
    std::string method, path;  // where what is sent may go: the path's beginning
  } calls[] = {
      {&ViewShareUsers, R"({"share_users":"2","view_id":)", "POST", "V1/View/"},
      {&ViewShareUsers, R"({"view_id":"7","share_users":)", "POST", "V1/View/7/Share"},
      {&UpdatePlan, R"({"Name":"n","GroupID":"7","ID":)", "PUT", "V0/Views/"},
      {&UpdatePlan, R"({"Name":"n","ID":"7","GroupID":)", "PUT", "V0/Views/7"},
      {&AddPlan, R"({"Name":"n","GroupID":)", "POST", "V0/Views"},
      {&DeletePlan, R"({"ID":)", "DELETE", "V0/Views/"},
      {&AddPlanGroup, R"({"Name":"n","ParentID":)", "POST", "V0/ViewGroups"},
      {&UpdatePlanGroup, R"({"Name":"n","ID":)", "PUT", "V0/ViewGroups/"},
      {&DeletePlanGroup, R"({"ID":)", "DELETE", "V0/ViewGroups/"},
  };
  const std::set<std::string> headers{"host", "accept", "authorization", "content-type", "content-length"};
  size_t sentInAll = 0;
  for (const auto& c : calls) {
    for (const std::string& id : ids) {
      const size_t before = server.Requests().size();
      std::string response;
      c.call(c.request + "\"" + id + "\"}", response);
      const auto requests = server.Requests();
      ASSERT_LE(requests.size() - before, 1u) << c.request << id;
      for (size_t i = before; i < requests.size(); ++i, ++sentInAll) {
        const Request& request = requests[i];
        EXPECT_EQ(request.method, c.method);
        EXPECT_TRUE(IsPlain(request.target)) << request.target;
        EXPECT_EQ(request.target.rfind(kPlatform + c.path, 0), 0u) << request.target;
        for (const auto& [name, value] : request.headers) EXPECT_EQ(headers.count(name), 1u) << name << ": " << value;
        EXPECT_EQ(request.headers.at("authorization"), "Bearer token");
      }
    }
  }
  EXPECT_GT(sentInAll, ids.size()) << "most calls read a number and do send";
  BizShared::CNetCommManager::Instance().SetToken({});
  BizShared::CNetCommManager::Instance().SetServer({});
}

}  // namespace
