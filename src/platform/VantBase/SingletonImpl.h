// SPDX-License-Identifier: Apache-2.0
// Definition of CSingleton<T>::Instance(), for the one source file that owns T. T is made with `new` by
// SingletonStorage<T>, which a class with a private constructor names as its friend.
#pragma once

#include <atomic>
#include <memory>

#include "VantBase/Singleton.h"
#include "base/Mutex.h"

namespace Vant::Base {

template <class T>
struct SingletonStorage {
  // Constant-initialised, so Instance() may be called from any other static initialiser; the owner's destructor
  // is registered when the library is loaded and thus runs after that of any local static made later.
  static inline std::atomic<T*> instance{nullptr};
  static inline base::Mutex creation{};
  static inline std::unique_ptr<T> owner GUARDED_BY(creation){};

  static T& Get() {
    T* existing = instance.load(std::memory_order_acquire);
    if (existing) return *existing;
    base::MutexLock lock(creation);
    if (!owner) {
      owner.reset(new T());
      instance.store(owner.get(), std::memory_order_release);
    }
    return *owner;
  }
};

template <class T>
T& CSingleton<T>::Instance() {
  return SingletonStorage<T>::Get();
}

}  // namespace Vant::Base
