// SPDX-License-Identifier: Apache-2.0
// The 23 functions that a host loads by their plain names. In their vocabulary a view is a "plan" and a view group a
// "plan group".
//
// Rules for all of them:
//  - Any thread may call any of them at any time. Calls that ask the server block until it answers.
//  - Nothing is thrown across this boundary.
//  - In a child that the host makes with fork() after the first request to the server, calls that ask the server fail,
//    with an error text, and nothing is heard of changes; the parent goes on undisturbed. Fork first where a child is
//    to work with the server.
//  - The library passes std::string across it: host and library must be built against the same standard library.
//
// Rules for the 17 exchanges, bool F(request, response):
//  - `request` is UTF-8 JSON text. An empty or malformed request, or the text "null", is not an error: the call goes
//    on with the default of every key. Keys that are missing or hold a value of the wrong kind keep their default.
//  - `response` is replaced with compact JSON text, on success and on failure alike, unless a function says otherwise.
//  - The result is true exactly when the response's error text is empty, unless a function says otherwise.
// docs/exchanges.md lists the keys of every request and response.
#pragma once

#include <string>

#include "QorviViewPlugin/base/Export.h"
#include "ResourceStore/ResourceObserver.h"

extern "C" {

// Start and stop. Both answer true, also when repeated; the data is loaded by the two IsInit... calls, and stopping
// releases nothing.
QORVIVIEWPLUGIN_API bool InitEnvir();
QORVIVIEWPLUGIN_API bool UnInitEnvir();

// Forgets every cached view and view group and every registered observer. The next IsInit... calls load again.
QORVIVIEWPLUGIN_API void ClearViewData();

// Whether the platform has finished downloading view groups and views.
QORVIVIEWPLUGIN_API bool IsViewResourceDownFinish();
// Whether plans may be reordered: always true.
QORVIVIEWPLUGIN_API bool IsSupportPlanChangeOrder();

// First load, to be polled until each answers true; groups first, because a view joins only a group that is already
// cached. False, and `response` untouched, while the download is unfinished; true, and `response` untouched, when the
// load was already done, by a poll or by a GetPlanDetail that waited for it. A download that cannot be read still
// counts as loaded: its error is in "error_info". From the first call on, changes that other clients make reach the
// cache and the observers.
QORVIVIEWPLUGIN_API bool IsInitViewGroupFinish(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool IsInitViewFinish(const std::string& request, std::string& response);

// Plan groups.
QORVIVIEWPLUGIN_API bool GetPlanGroups(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool AddPlanGroup(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool UpdatePlanGroup(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool DeletePlanGroup(const std::string& request, std::string& response);

// Plans. GetPlansInGroup and GetPlanDetail wait without limit for the download to finish when the request says
// "resource_download_judge" true. GetPlanConfig answers constant switches and true.
QORVIVIEWPLUGIN_API bool GetPlansInGroup(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool GetPlanDetail(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool GetPlanConfig(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool AddPlan(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool UpdatePlan(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool DeletePlan(const std::string& request, std::string& response);

// Users and sharing. GetCurrentUser answers whether somebody is logged in. GetAllUserInfo runs the host's event loop
// while it waits. ViewShareUsers is false also when only some of the users could not be given the view; the response
// then lists them.
QORVIVIEWPLUGIN_API bool GetCurrentUser(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool GetAllUserInfo(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool ViewShareUsers(const std::string& request, std::string& response);

// The client's default view; "view_id" "-3" stands for none.
QORVIVIEWPLUGIN_API bool GetClientViewConfig(const std::string& request, std::string& response);
QORVIVIEWPLUGIN_API bool SetClientViewConfig(const std::string& request, std::string& response);

// Registers or withdraws an observer: {"ResourceType":16000 view or 16001 view group,"ID":"<decimal id>",
// "IsRegister":true or false}. A null observer and another "ResourceType" are ignored; an "ID" that is no number counts
// as 0, for which nobody is told of anything. What cannot be read as JSON has neither. The observer is not owned. It is
// called on the thread on which a change arrived. It may call back into the library but from the notice that a group
// went (enum_state 4, child_type 16001): that comes under the lock of the group table, and the call would wait for
// ever. Withdraw it before you destroy it. A notice that is already on its way may reach it once more. So withdraw it
// on the thread that notifies it, if there is only one, or when no more changes arrive.
QORVIVIEWPLUGIN_API void ViewRegisterResourceUpdate(ResourceData::IResourceObserver* observer, std::string request);

}  // extern "C"
