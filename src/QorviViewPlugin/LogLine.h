// SPDX-License-Identifier: Apache-2.0
// The module names and levels under which the library logs.
#pragma once

#include "VantBase/Log.h"

namespace QorviViewPlugin {

using Vant::Base::details::IOrlFormatLog;

inline constexpr char kInfoModule[] = "ClientVFPluginInfo";
inline constexpr char kErrorModule[] = "ClientVFPluginError";
inline constexpr int kInfoLevel = 3;
inline constexpr int kErrorLevel = 5;

}  // namespace QorviViewPlugin
