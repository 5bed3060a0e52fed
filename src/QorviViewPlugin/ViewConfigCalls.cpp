// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/ExchangeFrame.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/ViewDataManager/ViewGroupManager.h"
#include "QorviViewPlugin/base/TextConversion.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace QorviViewPlugin {
namespace {

// No default view, as the host and as the server write it. Only these exact texts are translated.
constexpr char kHostNoView[] = "-3";
constexpr char kServerNoView[] = "-1";

void AnswerGetClientViewConfig(const protocol::GetClientDefaultViewConfigRequest&,
                               protocol::GetClientDefaultViewConfigResponse& response) {
  protocol::ViewConfig& config = response.ViewData.ViewDefaultConfig;
  int viewId = -1;
  ErrorCode error;
  if (!Manager().GetDefaultViewConfig(viewId, config.view_type, error)) response.error_info = TextOf(error);
  config.view_id = IntToString(viewId);
  if (config.view_id == kServerNoView) config.view_id = kHostNoView;
}

void AnswerSetClientViewConfig(const protocol::ClienDefaultViewConfigRequest& request,
                               protocol::ClienDefaultViewConfigReponse& response) {
  const int viewId = StringToInt(request.view_id == kHostNoView ? kServerNoView : request.view_id);
  ErrorCode error;
  if (!Manager().SetDefaultViewConfig(viewId, request.view_type, error)) response.error_info = TextOf(error);
}

}  // namespace
}  // namespace QorviViewPlugin

QORVI_EXCHANGE(GetClientViewConfig)
QORVI_EXCHANGE(SetClientViewConfig)
