// SPDX-License-Identifier: Apache-2.0
// What a host may send that cannot be done, and what is unusual but can: asked of a real server through the built
// library. A refused call is told in one plain text and leaves everything as it was.
#include <gtest/gtest.h>

#include <algorithm>

#include "ViewctlRunner.h"
#include "host/JsonText.h"

namespace test {
namespace {

std::string LongText(size_t length) {
  return std::string(length, 'n');
}

// A viewctl script of one user, loaded.
class Caller {
 public:
  Caller(const Site& site, const std::string& user) : m_host(site.As(user) + QStringList{"script"}, "sample-" + user) {
    m_host.Write("{\"load\":true}\n");
    EXPECT_EQ(m_host.NextLine(), R"({"load":true,"result":true})");
  }

  struct Answer {
    bool result;
    std::string text;  // the response as it stands
    rapidjson::Document response;
  };

  Answer Call(const std::string& function, const std::string& request) {
    m_host.Write(R"({"call":")" + function + R"(","request":)" + request + "}\n");
    rapidjson::Document line;
    host::ParseJson(m_host.NextLine(), line);
    Answer answer{host::FlagOf(line, "result"), host::TextOf(line, "response"), {}};
    host::ParseJson(answer.text, answer.response);
    return answer;
  }

  // All the folders and lists in which the calls of these tests could leave something.
  std::string Everything() {
    std::string text;
    for (const char* group : {"-1", "1", "8", "9"}) {
      text += Call("GetPlanGroups", R"({"ParentID":")" + std::string(group) + "\"}").text + "\n";
      text += Call("GetPlansInGroup", R"({"GroupID":")" + std::string(group) + "\"}").text + "\n";
    }
    for (const char* view : {"101", "131", "140"}) {
      text += Call("GetPlanDetail", R"({"ID":")" + std::string(view) + "\"}").text + "\n";
    }
    return text + Call("GetClientViewConfig", "{}").text;
  }

 private:
  Running m_host;
};

std::string ErrorIn(const rapidjson::Document& response) {
  return response.HasMember("ErrorInfo") ? host::TextOf(response, "ErrorInfo") : host::TextOf(response, "error_info");
}

struct Refusal {
  const char* function;
  std::string request;
  const char* error;
};

void ExpectRefused(Caller& caller, const std::vector<Refusal>& refusals) {
  const std::string before = caller.Everything();
  for (const Refusal& refusal : refusals) {
    const Caller::Answer answer = caller.Call(refusal.function, refusal.request);
    const std::string shown = std::string(refusal.function) + " " + refusal.request.substr(0, 120);
    EXPECT_FALSE(answer.result) << shown;
    EXPECT_EQ(ErrorIn(answer.response), refusal.error) << shown;
    if (std::string(refusal.function).rfind("AddPlan", 0) == 0) {
      EXPECT_EQ(host::TextOf(answer.response, "ID"), "-1") << shown;
    }
  }
  EXPECT_TRUE(caller.Everything() == before) << "a refused call changes nothing";
}

TEST(RefusedCallsTest, WrongRequestsAreToldInOneTextAndChangeNothing) {
  const Site site;
  Caller admin(site, "admin");
  const char* badName = "The name is not valid";
  const char* noView = "The view does not exist";
  const char* noGroup = "The view group does not exist";
  const char* notKnown = "The folder is not known here";
  const char* badAddress = "The address of the request is not valid";
  const char* notUnderstood = "The server did not understand the request";
  ExpectRefused(
      admin, {
                 {"AddPlan", R"({"GroupID":"8","Name":""})", badName},
                 {"AddPlan", R"({"GroupID":"8","Name":")" + LongText(10000) + "\"}", badName},
                 {"AddPlan", R"({"GroupID":"8","Name":"two\nlines"})", badName},
                 {"AddPlan", R"({"GroupID":"77777","Name":"n"})", noGroup},
                 {"AddPlan", R"({"GroupID":"9","Name":"in a folder of another user"})", noGroup},
                 {"AddPlan", R"({"GroupID":"-4","Name":"n"})", noGroup},
                 {"AddPlan", R"({"GroupID":"8","Name":"private in a public folder","Type":1})", "Not permitted"},
                 {"UpdatePlan", R"({"ID":"77777","GroupID":"8","Name":"n"})", noView},
                 {"UpdatePlan", R"({"ID":"132","GroupID":"-1","Name":"the cash office of another user"})", noView},
                 {"UpdatePlan", R"({"ID":"abc","GroupID":"8","Name":"n"})", noView},
                 {"UpdatePlan", R"({"ID":"-7","GroupID":"8","Name":"n"})", noView},
                 {"UpdatePlan", R"({"ID":"101","GroupID":"1","Name":")" + LongText(257) + "\"}", badName},
                 {"UpdatePlan", R"({"ID":"101","GroupID":"77777","Name":"n"})", noGroup},
                 {"DeletePlan", R"({"ID":"77777"})", noView},
                 {"DeletePlan", R"({"ID":"132"})", noView},
                 {"DeletePlan", R"({"ID":"18446744073709551615"})", noView},
                 {"AddPlanGroup", R"({"Name":"","ParentID":"-1"})", badName},
                 {"AddPlanGroup", R"({"Name":"n","ParentID":"77777"})", noGroup},
                 {"AddPlanGroup", R"({"Name":"private in a public folder","ParentID":"1","Type":1})", "Not permitted"},
                 {"UpdatePlanGroup", R"({"ID":"8","Name":"\u0007"})", badName},
                 {"DeletePlanGroup", R"({"ID":"77777","Type":0})", notKnown},
                 {"DeletePlanGroup", R"({"ID":"9","Type":1})", notKnown},
                 {"ViewShareUsers", R"({"view_id":"77777","share_users":"3"})", noView},
                 {"ViewShareUsers", R"({"view_id":"132","share_users":"3"})", noView},
                 {"ViewShareUsers", R"({"view_id":"101","share_users":"3"})", "Not permitted"},
                 {"ViewShareUsers", R"({"view_id":"140","share_users":""})", notUnderstood},
                 {"ViewShareUsers", R"({"view_id":"140","share_users":"3,maria"})", notUnderstood},
                 {"ViewShareUsers", R"({"view_id":"","share_users":"3"})", notUnderstood},
                 {"ViewShareUsers", R"({"view_id":"../Default","share_users":"3"})", badAddress},
                 {"ViewShareUsers", R"({"view_id":"140 HTTP/1.1","share_users":"3"})", badAddress},
                 {"ViewShareUsers", R"({"view_id":"140\r\nX-Smuggled: yes","share_users":"3"})", badAddress},
                 {"ViewShareUsers", R"({"view_id":"140/Share?x=","share_users":"3"})", badAddress},
                 {"ViewShareUsers", R"({"view_id":"140/Share#","share_users":"3"})", badAddress},
                 {"GetPlansInGroup", R"({"GroupID":"77777"})", "KaBeAUoxlQkKBOqwV"},
                 {"GetPlanDetail", R"({"ID":"77777"})", "NYyjnxIZwFAorxuFXv"},
             });
}

