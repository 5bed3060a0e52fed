#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Has clang read the sources of library and platform as for Windows, each library as itself and the headers that are for
# hosts as a host sees them, and say what the cross compiler lets pass and Visual Studio need not: extensions of GCC's, values
# that lose half of their bits where `long` has 32, what is exported here and imported there. Nothing is linked.
#
# usage: windows/check.sh DEPS    the folder that windows/deps.sh says
set -euo pipefail

root=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.." && pwd)
deps=$1
gcc=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")/include
flags=(--target=x86_64-w64-mingw32 -fsyntax-only -nostdinc
  -isystem "$gcc/c++" -isystem "$gcc/c++/x86_64-w64-mingw32" -isystem "$(clang++ -print-resource-dir)/include"
  -isystem /usr/x86_64-w64-mingw32/include -isystem "$deps/include" -isystem "$deps/include/QtCore"
  -I"$root/src" -I"$root/src/platform" -include "$root/src/json/AllocationFailure.h"
  -D_WIN32_WINNT=0x0A00 -DNOGDI -DNOMINMAX -DWIN32_LEAN_AND_MEAN -DCURL_STATICLIB -DSPDLOG_FMT_EXTERNAL -DFMT_HEADER_ONLY
  -Wall -Wextra -Wshadow -Wpedantic -Wshorten-64-to-32 -Wmicrosoft -Wignored-attributes -Wthread-safety -Werror
  -Wno-ambiguous-reversed-operator)  # RapidJSON 1.1 predates the rewritten comparison operators of C++20

# read_as FLAGS FILE...: together, since nearly all of what is read are headers.
read_as() {
  # shellcheck disable=SC2086
  printf '#include "%s"\n' "${@:2}" | clang++ "${flags[@]}" $1 -x c++ - || failed=1
}

failed=
for library in "$root"/src/platform/*/ "$root/src/QorviViewPlugin/"; do
  name=$(basename "$library")
  while read -r folder; do
    files=("$folder"/*.cpp)
    [[ ! -f ${files[0]} ]] || read_as "-std=c++20 -D${name^^}_BUILD" "${files[@]}"
  done < <(find "$library" -type d | sort)
done
for file in "$root"/{src/base,tests/system}/windows/*.cpp; do read_as "-std=c++20 -I$root/tests" "$file"; done
# As hosts see the headers.
for file in "$root"/{tests/plugin/core/HeadersAsCxx17,windows/host/main}.cpp; do read_as -std=c++17 "$file"; done
[[ -z $failed ]]
