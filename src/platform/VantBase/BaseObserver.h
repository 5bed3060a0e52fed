// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Vant::Base {

// Common base of the platform's observers. Observers of the user list are kept by ResourceStore::COrlUserManager.
// Observers of views and groups do not have this base (ResourceStore/ResourceObserver.h); the library keeps them
// (QorviViewPlugin/ViewObserverManager).
class IBaseObserver {
 protected:
  ~IBaseObserver() = default;
};

}  // namespace Vant::Base
