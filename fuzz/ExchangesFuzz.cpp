// SPDX-License-Identifier: Apache-2.0
// Any request text to any exchange but GetAllUserInfo, which waits for a thread; any reply of the server to what it
// asks. Input: the number of the exchange, the request, 0xFF, the reply.
#include "FuzzInput.h"
#include "PluginHost.h"
#include "QorviViewPlugin/QorviViewPlugin.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using Exchange = bool (*)(const std::string&, std::string&);
  static const Exchange exchanges[] = {
      GetPlanGroups,       AddPlanGroup,        UpdatePlanGroup,       DeletePlanGroup,
      GetPlansInGroup,     GetPlanDetail,       GetPlanConfig,         AddPlan,
      UpdatePlan,          DeletePlan,          GetCurrentUser,        ViewShareUsers,
      SetClientViewConfig, GetClientViewConfig, IsInitViewGroupFinish, IsInitViewFinish};
  fuzz::PrepareHost();
  fuzz::LoadSmallSite();

  fuzz::Input input(data, size);
  const Exchange exchange = exchanges[input.Byte() % std::size(exchanges)];
  const std::string request = input.Text();
  fuzz::AnswerRequestsWith(input.Text());
  std::string response = "{}";
  exchange(request, response);
  fuzz::RequireJson(response);
  ViewRegisterResourceUpdate(nullptr, request);
  fuzz::ReadEverything();
  return 0;
}
