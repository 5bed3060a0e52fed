// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "VantBase/Platform.h"

#ifdef NETLINK_BUILD
#define NETLINK_API QORVI_EXPORT
#else
#define NETLINK_API QORVI_IMPORT
#endif
