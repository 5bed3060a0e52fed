// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "VantBase/Platform.h"

#ifdef VANTBASE_BUILD
#define VANTBASE_API QORVI_EXPORT
#else
#define VANTBASE_API QORVI_IMPORT
#endif
