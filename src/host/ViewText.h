// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <rapidjson/document.h>

#include <string>
#include <vector>

namespace host {

// One view in words for people, from the answer of GetPlanDetail: head, pages, windows and what each window has beyond
// its resource. Several lines, names safe to print. `folder` is where it lies, from the top-level folder down.
std::string DescribeView(const rapidjson::Value& detail, const std::vector<std::string>& folder);

// What a window shows, in a few words.
std::string DescribeResource(const rapidjson::Value& window);

}  // namespace host
