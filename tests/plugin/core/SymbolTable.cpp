// SPDX-License-Identifier: Apache-2.0
#include "SymbolTable.h"

#include <cstdio>
#include <memory>
#include <utility>

namespace core_test {
namespace {

void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

// A line is "[address] letter name".
std::string NameIn(std::string line) {
  while (!line.empty() && line.back() == '\n') line.pop_back();
  const size_t letter = line.find_first_not_of("0123456789abcdef ");
  if (letter == std::string::npos || letter + 2 >= line.size()) return "";
  std::string name = line.substr(letter + 2);
  for (const auto& [from, to] :
       {std::pair{"std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >", "std::string"},
        std::pair{"std::basic_string_view<char, std::char_traits<char> >", "std::string_view"},
        std::pair{"[abi:cxx11]", ""}}) {
    ReplaceAll(name, from, to);
  }
  return name;
}

std::set<std::string> Symbols(const std::string& kind, const std::string& library) {
  std::set<std::string> names;
  const std::string command = std::string(NM_PROGRAM) + " -D -C " + kind + " '" + library + "'";
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
  if (!output) return names;
  std::string line;
  char piece[4096];
  while (std::fgets(piece, sizeof piece, output.get())) {
    line += piece;
    if (line.back() != '\n') continue;
    const std::string name = NameIn(std::exchange(line, {}));
    if (!name.empty()) names.insert(name);
  }
  return names;
}

}  // namespace

std::set<std::string> DefinedSymbols(const std::string& library) {
  return Symbols("--defined-only", library);
}

std::set<std::string> UndefinedSymbols(const std::string& library) {
  return Symbols("--undefined-only", library);
}

std::string Difference(const std::set<std::string>& expected, const std::set<std::string>& actual) {
  std::string text;
  for (const std::string& name : actual) {
    if (!expected.contains(name)) text += "+ " + name + "\n";
  }
  for (const std::string& name : expected) {
    if (!actual.contains(name)) text += "- " + name + "\n";
  }
  return text;
}

}  // namespace core_test
