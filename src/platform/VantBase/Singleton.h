// SPDX-License-Identifier: Apache-2.0
// One instance of a class per process, whichever libraries use it and however they were loaded.
//
// The library that owns T holds the only instance. Its header says, before it defines T,
//     class T;
//     extern template class OWNER_TEMPLATE_API Vant::Base::CSingleton<T>;
// and one of its source files includes "VantBase/SingletonImpl.h" and says
//     template class QORVI_EXPORT_DEFINED Vant::Base::CSingleton<T>;
// so that every other library imports Instance() instead of making a second instance.
#pragma once

namespace Vant::Base {

class CNoncopyable {
 public:
  CNoncopyable(const CNoncopyable&) = delete;
  CNoncopyable& operator=(const CNoncopyable&) = delete;

 protected:
  CNoncopyable() = default;
  ~CNoncopyable() = default;
};

// Marks a class whose objects need outside synchronisation unless its header says otherwise.
class CNonThreadSafe {};

// Makes and keeps the instance (SingletonImpl.h); a class with a private constructor names it as its friend.
template <class T>
struct SingletonStorage;

template <class T>
class CSingleton : private CNoncopyable {
 public:
  // The instance, created on first use; any thread. It lives until the owning library is unloaded.
  static T& Instance();

 protected:
  CSingleton() = default;
  ~CSingleton() = default;
};

}  // namespace Vant::Base
