// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

namespace host {

// The signs of drawings, each kept once for all drawings of a document.
class SharedPaths {
 public:
  // The drawing with its longer paths replaced by references.
  std::string Refer(const std::string& drawing);
  // What they refer to, an SVG element that shows nothing.
  std::string Definitions() const;

 private:
  std::map<std::string, size_t> m_numbers;  // of paths
};

}  // namespace host
