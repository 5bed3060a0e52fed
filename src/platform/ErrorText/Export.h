// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "VantBase/Platform.h"

#ifdef ERRORTEXT_BUILD
#define ERRORTEXT_API QORVI_EXPORT
#else
#define ERRORTEXT_API QORVI_IMPORT
#endif
