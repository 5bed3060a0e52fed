// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "VantBase/Platform.h"

#ifdef VELTCONTROL_BUILD
#define VELTCONTROL_API QORVI_EXPORT
#else
#define VELTCONTROL_API QORVI_IMPORT
#endif
