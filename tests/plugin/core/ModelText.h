// SPDX-License-Identifier: Apache-2.0
// Records of the view model as texts that name every field, so that tests can compare whole records and say where two
// differ.
#pragma once

#include <string>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"

namespace core_test {

// The fields in which `actual` differs from `base`, as "name=value" joined by blanks; texts in quotes, a view's pages
// as "[split type 'custom split' windows n]". Of CameraGridStruct, ViewInfo and ViewGroupInfo.
template <class Record>
std::string Difference(const Record& base, const Record& actual);

}  // namespace core_test
