// SPDX-License-Identifier: Apache-2.0
// The exported wrappers: what they share and what they copy.
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "CoreFixture.h"
#include "ModelText.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

TEST(RecordWrapper, CopiesARecordAndSharesAPointerOrAnotherWrapper) {
  Rectangle record{1, 2, 3, 4};
  CRectangle fromRecord(record);
  fromRecord.SetVal_fXTop(9);
  EXPECT_EQ(record.fXTop, 1.0f);

  const auto shared = std::make_shared<Rectangle>(record);
  CRectangle fromPointer(shared);
  fromPointer.SetVal_fXTop(9);
  CRectangle copy = fromPointer;
  copy.SetVal_fYTop(8);
  CRectangle assigned;
  assigned = copy;
  assigned.GetDataPtr()->fXBottom = 7;
  EXPECT_EQ(assigned.GetDataPtr(), shared);
  EXPECT_EQ(std::tuple(shared->fXTop, fromPointer.GetVal_fYTop(), fromPointer.GetVal_fXBottom()),
            std::tuple(9.0f, 8.0f, 7.0f));
}

TEST(RecordWrapper, HandsOutNestedRecordsAsCopies) {
  CCameraGridStruct window;
  EXPECT_EQ(Difference(CameraGridStruct(), *window.GetDataPtr()), "");
  window.GetVal_struRect()->SetVal_fXTop(0.5f);
  EXPECT_EQ(window.GetVal_struRect()->GetVal_fXTop(), -1.0f);

  const auto box = std::make_shared<CRectangle>(Rectangle{1, 2, 3, 4});
  const auto mark = std::make_shared<CCalibrationInfo>();
  const auto fisheye = std::make_shared<CFishEyeInfo>();
  const auto cycle = std::make_shared<CSingleWndCycle>();
  mark->SetVal_coordinate(box);
  mark->SetVal_stream_type(static_cast<ResourceStore::Stream::StreamType>(2));
  fisheye->SetVal_mount_type(3);
  fisheye->SetVal_vc_wnd_param({{1, 0.5f, 0.25f, 2.0f}});
  cycle->SetVal_cycle_name("doors");
  cycle->SetVal_vc_id({{5, 9}});
  window.SetVal_struRect(box);
  window.SetVal_calibration_info(mark);
  window.SetVal_fisheye_info(fisheye);
  window.SetVal_single_cycle(cycle);
  box->SetVal_fXTop(9);
  fisheye->SetVal_mount_type(4);
  EXPECT_EQ(Difference(CameraGridStruct(), *window.GetDataPtr()),
            "struRect=(1,2,3,4) calibration_info=((1,2,3,4),2) fisheye_info=(3,0,0,[(1,0.5,0.25,2)]) "
            "single_cycle=(0,0,'doors',[(5,9)])");
  EXPECT_EQ(window.GetVal_fisheye_info()->GetVal_vc_wnd_param().size(), 1u);
  EXPECT_EQ(window.GetVal_single_cycle()->GetVal_vc_id().at(0).second, 9u);
}

TEST(RecordWrapper, AppendsZoomWindowsAndHandsThemOutAsCopies) {
  CCameraGridStruct window;
  window.GetDataPtr()->local_wins = {{1, {}}};
  const auto two = std::make_shared<CLocalWindowInfo>();
  two->SetVal_ZoomWindowNo(2);
  window.SetVal_local_wins({two, std::make_shared<CLocalWindowInfo>(LocalWindowInfo{3, {}})});
  two->SetVal_ZoomWindowNo(7);
  window.GetVal_local_wins().at(2)->SetVal_ZoomWindowNo(8);
  EXPECT_EQ(Difference(CameraGridStruct(), *window.GetDataPtr()),
            "local_wins=[(1,(-1,-1,-1,-1))][(2,(-1,-1,-1,-1))][(3,(-1,-1,-1,-1))]");
}

class LookUpTest : public CoreTest {};

TEST_F(LookUpTest, ACopiedViewOrGroupGoesItsOwnWay) {
  EXPECT_FALSE(FindViewByID(9) || FindViewGroupByID(1));
  CacheGroup(Group(1, kNoId, "old"));
  CacheView(View(9, 1, "old"));
  const auto found = FindViewByID(9);
  ASSERT_TRUE(found && FindViewGroupByID(1));
  EXPECT_NE(FindViewByID(9), found) << "each a snapshot";
  CViewExport copy(*found);
  copy = CViewExport();
  Manager().GetViewByID(9)->SetResourceFlag(1012, true);
  const CView view(*Manager().GetViewByID(9));
  const CViewGroup group(*Manager().GetViewGroupByID(1));
  Manager().UpdateViewInCache(View(9, 1, "new"));
  EXPECT_FALSE(Manager().UpdateViewGroupInCache(Group(1, kNoId, "new"))) << "in any case";
  EXPECT_EQ(view.GetName(), "old");
  EXPECT_TRUE(view.CheckResourceExist(1012));
  EXPECT_EQ(group.Info()->strName, "old");
  EXPECT_EQ(group.FindMemberView(9)->GetName(), "new");  // members are those of the cache
  Manager().RemoveViewFromCache(9, true);
  EXPECT_NE(group.FindMemberView(9), nullptr);
}