TEST(RefusedCallsTest, ASharedViewIsReadOnlyForThoseItWasSharedWith) {
  const Site site;
  Caller kenji(site, "kenji");
  ExpectRefused(kenji,
                {{"UpdatePlan", R"({"ID":"131","GroupID":"-1","Name":"n","is_share_view":true})", "Not permitted"},
                 {"DeletePlan", R"({"ID":"131"})", "Not permitted"},
                 {"ViewShareUsers", R"({"view_id":"131","share_users":"4"})", "Not permitted"}});
}

TEST(RefusedCallsTest, SharingTellsEachUserWhoCouldNotBeGivenTheView) {
  const Site site;
  Caller admin(site, "admin");
  const Caller::Answer answer = admin.Call("ViewShareUsers", R"({"view_id":"140","share_users":"3,3,77,1,77"})");
  EXPECT_FALSE(answer.result);
  EXPECT_EQ(answer.text,
            R"({"error_model":0,"error_code":0,"error_info":": The user does not exist\nadmin: Not permitted\n",)"
            R"("lst_user_data":[{"user_id":77,"user_name":"","error_model":100,"error_code":5},)"
            R"({"user_id":1,"user_name":"admin","error_model":100,"error_code":4}]})");
}

std::string Pages(int pages, int windows) {
  std::string text;
  for (int page = 0; page < pages; ++page) {
    text += std::string(page == 0 ? "" : ",") + R"({"windowDivision":)" + std::to_string(windows) + R"(,"PlanItems":[)";
    for (int window = 0; window < windows; ++window) {
      text += std::string(window == 0 ? "" : ",") + R"({"Sequence":)" + std::to_string(window) +
              R"(,"ResourceType":1001,"ResourceID":")" + std::to_string(2001 + (page + window) % 100) + "\"}";
    }
    text += "]}";
  }
  return text;
}

// "name:" and "resource/name|resource/name|\n", with one entry for each page that is answered. The client that added a
// view knows less of its windows than the others, whom the server tells; what they show is the same.
std::string ContentOf(const rapidjson::Document& detail) {
  std::string text = host::TextOf(detail, "Name") + ":";
  for (const auto& page : host::ListOf(detail, "PlanPages").GetArray()) {
    for (const auto& item : host::ListOf(page, "PlanItems").GetArray()) {
      text += host::TextOf(item, "ResourceID") + "/" + host::TextOf(item, "ResourceName") + "|";
    }
    text += "\n";
  }
  return text;
}

TEST(RefusedCallsTest, UnusualViewsReachTheOtherClientWhole) {
  const Site site;
  Caller admin(site, "admin");
  const struct {
    const char* story;
    std::string name, pages;
    int answeredPages, windows;
  } cases[] = {
      {"no pages", "n", "", 0, 0},
      {"300 pages", "n", Pages(300, 1), 300, 300},
      {"an empty page between two others", "n", Pages(1, 1) + "," + Pages(1, 0) + "," + Pages(1, 1), 2, 2},
      {"256 windows", "n", Pages(1, 256), 1, 256},
      {"a name in several scripts", "Überführung Κεντρική 夜間巡回 سمير 🚲 \\\"quoted\\\" 100% %s", "", 0, 0},
      {"the longest name", LongText(256), "", 0, 0},
  };
  for (const auto& c : cases) {
    const Caller::Answer added =
        admin.Call("AddPlan", R"({"GroupID":"8","Name":")" + c.name + R"(","PlanPages":[)" + c.pages + "]}");
    ASSERT_TRUE(added.result) << c.story << ' ' << added.text;
    const std::string request = R"({"ID":")" + host::TextOf(added.response, "ID") + R"(","NeedResourceName":true})";
    const std::string here = ContentOf(admin.Call("GetPlanDetail", request).response);
    EXPECT_EQ(std::count(here.begin(), here.end(), '\n'), c.answeredPages) << c.story;
    EXPECT_EQ(std::count(here.begin(), here.end(), '|'), c.windows) << c.story;
    EXPECT_EQ(ContentOf(Caller(site, "maria").Call("GetPlanDetail", request).response), here) << c.story;
  }
}

}  // namespace
}  // namespace test
