// SPDX-License-Identifier: Apache-2.0
// The exported wrappers: what they share and what they copy.
#include "QorviViewPlugin/ViewDataManager/ViewExport.h"

#include "CoreFixture.h"
#include "ModelText.h"

namespace core_test {
namespace {

using namespace QorviViewPlugin;

TEST(RecordWrapper, StartsWithANewRecord) {
  const CCameraGridStruct window;
  EXPECT_EQ(window.GetVal_enum_resource_type_(), 1001);
  EXPECT_EQ(window.GetVal_map_load_type(), 1);
  EXPECT_EQ(window.GetVal_idView(), 4294967295u);
  EXPECT_EQ(window.GetVal_uPresetIndex(), ~0ull);
  EXPECT_EQ(window.GetVal_relate_type(), -1);
  EXPECT_EQ(window.GetVal_relate_draw_box_no(), -1);
  EXPECT_EQ(window.GetVal_struRect()->GetVal_fYBottom(), -1.0f);
  EXPECT_EQ(window.GetVal_single_cycle()->GetVal_type(), 0);
  EXPECT_EQ(Difference(CameraGridStruct(), *window.GetDataPtr()), "");
}

TEST(RecordWrapper, CopiesARecordAndSharesAPointerOrAnotherWrapper) {
  Rectangle record{1, 2, 3, 4};
  CRectangle fromRecord(record);
  fromRecord.SetVal_fXTop(9);
  EXPECT_EQ(record.fXTop, 1.0f);

  const auto shared = std::make_shared<Rectangle>(record);
  CRectangle fromPointer(shared);
  fromPointer.SetVal_fXTop(9);
  EXPECT_EQ(shared->fXTop, 9.0f);

  CRectangle copy = fromPointer;
  copy.SetVal_fYTop(8);
  EXPECT_EQ(fromPointer.GetVal_fYTop(), 8.0f);
  CRectangle assigned;
  assigned = copy;
  assigned.GetDataPtr()->fXBottom = 7;
  EXPECT_EQ(fromPointer.GetVal_fXBottom(), 7.0f);
  EXPECT_EQ(assigned.GetDataPtr(), shared);
}

TEST(RecordWrapper, HandsOutNestedRecordsAsCopies) {
  CCameraGridStruct window;
  window.GetVal_struRect()->SetVal_fXTop(0.5f);
  EXPECT_EQ(window.GetVal_struRect()->GetVal_fXTop(), -1.0f);

  const auto box = std::make_shared<CRectangle>(Rectangle{1, 2, 3, 4});
  window.SetVal_struRect(box);
  box->SetVal_fXTop(9);
  EXPECT_EQ(window.GetVal_struRect()->GetVal_fXTop(), 1.0f);

  CCalibrationInfo mark;
  mark.SetVal_coordinate(box);
  mark.SetVal_stream_type(static_cast<ResourceStore::Stream::StreamType>(2));
  window.SetVal_calibration_info(std::make_shared<CCalibrationInfo>(mark));
  const auto fisheye = std::make_shared<CFishEyeInfo>();
  fisheye->SetVal_mount_type(3);
  fisheye->SetVal_vc_wnd_param({{1, 0.5f, 0.25f, 2.0f}});
  window.SetVal_fisheye_info(fisheye);
  const auto cycle = std::make_shared<CSingleWndCycle>();
  cycle->SetVal_cycle_name("doors");
  cycle->SetVal_vc_id({{5, 9}});
  window.SetVal_single_cycle(cycle);
  fisheye->SetVal_mount_type(4);
  EXPECT_EQ(Difference(CameraGridStruct(), *window.GetDataPtr()),
            "rect=(1,2,3,4) mark_box=(9,2,3,4) mark_stream=2 fisheye=3/0/0+1:0.5,0.25,2 cycle=0/0/'doors'+5:9");
  EXPECT_EQ(window.GetVal_fisheye_info()->GetVal_vc_wnd_param().size(), 1u);
  EXPECT_EQ(window.GetVal_single_cycle()->GetVal_vc_id().at(0).second, 9u);
}

TEST(RecordWrapper, SettersReachTheirOwnField) {
  CCameraGridStruct window;
  window.SetVal_idView(1);
  window.SetVal_uIndex(2);
  window.SetVal_n_seq_index(3);
  window.SetVal_camera_workstation_id(4);
  window.SetVal_id_element_(5);
  window.SetVal_enum_resource_type_(static_cast<ResourceType>(6));
  window.SetVal_bPTZConfigured(true);
  window.SetVal_uPresetIndex(7);
  window.SetVal_uCruiseIndex(8);
  window.SetVal_uTrackIndex(9);
  window.SetVal_idPOS(10);
  window.SetVal_stream_type(static_cast<ResourceStore::Stream::StreamType>(11));
  window.SetVal_map_center_x("12");
  window.SetVal_map_center_y("13");
  window.SetVal_map_scale_size(14);
  window.SetVal_map_more_info("15");
  window.SetVal_relate_type(static_cast<RelateResourceType>(16));
  window.SetVal_relate_id(17);
  window.SetVal_relate_name("18");
  window.SetVal_map_load_type(static_cast<MapLoadType>(19));
  window.SetVal_extend_resource("20");
  window.SetVal_enable_calibration(true);
  window.SetVal_zoom_mode(static_cast<ZoomMode>(21));
  window.SetVal_relate_view_win_no("22");
  window.SetVal_relate_draw_box_no(23);
  window.SetVal_b_enable_fish_eye(true);
  EXPECT_EQ(Difference(CameraGridStruct(), *window.GetDataPtr()),
            "idView=1 uIndex=2 n_seq_index=3 site=4 element=5 type=6 ptz=1 preset=7 cruise=8 track=9 pos=10 stream=11 "
            "center_x='12' center_y='13' scale=14 more='15' relate_type=16 relate_id=17 relate_name='18' load=19 "
            "extend='20' mark=1 zoom_mode=21 related_window='22' related_box=23 has_fisheye=1");
}

TEST(RecordWrapper, AppendsZoomWindowsAndHandsThemOutAsCopies) {
  CCameraGridStruct window;
  window.GetDataPtr()->local_wins = {{1, {}}};
  const auto two = std::make_shared<CLocalWindowInfo>();
  two->SetVal_ZoomWindowNo(2);
  window.SetVal_local_wins({two, std::make_shared<CLocalWindowInfo>(LocalWindowInfo{3, {}})});
  two->SetVal_ZoomWindowNo(7);
  const auto windows = window.GetVal_local_wins();
  ASSERT_EQ(windows.size(), 3u);
  EXPECT_EQ(windows[1]->GetVal_ZoomWindowNo(), 2);
  windows[2]->SetVal_ZoomWindowNo(8);
  EXPECT_EQ(window.GetVal_local_wins()[2]->GetVal_ZoomWindowNo(), 3);
}

class LookUpTest : public CoreTest {};

TEST_F(LookUpTest, FindsSnapshotsOfCachedObjectsOnly) {
  CacheGroup(Group(1));
  CacheView(View(9, 1, "old"));
  EXPECT_EQ(FindViewByID(8), nullptr);
  EXPECT_EQ(FindViewGroupByID(2), nullptr);
  const auto view = FindViewByID(9);
  const auto group = FindViewGroupByID(1);
  ASSERT_TRUE(view && group);
  EXPECT_NE(FindViewByID(9), view);
  Manager().ClearViewData();
  EXPECT_EQ(FindViewByID(9), nullptr);
  CViewExport copy(*view);
  copy = CViewExport();
  const CViewGroupExport groupCopy(*group);
}

TEST_F(LookUpTest, ACopiedViewOrGroupGoesItsOwnWay) {
  CacheGroup(Group(1, kNoId, "old"));
  CacheView(View(9, 1, "old"));
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

}  // namespace
}  // namespace core_test
