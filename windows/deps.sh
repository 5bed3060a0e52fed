#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# What the Windows build needs beside the cross compiler, built once from Debian's own sources: Qt Core, Boost.Thread,
# libcurl with Windows' own TLS, and GoogleTest. Says on stdout in which folder it stands: one below
# ${XDG_CACHE_HOME:-~/.cache}/qorvi-windows, by the content of this file and the compiler's version.
#
# usage: windows/deps.sh [--where]    --where builds nothing
set -euo pipefail

target=x86_64-w64-mingw32
key=$({ cat "${BASH_SOURCE[0]}"; $target-g++-posix -dumpfullversion; } | sha256sum | head -c 16)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/qorvi-windows
prefix=$cache/$key
jobs=${QORVI_JOBS:-$(nproc)}

say() { printf 'deps: %s\n' "$*" >&2; }
die() {
  printf 'deps: %s\n' "$*" >&2
  exit 1
}

# --- sources ----------------------------------------------------------------------------------------------------

# apt with lists of its own: those of source packages, from wherever this machine has its packages.
source_apt() {
  apt-get -q -o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$work/sources.d" \
    -o Dir::State::lists="$work/lists" -o Dir::Cache="$work/archives" -o APT::Sandbox::User="$(id -un)" \
    -o DPkg::Lock::Timeout=300 "$@"
}

build_sources() {
  mkdir -p "$work"/{sources.d,lists/partial,archives/archives/partial,src}
  local file
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ ! -f $file ]] || sed -n 's/^deb /deb-src /p' "$file" >"$work/sources.d/$(basename "${file%.list}").list"
  done
  for file in /etc/apt/sources.list.d/*.sources; do
    [[ ! -f $file ]] || sed 's/^Types:.*/Types: deb-src/' "$file" >"$work/sources.d/$(basename "$file")"
  done
  source_apt update
}

# Debian's versions of a source package, the newest first. A mirror may lack one that its lists have.
versions() {
  local cached=(-o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts="$work/sources.d"
    -o Dir::State::lists="$work/lists" -o Dir::Cache="$work/archives")
  apt-cache "${cached[@]}" showsrc --only-source "$1" | sed -n 's/^Version: //p' | sort -uVr
}

