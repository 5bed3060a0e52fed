// SPDX-License-Identifier: Apache-2.0
// The dynamic symbols of a library, as nm shows them.
#pragma once

#include <set>
#include <string>

namespace core_test {

// Readable names of the symbols that the library defines, or leaves undefined; empty when nm could not be run.
// "std::string" and "std::string_view" stand for their long forms, and ABI tags are left out.
std::set<std::string> DefinedSymbols(const std::string& library);
std::set<std::string> UndefinedSymbols(const std::string& library);

// What stands in `actual` only ("+ name") and in `expected` only ("- name"), a line each.
std::string Difference(const std::set<std::string>& expected, const std::set<std::string>& actual);

}  // namespace core_test
