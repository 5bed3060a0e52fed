// SPDX-License-Identifier: Apache-2.0
#include "QorviViewPlugin/Exchange.h"
#include "QorviViewPlugin/QorviViewPlugin.h"
#include "QorviViewPlugin/TextConversion.h"
#include "QorviViewPlugin/protocol/UserMessages.h"

namespace {

using namespace QorviViewPlugin;
using namespace QorviViewPlugin_view_plugin_protocol;
using Vant::Base::Error::ErrorCode;

// "No default view", as the host and as the server say it.
constexpr char kNoneAtHost[] = "-3";
constexpr char kNoneAtServer[] = "-1";

}  // namespace

bool GetClientViewConfig(const std::string& request, std::string& response) {
  return RunExchange<GetClientDefaultViewConfigRequest, GetClientDefaultViewConfigResponse>(
      request, response, [](const GetClientDefaultViewConfigRequest&, GetClientDefaultViewConfigResponse& to) {
        ViewConfig& config = to.ViewData.ViewDefaultConfig;
        int viewId = -1;
        ErrorCode error;
        if (!Manager().GetDefaultViewConfig(viewId, config.view_type, error)) to.error_info = ErrorTextOf(error);
        config.view_id = IntToString(viewId);
        if (config.view_id == kNoneAtServer) config.view_id = kNoneAtHost;
      });
}

bool SetClientViewConfig(const std::string& request, std::string& response) {
  return RunExchange<ClienDefaultViewConfigRequest, ClienDefaultViewConfigReponse>(
      request, response, [](const ClienDefaultViewConfigRequest& from, ClienDefaultViewConfigReponse& to) {
        const int viewId = StringToInt(from.view_id == kNoneAtHost ? kNoneAtServer : from.view_id);
        ErrorCode error;
        if (!Manager().SetDefaultViewConfig(viewId, from.view_type, error)) to.error_info = ErrorTextOf(error);
      });
}
