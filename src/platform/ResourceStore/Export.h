// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "VantBase/Platform.h"

#ifdef RESOURCESTORE_BUILD
#define RESOURCESTORE_API QORVI_EXPORT
#else
#define RESOURCESTORE_API QORVI_IMPORT
#endif
