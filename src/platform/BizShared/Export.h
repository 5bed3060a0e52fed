// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "VantBase/Platform.h"

#ifdef BIZSHARED_BUILD
#define BIZSHARED_API QORVI_EXPORT
#define BIZSHARED_TEMPLATE_API QORVI_EXPORT_DECLARED
#else
#define BIZSHARED_API QORVI_IMPORT
#define BIZSHARED_TEMPLATE_API QORVI_IMPORT
#endif
