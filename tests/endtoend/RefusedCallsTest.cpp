// SPDX-License-Identifier: Apache-2.0
// What a host may send that cannot be done, asked of a real server through the built library. A refused call is told in
// one plain text and leaves everything as it was.

#include "ScriptClient.h"
#include "host/JsonText.h"

namespace test {
namespace {

// All the folders and lists in which the calls of these tests could leave something.
std::string Everything(ScriptClient& client) {
  std::string text;
  for (const std::string group : {"-1", "1", "8", "9"}) {
    text += client.Call("GetPlanGroups", R"({"ParentID":")" + group + "\"}").text + "\n";
    text += client.Call("GetPlansInGroup", R"({"GroupID":")" + group + "\"}").text + "\n";
  }
  for (const std::string view : {"101", "131", "140"}) {
    text += client.Call("GetPlanDetail", R"({"ID":")" + view + "\"}").text + "\n";
  }
  return text + client.Call("GetClientViewConfig", "{}").text;
}

TEST(RefusedCallsTest, WrongRequestsAreToldInOneTextAndChangeNothing) {
  const Site site;
  ScriptClient admin(site.Url(), "admin", "sample-admin");
  const char* badName = "The name is not valid";
  const char* noView = "The view does not exist";
  const char* noGroup = "The view group does not exist";
  const struct {
    std::string function, request, error;
  } refusals[] = {
      {"AddPlan", R"({"GroupID":"8","Name":""})", badName},
      {"AddPlan", R"({"GroupID":"8","Name":")" + std::string(10000, 'n') + "\"}", badName},
      {"AddPlan", R"({"GroupID":"77777","Name":"n"})", noGroup},
      {"AddPlan", R"({"GroupID":"9","Name":"in a folder of another user"})", noGroup},
      {"AddPlan", R"({"GroupID":"8","Name":"private in a public folder","Type":1})", "Not permitted"},
      {"UpdatePlan", R"({"ID":"132","GroupID":"-1","Name":"the cash office of another user"})", noView},
      {"UpdatePlan", R"({"ID":"101","GroupID":"1","Name":")" + std::string(257, 'n') + "\"}", badName},
      {"UpdatePlan", R"({"ID":"101","GroupID":"77777","Name":"n"})", noGroup},
      {"DeletePlan", R"({"ID":"132"})", noView},
      {"AddPlanGroup", R"({"Name":"","ParentID":"-1"})", badName},
      {"AddPlanGroup", R"({"Name":"n","ParentID":"77777"})", noGroup},
      {"AddPlanGroup", R"({"Name":"private in a public folder","ParentID":"1","Type":1})", "Not permitted"},
      {"UpdatePlanGroup", R"({"ID":"8","Name":"\u0007"})", badName},
      {"DeletePlanGroup", R"({"ID":"9","Type":1})", "The folder is not known here"},
      {"ViewShareUsers", R"({"view_id":"132","share_users":"3"})", noView},
      {"ViewShareUsers", R"({"view_id":"101","share_users":"3"})", "Not permitted"},
      {"ViewShareUsers", R"({"view_id":"140","share_users":"3,maria"})", "The server did not understand the request"},
      {"ViewShareUsers", R"({"view_id":"../Default","share_users":"3"})", "The address of the request is not valid"},
      {"GetPlansInGroup", R"({"GroupID":"77777"})", "KaBeAUoxlQkKBOqwV"},
      {"GetPlanDetail", R"({"ID":"77777"})", "NYyjnxIZwFAorxuFXv"},
  };
  const std::string before = Everything(admin);
  for (const auto& [function, request, error] : refusals) {
    const ScriptClient::Answer answer = admin.Call(function, request);
    EXPECT_FALSE(answer.result) << function << request;
    EXPECT_EQ(host::TextOf(answer.response, function == "ViewShareUsers" ? "error_info" : "ErrorInfo"), error)
        << function << request;
    if (function.starts_with("AddPlan")) {
      EXPECT_EQ(host::TextOf(answer.response, "ID"), "-1") << request;
    }
  }
  EXPECT_TRUE(Everything(admin) == before) << "a refused call changes nothing";
}

}  // namespace
}  // namespace test
