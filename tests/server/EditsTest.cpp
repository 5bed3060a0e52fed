// SPDX-License-Identifier: Apache-2.0
// What edits do to the lists of the one who makes them and of the others.
#include <string>

#include "TestClient.h"

namespace server::test {
namespace {

using rapidjson::Value;

class EditsTest : public ServerTest {
 protected:
  static const Value& View(const Answer& list, int32_t id) { return list.Element("ViewList", "View", id); }
  static const Value& Group(const Answer& list, int32_t id) { return list.Element("ViewGroupList", "ViewGroup", id); }
  static std::string Text(const Value& value) { return value.IsString() ? value.GetString() : "(no text)"; }
  static int Number(const Value& value) { return value.IsInt() ? value.GetInt() : -999; }
};

TEST_F(EditsTest, PublicThingsAreEverybodysAndPrivateOnesTheirOwners) {
  const int32_t open = ann.AddGroup("Open", -1, kPublic);
  const int32_t own = ann.AddGroup("Own", -1, kAnn);
  const int32_t publicView = ann.AddView("P", open, kPublic);
  const int32_t privateView = ann.AddView("Q", own, kAnn);

  EXPECT_EQ(ann.ViewIds(), std::to_string(publicView) + "," + std::to_string(privateView));
  EXPECT_EQ(bob.ViewIds(), std::to_string(publicView));
  EXPECT_EQ(bob.GroupIds(), std::to_string(open));
  EXPECT_EQ(bob.Put("V0/Views/" + std::to_string(publicView), ViewBody("P2", open, kPublic)).Error(), "0/0");
  EXPECT_EQ(bob.Put("V0/Views/" + std::to_string(privateView), ViewBody("Q2", -1, kBob)).Error(), "100/1");
  EXPECT_EQ(Text(View(ann.Get("V0/Views"), publicView)["Name"]), "P2");
}

TEST_F(EditsTest, AViewKeepsWhatItsClientWroteAndItsWindowsTextsLeaveAsTexts) {
  const std::string pages =
      R"(,"PlanPages":[{"SpliteType":4,"CustomSplite":"MXgy","PlanViewItem":[{"SequenceIndex":3,"WindowNo":2,)"
      R"("Xtop":0.25,"Ytop":"0.500000","Xbottom":1,"Ybottom":1e-3,"FishEye":{"No":1.5},"Own key":[null,true]}]}])"
      R"(,"Later":{"deep":"\u00e4\u0000"},"SharedUserID":1,"SharedUserName":"x","Method":2,"GUID":"mine")";
  const int32_t id = ann.AddView("V", -1, kPublic, pages);

  const Answer list = bob.Get("V0/Views");
  EXPECT_NE(list.body.find(R"("PlanPages":[{"SpliteType":4,"CustomSplite":"MXgy","PlanViewItem":[{"SequenceIndex":"3",)"
                           R"("WindowNo":2,"Xtop":"0.25","Ytop":"0.500000","Xbottom":"1","Ybottom":"0.001",)"
                           R"("FishEye":{"No":1.5},"Own key":[null,true]}]}],"Later":{"deep":"ä\u0000"}})"),
            std::string::npos)
      << list.body;
  const Value& view = View(list, id);
  EXPECT_FALSE(view.HasMember("SharedUserID") || view.HasMember("Method"));
  EXPECT_EQ(Text(view["GUID"]).size(), 36u) << "the server gives it";
}

TEST_F(EditsTest, ReplacingTakesNameFolderCycleAndPagesAndKeepsTheRest) {
  const int32_t folder = ann.AddGroup("F", -1, kAnn);
  ann.AddView("first", -1, kAnn);
  const int32_t id = ann.AddView("V", -1, kAnn, R"(,"PlanPages":[{"SpliteType":1}],"Extra":1)");
  ann.Post("V1/View/" + std::to_string(id) + "/Share", ShareBody("2"));
  const std::string guid = Text(View(ann.Get("V0/Views"), id)["GUID"]);

  const std::string body = R"({"View":{"ID":77,"Name":"W","ViewGroupID":)" + std::to_string(folder) +
                           R"(,"UserID":2,"SequenceIndex":50,"AutoCycle":1,"CycleTime":30}})";
  ASSERT_EQ(ann.Put("V0/Views/" + std::to_string(id), body).Error(), "0/0");
  const Answer list = ann.Get("V0/Views");
  const Value& view = View(list, id);
  EXPECT_EQ(Text(view["Name"]), "W");
  EXPECT_EQ(Number(view["ViewGroupID"]), folder);
  EXPECT_EQ(Number(view["AutoCycle"]), 1);
  EXPECT_EQ(Number(view["CycleTime"]), 30);
  EXPECT_FALSE(view.HasMember("PlanPages") || view.HasMember("Extra"));
  EXPECT_EQ(Text(view["GUID"]), guid);
  EXPECT_EQ(Number(view["UserID"]), kAnn);
  EXPECT_EQ(Number(view["SequenceIndex"]), 2) << "its place from when it was added";
  EXPECT_EQ(bob.ViewIds(), std::to_string(id)) << "still shared";

  const int32_t group = ann.AddGroup("G", folder, kAnn);
  ASSERT_EQ(ann.Put("V0/ViewGroups/" + std::to_string(group), GroupBody("H", -1, -1, 1)).Error(), "0/0");
  const Answer groups = ann.Get("V0/ViewGroups");
  EXPECT_EQ(Text(Group(groups, group)["Name"]), "H");
  EXPECT_EQ(Number(Group(groups, group)["IsSharedView"]), 1);
  EXPECT_EQ(Number(Group(groups, folder)["IsSharedView"]), -1) << "never 0";
  const int32_t open = ann.AddGroup("open", -1, kPublic);
  ann.Put("V0/ViewGroups/" + std::to_string(open), GroupBody("open", -1, -1, 1));
  EXPECT_EQ(Number(Group(bob.Get("V0/ViewGroups"), open)["IsSharedView"]), -1) << "it has no owner";
  EXPECT_EQ(Number(Group(groups, group)["ParentViewGroupID"]), folder);
  EXPECT_EQ(Number(Group(groups, group)["UserID"]), kAnn);
}

TEST_F(EditsTest, NewThingsStandLastInTheirOwnersFolder) {
  const int32_t folder = ann.AddGroup("F", -1, kPublic);
  const auto place = [](const Client& client, int32_t id) {
    return Number(View(client.Get("V0/Views"), id)["SequenceIndex"]);
  };
  EXPECT_EQ(place(ann, ann.AddView("a", folder, kPublic)), 1);
  EXPECT_EQ(place(ann, bob.AddView("b", folder, kPublic)), 2);
  EXPECT_EQ(place(ann, ann.AddView("c", -1, kAnn)), 1);
  EXPECT_EQ(place(bob, bob.AddView("d", -1, kBob)), 1) << "the top level is one folder for each owner";
}

TEST_F(EditsTest, MovingSetsFolderAndOrderOfWhatIsNamed) {
  const int32_t from = ann.AddGroup("A", -1, kPublic);
  const int32_t to = ann.AddGroup("B", -1, kPublic);
  const std::string first = std::to_string(ann.AddView("1", from, kPublic));
  const std::string second = std::to_string(ann.AddView("2", from, kPublic));
  const std::string third = std::to_string(ann.AddView("3", from, kPublic));

  ASSERT_EQ(bob.Put("V0/Views/Move", MoveBody(1, to, third + "," + first + "," + third)).Error(), "0/0");
  const Answer list = ann.Get("V0/Views");
  const auto where = [&list](const std::string& id) {
    const Value& view = View(list, std::stoi(id));
    return std::make_pair(Number(view["ViewGroupID"]), Number(view["SequenceIndex"]));
  };
  EXPECT_EQ(where(third), std::make_pair(to, 1));
  EXPECT_EQ(where(first), std::make_pair(to, 2)) << "a repeat counts once";
  EXPECT_EQ(where(second), std::make_pair(from, 2));

  ASSERT_EQ(ann.Put("V0/ViewGroups/Move", MoveBody(2, from, std::to_string(to))).Error(), "0/0");
  EXPECT_EQ(Number(Group(ann.Get("V0/ViewGroups"), to)["ParentViewGroupID"]), from);
}

TEST_F(EditsTest, AContentHasItsFoldersOwnerAndNoGroupLiesInItself) {
  const int32_t open = ann.AddGroup("Open", -1, kPublic);
  const int32_t inner = ann.AddGroup("Inner", open, kPublic);
  const int32_t own = ann.AddGroup("Own", -1, kAnn);
  const int32_t bobs = bob.AddGroup("Bobs", -1, kBob);
  const std::string view = std::to_string(ann.AddView("V", own, kAnn));
  const std::string sharedWithAnn = std::to_string(bob.AddView("S", bobs, kBob));
  bob.Post("V1/View/" + sharedWithAnn + "/Share", ShareBody("1"));
  const int64_t before = ann.Sequence();

  const std::string publicView = ViewBody("x", own, kPublic);
  const std::string move = "V0/ViewGroups/Move";
  const struct {
    std::string method, path, body, error;
  } cases[] = {
      {"POST", "V0/Views", ViewBody("x", open, kAnn), "100/4"},
      {"POST", "V0/Views", publicView, "100/4"},
      {"POST", "V0/Views", ViewBody("x", -1, kBob), "100/4"},
      {"POST", "V0/Views", ViewBody("x", bobs, kAnn), "100/2"},
      {"POST", "V0/Views", ViewBody("x", -4, kAnn), "100/2"},
      {"PUT", "V0/Views/" + view, ViewBody("x", open, kAnn), "100/4"},
      {"PUT", "V0/Views/" + view, ViewBody("x", -4, kAnn), "100/2"},
      {"PUT", "V0/Views/" + sharedWithAnn, ViewBody("x", -1, kAnn), "100/4"},
      {"DELETE", "V0/Views/" + sharedWithAnn, "", "100/4"},
      {"PUT", "V0/Views/Move", MoveBody(1, open, view), "100/4"},
      {"PUT", "V0/Views/Move", MoveBody(1, -1, sharedWithAnn), "100/4"},
      {"PUT", "V0/Views/Move", MoveBody(1, bobs, view), "100/2"},
      {"PUT", "V0/Views/Move", MoveBody(1, -1, view + ",999"), "100/1"},
      {"POST", "V0/ViewGroups", GroupBody("x", open, kAnn), "100/4"},
      {"POST", "V0/ViewGroups", GroupBody("x", -4, kPublic), "100/2"},
      {"PUT", "V0/ViewGroups/" + std::to_string(bobs), GroupBody("x", -1, -1), "100/2"},
      {"DELETE", "V0/ViewGroups/" + std::to_string(bobs), "", "100/2"},
      {"PUT", move, MoveBody(2, inner, std::to_string(open)), "100/4"},
      {"PUT", move, MoveBody(2, open, std::to_string(open)), "100/4"},
      {"PUT", move, MoveBody(2, open, std::to_string(own)), "100/4"},
      {"PUT", move, MoveBody(2, -4, std::to_string(own)), "100/2"},
      {"PUT", move, MoveBody(2, -1, std::to_string(own) + "," + std::to_string(bobs)), "100/2"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ann.Request(c.method, c.path, c.body).Error(), c.error) << c.method << ' ' << c.path << ' ' << c.body;
  }
  EXPECT_EQ(ann.Sequence(), before) << "what is refused changes nothing";
}

TEST_F(EditsTest, DeletingAGroupTakesWhatItHoldsAndNothingElse) {
  const int32_t top = ann.AddGroup("top", -1, kAnn);
  const int32_t inner = ann.AddGroup("inner", top, kAnn);
  const int32_t other = ann.AddGroup("other", -1, kAnn);
  ann.AddView("a", top, kAnn);
  ann.AddView("b", inner, kAnn);
  const int32_t kept = ann.AddView("c", other, kAnn);

  EXPECT_EQ(ann.Delete("V0/ViewGroups/" + std::to_string(top)).Error(), "0/0");
  EXPECT_EQ(ann.GroupIds(), std::to_string(other));
  EXPECT_EQ(ann.ViewIds(), std::to_string(kept));
  EXPECT_EQ(ann.Delete("V0/ViewGroups/" + std::to_string(inner)).Error(), "100/2");
  EXPECT_GT(ann.AddGroup("new", -1, kAnn), other) << "numbers are not given twice";
}

TEST_F(EditsTest, SharingAddsUsersAndTellsWhichOnesItCouldNot) {
  const int32_t folder = ann.AddGroup("F", -1, kAnn);
  const int32_t id = ann.AddView("V", folder, kAnn);
  const std::string share = "V1/View/" + std::to_string(id) + "/Share";

  EXPECT_EQ(ann.Post(share, ShareBody("3")).Error(), "0/0");
  const Answer some = ann.Post(share, ShareBody("2,9,1,2,9"));
  EXPECT_EQ(some.body,
            R"({"ResponseStatus":{"ErrorModule":0,"ErrorCode":0,"CascadingErrorInfo":"","Data":{"ErrorList":{"Error":[)"
            R"({"UserID":9,"UserName":"","ErrorModule":100,"ErrorCode":5},)"
            R"({"UserID":1,"UserName":"ann","ErrorModule":100,"ErrorCode":4}]}}}})");

  const Answer seen = bob.Get("V0/Views");
  EXPECT_EQ(Number(View(seen, id)["UserID"]), kAnn);
  EXPECT_EQ(Number(View(seen, id)["SharedUserID"]), kAnn);
  EXPECT_EQ(Text(View(seen, id)["SharedUserName"]), "ann");
  EXPECT_EQ(Number(View(seen, id)["ViewGroupID"]), -1) << "the sharer's folder is not theirs to see";
  EXPECT_EQ(cid.ViewIds(), std::to_string(id));
  EXPECT_EQ(bob.GroupIds(), "");

  const std::string openView = std::to_string(ann.AddView("P", -1, kPublic));
  EXPECT_EQ(bob.Post(share, ShareBody("3")).Error(), "100/4") << "only the owner";
  EXPECT_EQ(ann.Post("V1/View/" + openView + "/Share", ShareBody("2")).Error(), "100/4") << "only a private view";
  for (const char* users : {"", ",", "2,", "2,x", "2 ,3", "0x2", "99999999999"}) {
    EXPECT_EQ(ann.Post(share, ShareBody(users)).Error(), "100/6") << users;
  }
  std::string many = "1";
  for (int user = 2; user <= 10001; ++user) many += "," + std::to_string(user);
  EXPECT_EQ(ann.Post(share, ShareBody(many)).Outcome(), "100/7 413");
}

TEST_F(EditsTest, EachUserHasADefaultViewOfTheirOwn) {
  const std::string path = "V1/View/Default/Config";
  const auto config = [&path](const Client& client) {
    const Answer answer = client.Get(path);
    return answer.body.substr(answer.body.find("\"Data\""));
  };
  EXPECT_EQ(config(ann), R"("Data":{"Config":{"Type":-1,"ID":-1}}}})");
  EXPECT_EQ(ann.Put(path, R"({"ViewRequest":{"Type":2,"ID":41}})").Error(), "0/0");
  EXPECT_EQ(ann.Put(path, R"({"ViewRequest":{"Type":1,"ID":4294967263}})").Error(), "0/0");
  EXPECT_EQ(config(ann), R"("Data":{"Config":{"Type":1,"ID":-33}}}})");
  EXPECT_EQ(config(bob), R"("Data":{"Config":{"Type":-1,"ID":-1}}}})");
}

}  // namespace
}  // namespace server::test