TEST_F(LookUpTest, AGroupKeepsMembersOnceEachInTheOrderOfTheirLastArrival) {
  CacheGroup(Group(1));
  const auto group = Manager().GetViewGroupByID(1);
  std::vector<std::shared_ptr<CView>> out = {nullptr};
  EXPECT_TRUE(group->GetMemberViews(out));
  EXPECT_EQ(out.size(), 1u) << "an empty group leaves the output as it is";
  EXPECT_FALSE(group->AddMemberView(nullptr));
  for (unsigned int id : {1u, 2u, 3u, 1u}) EXPECT_TRUE(group->AddMemberView(std::make_shared<CView>(View(id))));
  group->AppendMemberView(std::make_shared<CView>(View(3, kNoId, "again")));
  EXPECT_EQ(Members(1), "2'' 3'' 1'' 3'again' ");
  EXPECT_EQ(group->FindMemberView(3)->GetName(), "");
  const CViewGroup copy = *group;
  EXPECT_TRUE(group->RemoveMemberView(3));
  EXPECT_FALSE(group->RemoveMemberView(8));
  EXPECT_EQ(Members(1), "2'' 1'' 3'again' ");
  EXPECT_TRUE(group->ClearMemberViews());
  EXPECT_EQ(Members(1), "");
  EXPECT_EQ(copy.FindMemberView(3)->GetName(), "") << "the copy keeps its own list";
}

// The list as it is described: one vector, searched from its front.
class PlainMembers {
 public:
  using Entry = std::pair<unsigned int, std::shared_ptr<CView>>;

  void Append(unsigned int id, const std::shared_ptr<CView>& view) { m_entries.emplace_back(id, view); }
  void Append(const PlainMembers& others) {
    m_entries.insert(m_entries.end(), others.m_entries.begin(), others.m_entries.end());
  }
  bool Remove(unsigned int id) {
    const auto entry = First(id);
    if (entry == m_entries.end()) return false;
    m_entries.erase(entry);
    return true;
  }
  std::shared_ptr<CView> Find(unsigned int id) {
    const auto entry = First(id);
    return entry == m_entries.end() ? nullptr : entry->second;
  }
  std::vector<std::shared_ptr<CView>> All() const {
    std::vector<std::shared_ptr<CView>> views;
    for (const Entry& entry : m_entries) views.push_back(entry.second);
    return views;
  }

 private:
  std::vector<Entry>::iterator First(unsigned int id) { return std::ranges::find(m_entries, id, &Entry::first); }

  std::vector<Entry> m_entries;
};

TEST(MemberViewsTest, SeveralOfOneIdStandInTheirOrderWhateverJoinsAndLeaves) {
  std::mt19937 dice(11);
  const auto roll = [&](unsigned int sides) { return static_cast<unsigned int>(dice() % sides); };
  MemberViews members;
  PlainMembers plain;
  const auto appendTo = [&](MemberViews& some, PlainMembers& plainly) {
    const unsigned int id = 1 + roll(6);
    const auto view = std::make_shared<CView>(View(id));
    some.Append(view);
    plainly.Append(id, view);
    if (roll(4) == 0) view->SetInfo(View(9));  // known by its old id all the same
  };
  for (int step = 0; step < 3000; ++step) {
    const unsigned int what = roll(10);
    if (what < 4) {
      appendTo(members, plain);
    } else if (what < 8) {
      const unsigned int id = 1 + roll(6);
      ASSERT_EQ(members.Remove(id), plain.Remove(id)) << step;
    } else if (what == 8) {
      MemberViews others;
      PlainMembers plainOthers;
      for (unsigned int count = roll(5); count > 0; --count) appendTo(others, plainOthers);
      members.Append(std::move(others));
      plain.Append(plainOthers);
    } else {
      const MemberViews copy = members;
      while (members.Remove(1 + roll(6))) {
      }
      members = copy;
    }
    ASSERT_EQ(members.All(), plain.All()) << step;
    for (unsigned int id = 1; id <= 9; ++id) ASSERT_EQ(members.Find(id), plain.Find(id)) << step << ", id " << id;
  }
}

}  // namespace
}  // namespace core_test
