// SPDX-License-Identifier: Apache-2.0
#include "host/demo/Tour.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>
#include <cstdio>

#include "base/system/StopSignal.h"
#include "drawing/Page.h"
#include "host/Drawer.h"
#include "host/PageText.h"
#include "host/Terminal.h"
#include "host/TreeText.h"
#include "host/ViewText.h"

namespace host {
namespace {

// Folders, views and users of the sample site.
constexpr const char* kStation = "1";
constexpr const char* kPlatforms = "2";
constexpr const char* kMagnified = "110";
constexpr const char* kCashOffice = "132";
constexpr const char* kKenji = "3";
constexpr const char* kNobody = "99";
constexpr const char* kTopLevel = "-1";
constexpr const char* kTopLevelInNotices = "4294967295";

constexpr int kViewType = ResourceData::ResourceTypeView;
constexpr int kGroupType = ResourceData::ResourceTypeViewGroup;

constexpr std::chrono::milliseconds kNoticeLimit{5000};

// Two cameras side by side.
constexpr const char* kPages =
    R"([{"windowDivision":2,"PlanItems":[{"Sequence":0,"ResourceType":1001,"ResourceID":"2001","SiteID":"1"},)"
    R"({"Sequence":1,"ResourceType":1001,"ResourceID":"2003","SiteID":"1"}]}])";
// A third one below them, opened at its second preset.
constexpr const char* kMorePages =
    R"([{"windowDivision":3,"PlanItems":[{"Sequence":0,"ResourceType":1001,"ResourceID":"2001","SiteID":"1"},)"
    R"({"Sequence":1,"ResourceType":1001,"ResourceID":"2003","SiteID":"1"},)"
    R"({"Sequence":2,"ResourceType":1001,"ResourceID":"2009","SiteID":"1","PresetId":2,"PresetName":"Clock face"}]}])";

void Tell(const std::string& text) {
  std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

void Chapter(const std::string& title) {
  Tell("\n== " + title + "\n");
}

std::string NameOf(const std::string& id) {
  return id == kTopLevelInNotices ? "the top level" : "group " + Printable(id);
}

std::string InWords(const Notice& notice) {
  const std::string child = (notice.child_type == kViewType ? "view " : "group ") + Printable(notice.child_id);
  switch (notice.enum_state) {
    case kRenamed:
      return NameOf(notice.id) + " is now called \"" + Printable(notice.name) + "\"";
    case kChildAdded:
      return NameOf(notice.id) + " has gained " + child;
    case kChildRemoved:
      return NameOf(notice.id) + " has lost " + child;
    case kChanged:
      return "view " + Printable(notice.id) + " has changed";
    default:
      return "state " + std::to_string(notice.enum_state) + " of " + Printable(notice.id);
  }
}

Notice Event(const std::string& id, NoticeState state, const std::string& childId = {}) {
  Notice notice(id, state);
  notice.child_id = childId;
  return notice;
}

std::string PlanRequest(const std::string& id, const char* group, const char* name, const char* pages) {
  ObjectText request;
  request.Add("GroupID", group);
  if (!id.empty()) request.Add("ID", id);
  return request.Add("Name", name).Add("Type", kPublic).Add("RoundTime", 30).AddRaw("PlanPages", pages).Text();
}

}  // namespace

void Tour::Run() {
  Tell("A transport hub keeps its camera walls as views: pages of windows, each showing a camera, a door, a map.");
  Tell("Its server runs here for a moment, and two people log in: maria in this process, kenji in another one.");
  LookAround();
  AddAndChange();
  MoveView();
  Share();
  OpenAtStart();
  DeleteView();
  FolderAndContent();
  const std::string isLeft = DrawOne() ? ", the picture stays." : ".";
  Tell("\nThat was the tour; the server and its folder go away with it" + isLeft);
}

void Tour::LookAround() {
  Chapter("What maria sees");
  const rapidjson::Document user = Do(m_maria, "GetCurrentUser", "");
  Require(TextOf(user, "user_name") == m_maria.Name(), "maria is logged in");
  std::printf("%s", DescribeTree(ReadViewTree(m_plugin)).c_str());

  Chapter("One of these views in full");
  const rapidjson::Document detail = Detail(m_maria, kMagnified);
  const rapidjson::Value& pages = ListOf(detail, "PlanPages");
  Require(pages.Size() == 1, "the view has one page");
  Require(!TextOf(ListOf(pages[0], "PlanItems")[0], "ResourceName").empty(), "its cameras have names");
  std::printf("%s", DescribeView(detail, {"Public views", "Station", "Platforms", "Platforms 1–2"}).c_str());

  const rapidjson::Document config = Do(m_maria, "GetPlanConfig", "");
  Require(FlagOf(config, "EnableSearch") && !FlagOf(config, "SupportTimedPlay"), "the library says what it can do");
  const rapidjson::Document users = Do(m_maria, "GetAllUserInfo", "");
  std::string online;
  for (const auto& other : ListOf(users, "user_detail_list").GetArray()) {
    if (!FlagOf(other, "user_online")) continue;
    online += (online.empty() ? "" : " and ") + Printable(TextOf(other, "user_name"));
  }
  Require(online.find(m_kenji.Name()) != std::string::npos, "kenji is online");
  Tell("\nOf " + std::to_string(ListOf(users, "user_detail_list").Size()) + " users, " + online + " are online.");
}

void Tour::AddAndChange() {
  Chapter("A new view, and a second pair of eyes");
  m_kenji.Observe(kGroupType, kStation);
  const rapidjson::Document added = Do(m_maria, "AddPlan", PlanRequest({}, kStation, "Match day", kPages));
  m_view = TextOf(added, "ID");
  Tell("maria adds \"Match day\" to Station: two cameras of the forecourt, view " + m_view + ".");
  Hears(m_kenji, Event(kStation, kChildAdded, m_view));

  m_kenji.Observe(kViewType, m_view);
  m_maria.Observe(kViewType, m_view);
  Do(m_kenji, "UpdatePlan", PlanRequest(m_view, kStation, "Match day, evening", kMorePages));
  Tell("kenji adds the clock as a third window and renames it \"Match day, evening\".");
  Hears(m_maria, Event(m_view, kChanged));
  const rapidjson::Document seen = Detail(m_maria, m_view);
  Require(TextOf(seen, "Name") == "Match day, evening", "maria sees the new name");
  const rapidjson::Value& windows = ListOf(ListOf(seen, "PlanPages")[0], "PlanItems");
  Require(windows.Size() == 3, "maria sees three windows");
  Tell("maria looks again: \"" + TextOf(seen, "Name") + "\", the third window is a " + DescribeResource(windows[2]) +
       ".");
}

void Tour::MoveView() {
  Chapter("Into another folder");
  Do(m_maria, "UpdatePlan", PlanRequest(m_view, kPlatforms, "Match day, evening", kMorePages));
  Tell("maria moves it from Station to Platforms.");
  Hears(m_kenji, Event(m_view, kChanged));
  Require(TextOf(Detail(m_kenji, m_view), "GroupID") == kPlatforms, "kenji finds it in Platforms");
  Tell("kenji finds it in group 2, Platforms.");
}

void Tour::Share() {
  Chapter("Sharing");
  m_kenji.Observe(kGroupType, kTopLevel);
  rapidjson::Document answer;
  const std::string request =
      ObjectText().Add("share_users", std::string(kKenji) + "," + kNobody).Add("view_id", kCashOffice).Text();
  const bool done = m_maria.Call("ViewShareUsers", request, answer);
  Tell("maria shares her \"Cash office\" with kenji and, by mistake, with a user 99.");
  const rapidjson::Value& failed = ListOf(answer, "lst_user_data");
  Require(!done && failed.Size() == 1 && NumberOf(failed[0], "user_id") == 99, "sharing fails for user 99 alone");
  Tell("  the answer: no for user 99 (error " + std::to_string(NumberOf(failed[0], "error_model")) + "/" +
       std::to_string(NumberOf(failed[0], "error_code")) + "), yes for the rest.");
  Hears(m_kenji, Event(kTopLevelInNotices, kChildAdded, kCashOffice));
  const rapidjson::Document seen = Detail(m_kenji, kCashOffice);
  Require(FlagOf(seen, "is_share_view") && TextOf(seen, "share_user_name") == m_maria.Name(),
          "kenji has it from maria");
  Tell("kenji reads: \"" + Printable(TextOf(seen, "Name")) + "\", shared by " +
       Printable(TextOf(seen, "share_user_name")) + ".");
}

void Tour::OpenAtStart() {
  Chapter("What opens first");
  const auto defaultView = [this] {
    const rapidjson::Document answer = Do(m_kenji, "GetClientViewConfig", "");
    return TextOf(ObjectOf(ObjectOf(answer, "ViewData"), "ViewDefaultConfig"), "view_id");
  };
  Require(defaultView() == "-3", "kenji has no default view yet");
  Do(m_kenji, "SetClientViewConfig", ObjectText().Add("view_type", kPublic).Add("view_id", m_view).Text());
  Require(defaultView() == m_view, "kenji's default view is kept");
  Tell("kenji, who had no default view, makes view " + m_view + " the one his client opens at start.");
}

void Tour::DeleteView() {
  Chapter("Gone");
  m_kenji.Observe(kGroupType, kPlatforms);
  Do(m_maria, "DeletePlan", ObjectText().Add("ID", m_view).Text());
  Tell("maria deletes view " + m_view + ".");
  Hears(m_kenji, Event(kPlatforms, kChildRemoved, m_view));
  rapidjson::Document answer;
  const bool found = m_kenji.Call("GetPlanDetail", ObjectText().Add("ID", m_view).Text(), answer);
  Require(!found, "kenji no longer finds the view");
}

void Tour::FolderAndContent() {
  Chapter("A folder and what is in it");
  const rapidjson::Document made =
      Do(m_maria, "AddPlanGroup", ObjectText().Add("Name", "Festival").Add("ParentID", kStation).Add("Type", 0).Text());
  const std::string folder = TextOf(made, "ID");
  Tell("maria makes a folder \"Festival\" in Station, group " + folder + ".");
  Hears(m_kenji, Event(kStation, kChildAdded, folder));

  m_kenji.Observe(kGroupType, folder);
  const rapidjson::Document added = Do(m_maria, "AddPlan", PlanRequest({}, folder.c_str(), "Main stage", kPages));
  const std::string view = TextOf(added, "ID");
  Tell("maria puts a view \"Main stage\" into it, view " + view + ".");
  Hears(m_kenji, Event(folder, kChildAdded, view));

  Do(m_maria, "UpdatePlanGroup", ObjectText().Add("Name", "Summer festival").Add("ID", folder).Text());
  Tell("maria renames the folder.");
  Hears(m_kenji, Event(folder, kRenamed));
  const rapidjson::Document plans = Do(m_kenji, "GetPlansInGroup", ObjectText().Add("GroupID", folder).Text());
  Require(ListOf(plans, "Plans").Size() == 1, "kenji lists one view in it");

  m_maria.Observe(kGroupType, kStation);
  m_maria.Observe(kGroupType, folder);
  Do(m_kenji, "DeletePlanGroup", ObjectText().Add("ID", folder).Text());
  Tell("kenji deletes the folder; the server deletes what is in it first.");
  Hears(m_maria, Event(folder, kChildRemoved, view));
  Hears(m_maria, Event(kStation, kChildRemoved, folder));
}

bool Tour::DrawOne() {
  Chapter("A picture to take along");
  std::string plan;
  Require(m_plugin.Ask("GetPlanDetail", ObjectText().Add("ID", kMagnified).Text(), plan), "the view is still there");
  if (!Drawer::IsInstalled()) {
    const QJsonObject read = QJsonDocument::fromJson(QByteArray::fromStdString(ValidUtf8(plan))).object();
    Tell("Pictures are drawn by viewdraw, which is not here. In letters \"Platform 1 edge, magnified\" is:\n");
    std::string page = DescribePage(drawing::ReadPage(read, 1), ColumnsOut());
    page.pop_back();
    Tell(page);
    return false;
  }
  const std::string picture = Drawer().Draw(ValidUtf8(plan), 1, {});
  QTemporaryFile file(QDir::temp().filePath("viewctl-demo-XXXXXX.svg"));
  file.setAutoRemove(false);
  const auto size = static_cast<qint64>(picture.size());
  Require(file.open() && file.write(picture.data(), size) == size && file.flush(), "the picture can be written");
  Tell("\"Platform 1 edge, magnified\" is drawn in " + file.fileName().toStdString());
  Tell("viewctl report -o site.html draws all of them, with an index of what is shown where.");
  return true;
}

rapidjson::Document Tour::Do(Side& side, const std::string& function, const std::string& request) {
  rapidjson::Document answer;
  const bool done = side.Call(function, request, answer);
  Require(done, side.Name() + "'s call of " + function + " succeeds");
  return answer;
}

void Tour::Hears(Side& side, const Notice& expected) {
  const auto end = std::chrono::steady_clock::now() + kNoticeLimit;
  while (std::chrono::steady_clock::now() < end) {
    const auto notice = side.NextNotice(std::chrono::milliseconds(100));
    if (base::StopAsked()) throw Failure(kRefused, "The demo was stopped");
    if (!notice) continue;
    Tell("    " + side.Name() + " hears: " + InWords(*notice));
    if (SameEvent(*notice, expected)) return;
  }
  Require(false, side.Name() + " hears that " + InWords(expected));
}

void Tour::Require(bool holds, const std::string& what) {
  if (!holds) throw Failure(kRefused, "The demo went wrong: it is not so that " + what);
}

rapidjson::Document Tour::Detail(Side& side, const std::string& id) {
  return Do(side, "GetPlanDetail", ObjectText().Add("ID", id).Text());
}

}  // namespace host
