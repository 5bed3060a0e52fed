// SPDX-License-Identifier: Apache-2.0
// A view on its way from GetPlanDetail to UpdatePlan or AddPlan.
#pragma once

#include <optional>
#include <string>

#include "host/Plugin.h"

namespace host {

struct EditableView {
  std::string id;
  std::string name;
  std::string groupId;  // "-1": in none
  int type = 0;         // 0: nobody's
  int autoCycle = 0;
  int roundTime = 0;
  bool isShared = false;     // somebody else's, to be seen only
  std::string pages = "[]";  // in the one form of KeepPages
};

// The view as the cache has it. Nothing, and `error` why, where there is none.
std::optional<EditableView> ReadEditable(const Plugin& plugin, const std::string& id, std::string& error);
// The same of an answer of GetPlanDetail.
EditableView ToEditable(const rapidjson::Value& detail);

// Makes the server's view as this one, or adds it in its folder. Empty where the server accepted, else its reason;
// `newId` becomes the id of what was added.
std::string Update(const Plugin& plugin, const EditableView& view);
std::string Add(const Plugin& plugin, const EditableView& view, std::string& newId);

}  // namespace host
