// SPDX-License-Identifier: Apache-2.0
// Pages and windows from the host's records to the view model's and back. The two ways are not exact inverses: some
// fields go one way only. Nothing is rejected: numbers that cannot be read become 0. Any thread.
#pragma once

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "QorviViewPlugin/protocol/PlanContent.h"

namespace QorviViewPlugin {

// Kinds of window content. The host's empty window, 0, is the model's 100; a code that is not known becomes -1 in the
// model and 0 at the host.
ResourceType PlanItemTypeToResourceType(int type);
int ResourceTypeToPlanItemType(ResourceType type);

// Windows and pages are taken as they come, in order.
ViewPage ToViewPage(const QorviViewPlugin_view_plugin_protocol::PlanPage& page);
CameraGridStruct ToWindow(const QorviViewPlugin_view_plugin_protocol::PlanItem& item);

// The names of resources, the window's own and those of its cycle, stay empty: they are looked up elsewhere.
QorviViewPlugin_view_plugin_protocol::PlanItem ToPlanItem(const CameraGridStruct& window);

}  // namespace QorviViewPlugin