# fetch NAME: the source package, patches and all, in $work/src/NAME.
fetch() {
  local version
  [[ ! -d $work/src/$1 ]] || return 0
  for version in $(versions "$1"); do
    rm -rf "$work/packed" "$work/unpacked"
    mkdir -p "$work/packed"
    (cd "$work/packed" && source_apt source --download-only "$1=$version") || continue
    dpkg-source --no-check -x "$work"/packed/*.dsc "$work/unpacked" || continue
    mv "$work/unpacked" "$work/src/$1"
    return 0
  done
  die "the source package $1 cannot be had"
}

# --- building ---------------------------------------------------------------------------------------------------

# step NAME: build_NAME, once; its output in a log.
step() {
  [[ ! -f $work/done-$1 ]] || return 0
  local began=$SECONDS status
  set +e  # in a condition the first failure would not end it
  (set -e; cd "$work"; "build_$1") >"$work/$1.log" 2>&1 </dev/null
  status=$?
  set -e
  ((status == 0)) || die "$1 cannot be built: $(tail -n 40 "$work/$1.log") (whole log: $work/$1.log)"
  touch "$work/done-$1"
  say "$1: $((SECONDS - began)) s"
}

# The names without a thread model in them, whichever else may be installed.
link_tools() {
  mkdir -p "$work/bin"
  local tool
  for tool in gcc g++ cpp; do ln -sfn "$(command -v $target-$tool-posix)" "$work/bin/$target-$tool"; done
  PATH=$work/bin:$PATH
}

# archive LIBRARY FLAG... -- SOURCE...: compiles these files into a static library.
archive() {
  local library=$1 flags=() source objects=$work/objects/$1
  shift
  while [[ $1 != -- ]]; do
    flags+=("$1")
    shift
  done
  shift
  mkdir -p "$objects"
  for source in "$@"; do
    [[ ! -f $objects/$(basename "$source").o ]] || continue
    local compiler="$target-g++ -std=c++17"
    [[ $source != *.c ]] || compiler=$target-gcc
    printf '%s\0' "$compiler -O2 ${flags[*]} -c '$source' -o '$objects/$(basename "$source").o'"
  done | xargs -0 -P "$jobs" -I{} sh -c '{}'
  rm -f "$prefix/lib/$library"
  $target-ar rcs "$prefix/lib/$library" "$objects"/*.o
}

# package NAME < CMAKE: a CMake package of the prefix.
package() {
  mkdir -p "$prefix/lib/cmake/$1"
  {
    # shellcheck disable=SC2016
    echo 'get_filename_component(prefix ${CMAKE_CURRENT_LIST_DIR}/../../.. ABSOLUTE)'
    cat
  } >"$prefix/lib/cmake/$1/$1Config.cmake"
}

# Boost.Thread and what of Chrono and Atomic it uses in one library; its package says so.
build_boost() {
  fetch boost1.81
  local libs=$work/src/boost1.81/libs
  archive libboost_thread.a -DBOOST_ALL_NO_LIB -DBOOST_THREAD_BUILD_LIB -DBOOST_CHRONO_STATIC_LINK \
    -DBOOST_ATOMIC_STATIC_LINK -DBOOST_ATOMIC_SOURCE -D_WIN32_WINNT=0x0A00 -DBOOST_USE_WINAPI_VERSION=0x0A00 \
    -msse4.1 -I"$prefix/include" -I"$libs/atomic/src" -- \
    "$libs"/thread/src/future.cpp "$libs"/thread/src/tss_null.cpp "$libs"/thread/src/win32/*.cpp \
    "$libs"/chrono/src/*.cpp "$libs"/atomic/src/{lock_pool,wait_on_address,find_address_sse2,find_address_sse41}.cpp
  package Boost <<'END'
set(Boost_VERSION 1.81.0)
set(Boost_INCLUDE_DIRS ${prefix}/include)
if(NOT TARGET Boost::headers)
  add_library(Boost::headers INTERFACE IMPORTED GLOBAL)
  target_include_directories(Boost::headers SYSTEM INTERFACE ${prefix}/include)
  target_compile_definitions(Boost::headers INTERFACE BOOST_ALL_NO_LIB)
  add_library(Boost::boost ALIAS Boost::headers)
  add_library(Boost::system ALIAS Boost::headers)
  add_library(Boost::thread INTERFACE IMPORTED GLOBAL)
  target_link_libraries(Boost::thread INTERFACE ${prefix}/lib/libboost_thread.a Boost::headers)
  target_compile_definitions(Boost::thread INTERFACE BOOST_THREAD_USE_LIB BOOST_CHRONO_STATIC_LINK
                                                     BOOST_ATOMIC_STATIC_LINK)
endif()
set(Boost_thread_FOUND ON)
set(Boost_system_FOUND ON)
END
  printf '%s\n' 'set(PACKAGE_VERSION 1.81.0)' \
    'if(NOT PACKAGE_VERSION VERSION_LESS PACKAGE_FIND_VERSION)' '  set(PACKAGE_VERSION_COMPATIBLE ON)' 'endif()' \
    >"$prefix/lib/cmake/Boost/BoostConfigVersion.cmake"
}

# Its own settings for Windows, and of protocols HTTP alone.
build_curl() {
  fetch curl
  local lib=$work/src/curl/lib
  cp -r "$work/src/curl/include/curl" "$prefix/include"
  archive libcurl.a -w -DBUILDING_LIBCURL -DCURL_STATICLIB -DHTTP_ONLY -DUSE_SCHANNEL -DUSE_WINDOWS_SSPI -DUSE_IPV6 \
    -DENABLE_IPV6 -DUNICODE -D_UNICODE -D_WIN32_WINNT=0x0A00 -I"$work/src/curl/include" -I"$lib" -- \
    "$lib"/*.c "$lib"/vauth/*.c "$lib"/vquic/vquic.c "$lib"/vtls/{vtls,hostcheck,keylog,x509asn1,schannel,schannel_verify}.c
  package CURL <<'END'
set(CURL_VERSION 7.88.1)
if(NOT TARGET CURL::libcurl)
  add_library(CURL::libcurl INTERFACE IMPORTED GLOBAL)
  target_include_directories(CURL::libcurl INTERFACE ${prefix}/include)
  target_compile_definitions(CURL::libcurl INTERFACE CURL_STATICLIB)
  target_link_libraries(CURL::libcurl INTERFACE ${prefix}/lib/libcurl.a ws2_32 crypt32 bcrypt advapi32)
endif()
END
}

# Debian has the sources themselves in a package.
build_gtest() {
  local source=/usr/src/googletest/googletest
  cp -r $source/include/gtest "$prefix/include"
  archive libgtest.a -I$source -I$source/include -- $source/src/gtest-all.cc
  archive libgtest_main.a -I$source/include -- $source/src/gtest_main.cc
  package GTest <<'END'
if(NOT TARGET GTest::gtest)
  foreach(library gtest gtest_main)
    add_library(GTest::${library} INTERFACE IMPORTED GLOBAL)
    target_include_directories(GTest::${library} SYSTEM INTERFACE ${prefix}/include)
    target_link_libraries(GTest::${library} INTERFACE ${prefix}/lib/lib${library}.a)
  endforeach()
  target_link_libraries(GTest::gtest_main INTERFACE GTest::gtest)
endif()
END
}

# The same Qt as this machine's, whose tools for the build (moc, rcc, qmake) are used.
build_qt() {
  local tool
  fetch qtbase-opensource-src
  mkdir -p qt
  (cd qt && ../src/qtbase-opensource-src/configure -prefix "$prefix" -opensource -confirm-license -release \
    -xplatform win32-g++ -device-option CROSS_COMPILE=$target- -external-hostbindir "$(qmake -query QT_HOST_BINS)" \
    -no-gui -no-widgets -no-dbus -no-opengl -no-icu -no-glib -no-pch -qt-zlib -qt-pcre -qt-doubleconversion \
    -nomake examples -nomake tests -nomake tools)
  make -C qt/src/3rdparty/pcre2 -j "$jobs" release
  make -C qt/src/corelib -f Makefile.qtzlib -j "$jobs" release
  make -C qt/src/corelib -f Makefile -j "$jobs" release
  make -C qt/src/corelib -f Makefile install
  # What its CMake package looks for besides.
  mkdir -p "$prefix/mkspecs/win32-g++"
  for tool in qmake moc rcc; do ln -sfn "$(qmake -query QT_HOST_BINS)/$tool" "$prefix/bin/$tool"; done
}

# What is made of headers alone is this machine's own; the prefix has links to it, never to the whole folder, whose C
# headers are another system's.
link_headers() {
  local boost=/usr/include name
  [[ -z ${Boost_ROOT-} ]] || boost=$Boost_ROOT/include
  ln -sfn "$boost/boost" "$prefix/include/boost"
  for name in rapidjson spdlog fmt; do ln -sfn "/usr/include/$name" "$prefix/include/$name"; done
}

package_headers() {
  # shellcheck disable=SC2016
  package RapidJSON <<<'set(RapidJSON_INCLUDE_DIRS ${prefix}/include)'
  package spdlog <<'END'
if(NOT TARGET spdlog::spdlog)
  add_library(spdlog::spdlog INTERFACE IMPORTED GLOBAL)
  target_include_directories(spdlog::spdlog INTERFACE ${prefix}/include)
  target_compile_definitions(spdlog::spdlog INTERFACE SPDLOG_FMT_EXTERNAL FMT_HEADER_ONLY)
endif()
END
}

[[ ${1-} == --where ]] && echo "$prefix" && exit 0
if [[ ! -f $prefix/complete ]]; then
  work=$prefix.work
  began=$SECONDS
  say "building what the Windows build needs into $prefix, once"
  mkdir -p "$prefix"/{include,lib} "$work"
  step sources
  link_tools
  link_headers
  package_headers
  for name in gtest boost curl qt; do step $name; done
  touch "$prefix/complete"
  rm -rf "$work"
  say "built in $((SECONDS - began)) s: $(du -sh "$prefix" | cut -f1)"
fi
link_headers
echo "$prefix"
