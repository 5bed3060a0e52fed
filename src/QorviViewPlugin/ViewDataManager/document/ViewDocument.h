// SPDX-License-Identifier: Apache-2.0
// The JSON form in which the server holds views and view groups. Writer and readers are not mirror images; where they
// differ, the difference is the server's.
//
// Numbers are 32-bit signed; wider and unsigned model fields travel as their low 32 bits and come back with their sign.
// Digital-zoom corners and fisheye positions are decimal texts ("%f"), centre marks and zoom windows integers in
// thousandths.
#pragma once

#include <string>
#include <string_view>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "QorviViewPlugin/ViewDataManager/document/PathCursor.h"
#include "QorviViewPlugin/ViewDataManager/document/TextCursor.h"

namespace QorviViewPlugin {

// The bodies of add and modify requests.
std::string WriteViewDocument(const ViewInfo& view);
std::string WriteViewGroupDocument(const ViewGroupInfo& group);

// Where an element comes from. It decides what a few keys mean; everything else is read alike.
//
//                      a list reply                     downloaded data and change documents
//  shared views        not told apart                   "SharedUserID" makes a view shared, "SharedUserName" is kept
//  shared groups       not told apart                   "IsSharedView" 1 makes a group shared
//  "ResourceType"      as it is                         7000 means e-map, 7001
//  "ExtendInfo"        not read                         read last
enum class DocumentOrigin { ListReply, Download };

// Read the element that the cursor stands at. Missing keys never fail: numbers become -1 ("Method" 0), texts empty.
ViewInfo ReadView(PathCursor& element, DocumentOrigin origin);
ViewInfo ReadView(TextCursor& element, DocumentOrigin origin);
ViewGroupInfo ReadViewGroup(PathCursor& element, DocumentOrigin origin);
// Appends the groups of a reply or of downloaded data, in its order.
void ReadViewGroups(const NetLink::CRapidJsonProto& reply, DocumentOrigin origin, std::vector<ViewGroupInfo>& groups);

// The number of a change as documents hold it, a decimal text; 0 for anything else.
ChangeNumber ReadChangeNumber(std::string_view text);

// The JSON text that a window may carry in "ExtendInfo": a digital zoom, else a fisheye, else an e-map position. A
// text that is none of them, or no JSON, changes nothing.
void ReadExtendInfo(const std::string& extendInfo, CameraGridStruct& window);

// The server's numbers for the kinds of related resource; a number without a counterpart stands for itself.
RelateResourceType RelateTypeFromServer(int serverType);
int RelateTypeToServerNumber(RelateResourceType type);

}  // namespace QorviViewPlugin
