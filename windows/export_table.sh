#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Whether a DLL exports what a table says and nothing else. The table is the one that the other systems' library is held to:
# a readable name a line, "#" begins a comment. The names of types that stand in it as symbols of their own are not exported
# on Windows, where they are reached by the type's other record.
#
# usage: windows/export_table.sh DLL TABLE
set -euo pipefail

exported() {
  x86_64-w64-mingw32-objdump -p "$1" | sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^[[:space:]]*\[ *[0-9]*\] //p' |
    x86_64-w64-mingw32-c++filt | sed -e 's/\[abi:cxx11\]//g' \
    -e 's/std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >/std::string/g'
}

difference=$(diff <(grep -v -e '^#' -e '^$' -e '^typeinfo name for ' "$2" | LC_ALL=C sort -u) <(exported "$1" | LC_ALL=C sort -u)) && {
  echo "$(exported "$1" | sort -u | wc -l) names, as the table has them"
  exit 0
}
echo "< is in the table alone, > is exported alone:"
echo "$difference"
exit 1
