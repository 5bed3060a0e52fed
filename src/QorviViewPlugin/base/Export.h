// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "VantBase/Platform.h"

#ifdef QORVIVIEWPLUGIN_BUILD
#define QORVIVIEWPLUGIN_API QORVI_EXPORT
#else
#define QORVIVIEWPLUGIN_API QORVI_IMPORT
#endif
