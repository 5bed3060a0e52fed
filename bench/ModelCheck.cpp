// SPDX-License-Identifier: Apache-2.0
#include "ModelCheck.h"

#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "Report.h"

namespace bench {

using namespace QorviViewPlugin;

void CheckCache(const SiteSize& size) {
  auto& manager = Vant::Base::CSingleton<CViewGroupManager>::Instance();
  unsigned int wrong = 0;
  for (unsigned int id = 1; id <= size.views; ++id) {
    const auto view = manager.GetViewByID(id);
    if (!view || !(*view->Info() == MakeView(size, id))) ++wrong;
  }
  Check(wrong == 0, std::to_string(wrong) + " views of site " + size.name + " are not as they should be");

  size_t members = 0;
  for (unsigned int id = 1; id <= size.Groups(); ++id) {
    std::vector<std::shared_ptr<CView>> views;
    const auto group = manager.GetViewGroupByID(id);
    if (group) group->GetMemberViews(views);
    members += views.size();
  }
  Check(members == size.views, "the groups of site " + std::string(size.name) + " do not hold its views");
}

}  // namespace bench
