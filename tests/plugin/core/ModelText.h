// SPDX-License-Identifier: Apache-2.0
// Records of the view model as texts that name every field, so that tests can compare whole records and say where two
// differ.
#pragma once

#include <string>

#include "QorviViewPlugin/ViewDataManager/ViewRecords.h"

namespace core_test {

// The fields in which `actual` differs from `base`, as "name=value" joined by blanks; texts in quotes.
std::string Difference(const QorviViewPlugin::CameraGridStruct& base, const QorviViewPlugin::CameraGridStruct& actual);
// The own fields; pages as "[split type 'custom split' windows n]".
std::string Difference(const QorviViewPlugin::ViewInfo& base, const QorviViewPlugin::ViewInfo& actual);
std::string Difference(const QorviViewPlugin::ViewGroupInfo& base, const QorviViewPlugin::ViewGroupInfo& actual);

}  // namespace core_test
