// SPDX-License-Identifier: Apache-2.0
// Between the host's records and the view model.
#pragma once

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "QorviViewPlugin/protocol/PlanContentRecords.h"

namespace QorviViewPlugin {

// The host's ids for the top level, -2 and -4, become -1; AddPlan folds only the first.
unsigned int FoldBothTopLevels(unsigned int id);
unsigned int FoldFirstTopLevel(unsigned int id);

// The owner of something of that type: nobody for public (0), else the current user.
unsigned int OwnerOfType(int type);

// Waits, actively and without limit, until the platform has downloaded the views.
void AwaitDownload();

// What a window shows, in the host's numbers and in the model's. A number that is not in the table becomes -1 in the
// model and 0, an empty window, at the host.
ResourceType PlanItemTypeToResourceType(int type);
int ResourceTypeToPlanItemType(ResourceType type);

// Pages and windows are taken as they come; nothing is checked, sorted or dropped.
ViewPage ToModel(const QorviViewPlugin_view_plugin_protocol::PlanPage& page);

enum class ResourceNames { Filled, Empty };
// Names come from the elements that the platform holds.
QorviViewPlugin_view_plugin_protocol::PlanPage ToHost(const ViewPage& page, ResourceNames names);

}  // namespace QorviViewPlugin
