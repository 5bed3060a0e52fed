// SPDX-License-Identifier: Apache-2.0
// Views out of downloaded data and change documents.
#pragma once

#include <string>
#include <vector>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"
#include "VantBase/Error.h"

namespace QorviViewPlugin {

struct ViewList {
  std::vector<ViewInfo> views;
  ChangeNumber completeUpTo = 0;  // the last change that the list holds; 0 where it does not say
};

// `list` becomes what the text holds, in its order. False, with `list` untouched, when the envelope reports an error or
// cannot be read. `error` becomes the envelope's status.
//
// A list of the usual form goes straight from the text into the views, in one pass. Whatever is unusual, in a view or
// in the envelope, is left to the platform's document: the result is always that of ReadViewListByPaths.
bool ReadViewList(const std::string& text, Vant::Base::Error::ErrorCode& error, ViewList& list);

// The same through the platform's document alone.
bool ReadViewListByPaths(const std::string& text, Vant::Base::Error::ErrorCode& error, ViewList& list);

}  // namespace QorviViewPlugin
