// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace Vant::Base {

// Common base of the platform's observers.
class IBaseObserver {
 protected:
  ~IBaseObserver() = default;
};

}  // namespace Vant::Base
