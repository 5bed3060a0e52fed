// SPDX-License-Identifier: Apache-2.0
// Any downloaded document and any change document. Input: the groups, 0xFF, the views, 0xFF, then change documents,
// each with a byte that says of what.
#include "FuzzInput.h"
#include "PluginHost.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/document/ViewList.h"
#include "ResourceStore/ResourceObserver.h"
#include "ResourceStore/ViewGroupManager.h"

namespace {

class Listener : public ResourceData::IResourceObserver {
 public:
  void UpdateResourceInfos(const Param& param) override {
    fuzz::Require(!param.id.empty(), "a notice names its object");
  }
};

// Whether a list comes to the same in one pass and through the platform's document.
bool IsReadAlike(const std::string& views) {
  using namespace QorviViewPlugin;
  Vant::Base::Error::ErrorCode error, errorByPaths;
  ViewList list, listByPaths;
  const bool isRead = ReadViewList(views, error, list);
  return isRead == ReadViewListByPaths(views, errorByPaths, listByPaths) && list.views == listByPaths.views &&
         list.completeUpTo == listByPaths.completeUpTo && error.GetSubError() == errorByPaths.GetSubError() &&
         error.GetCasadingErrorInfo() == errorByPaths.GetCasadingErrorInfo();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::PrepareHost();
  fuzz::AnswerRequestsWith("");
  fuzz::Input input(data, size);
  const std::string groups = input.Text();
  const std::string views = input.Text();
  fuzz::Require(IsReadAlike(views), "both readers of lists read the same");
  fuzz::Load(groups, views);
  fuzz::ReadEverything();

  Listener listener;
  for (const char* observed : {R"("ResourceType":16001,"ID":"4294967295")", R"("ResourceType":16001,"ID":"1")",
                               R"("ResourceType":16000,"ID":"5")"}) {
    ViewRegisterResourceUpdate(&listener, "{" + std::string(observed) + R"(,"IsRegister":true})");
  }
  auto& downloads = Vant::Base::CSingleton<ResourceStore::CViewGroupManager>::Instance();
  while (!input.AtEnd()) {
    const bool ofGroups = input.Byte() % 2 == 0;
    const std::string change = input.Text();
    ofGroups ? downloads.NotifyViewGroupsUpdate(change) : downloads.NotifyViewsUpdate(change);
  }
  fuzz::ReadEverything();
  ClearViewData();
  return 0;
}
