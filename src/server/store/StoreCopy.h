// SPDX-License-Identifier: Apache-2.0
// Copies of whole stores.
#pragma once

#include <string>

namespace server {

// A copy of a store, under another name until it is whole, so that what stands under its own is. Gone with this object
// unless it has become something.
class StoreCopy {
 public:
  // Copies the store as it is at one moment, whoever uses it meanwhile, to `to` + "-part", a file that its owner alone
  // may read. Throws std::runtime_error with one plain line; nothing is left then.
  StoreCopy(const std::string& from, const std::string& to);
  ~StoreCopy();
  StoreCopy(const StoreCopy&) = delete;
  StoreCopy& operator=(const StoreCopy&) = delete;

  // For an administrator who copies for the server's user. Throws std::runtime_error.
  void GiveToOwnerOf(const std::string& file) const;
  // Takes that name, in the place of what may have it, and is on the disk under it. Throws std::runtime_error.
  void Become(const std::string& file) const;

 private:
  void Remove() const;

  const std::string m_part;
};

}  // namespace server
