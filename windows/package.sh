#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Makes the zips for Windows out of a build folder: for hosts libraries, import libraries, headers and CMake package in one,
# their symbols in another; viewctl and viewserver with the libraries in a third. Then it unpacks the first one somewhere
# else, builds a host from what is in it alone, and runs that under Wine against a viewserver of this machine's, where viewctl
# makes the change that the host has to hear of.
#
# usage: windows/package.sh BUILD PROGRAMS
set -euo pipefail

here=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")" && pwd)
build=$(cd "$1" && pwd)
programs=$(cd "$2" && pwd)
target=x86_64-w64-mingw32
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
name=qorvi-view-plugin-$version-windows-x64
packages=$build/packages

say() { printf 'package: %s\n' "$*"; }
die() {
  printf 'package: %s\n' "$*" >&2
  exit 1
}

# Symbols go into files beside, which debuggers find by the link that is left.
part_symbols() {
  local file base
  mkdir -p "$packages/$name-symbols"
  for file in "$packages/$name"/bin/{QorviViewPlugin,VantBase,NetLink,ErrorText,VeltControl,BizShared,ResourceStore}.dll; do
    base=$packages/$name-symbols/$(basename "$file").debug
    $target-objcopy --only-keep-debug "$file" "$base"
    $target-strip --strip-unneeded "$file"
    (cd "$packages/$name-symbols" && $target-objcopy --add-gnu-debuglink="$base" "$file")
  done
}

# install_to FOLDER COMPONENT...
install_to() {
  local folder=$packages/$1 component
  for component in "${@:2}"; do
    cmake --install "$build" --prefix "$folder" --component "$component" >>"$build/install.log"
  done
  cp "$here/../LICENSE" "$folder"
}

pack() {
  rm -rf "$packages" "$build/install.log"
  mkdir -p "$packages"
  install_to "$name" runtime dev
  rm -rf "$packages/$name/lib/pkgconfig"
  part_symbols
  install_to "$name-tools" runtime tools
  rm -rf "$packages/$name-tools/share/"{bash-completion,fish,zsh}
  $target-strip --strip-unneeded "$packages/$name-tools/bin/"*.{dll,exe}
  local folder
  for folder in "$name" "$name-symbols" "$name-tools"; do
    (cd "$packages" && cmake -E tar cf "$folder.zip" --format=zip "$folder")
    rm -rf "${packages:?}/$folder"
  done
}

# build_host FOLDER: with nothing but the unpacked zip and the compiler.
build_host() {
  $target-g++-posix -std=c++17 -Wall -Wextra -Werror -DNOMINMAX -I"$1/include/qorvi" "$here/host/main.cpp" \
    -o "$1/bin/host.exe" -L"$1/lib" -lResourceStore -lBizShared -lErrorText -lNetLink -lVantBase
}

# wait_for TEXT FILE: until a line of it begins so.
wait_for() {
  local tries
  for ((tries = 0; tries < 600; ++tries)); do
    ! grep -q "^$1" "$2" 2>/dev/null || return 0
    sleep 0.1
  done
  die "no '$1' in $2: $(cat "$2")"
}

run_host() {
  local server url host
  "$programs/viewserver" --data "$1/views.db" --seed "$here/../data/site.json" --listen 127.0.0.1:0 >"$1/server.txt" 2>&1 &
  server=$!
  # shellcheck disable=SC2064
  trap "kill $server 2>/dev/null || true; '$here/wine' --stop; rm -rf '$(dirname "$1")'" EXIT
  wait_for "Listening on" "$1/server.txt"
  url=$(sed -n 's/^Listening on //p' "$1/server.txt")
  VIEWS_PASSWORD=sample-admin "$here/wine" "$1/bin/host.exe" "$url" admin 100 >"$1/host.txt" 2>&1 &
  host=$!
  wait_for "Waiting for a change" "$1/host.txt"
  VIEWCTL_PASSWORD=sample-admin "$programs/viewctl" --server "$url" --user admin call AddPlanGroup \
    '{"Name":"Made by somebody else","ParentID":"-1"}' >"$1/viewctl.txt" 2>&1 || die "viewctl: $(cat "$1/viewctl.txt")"
  wait "$host" || die "the host failed: $(cat "$1/host.txt")"
  cut -c1-110 "$1/host.txt"
}

check() {
  local folder
  folder="$(mktemp -d)/Größe und Maß"
  mkdir "$folder"
  (cd "$folder" && cmake -E tar xf "$packages/$name.zip")
  build_host "$folder/$name"
  "$here/wine" --start
  run_host "$folder/$name"
}

pack
say "$(cd "$packages" && ls -sh ./*.zip | tr '\n' ' ')"
check
say "a host built from the zip alone lists, edits and hears a change under Wine"
