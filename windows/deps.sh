#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# What the Windows build needs beside the cross compiler, built once from Debian's own sources: Qt Core, Boost.Thread, zlib,
# zstd, libcurl with Windows' own TLS, SQLite and SQLiteCpp, libsodium, OpenSSL, GoogleTest. Says on stdout in which folder
# all of it stands together: one below ${XDG_CACHE_HOME:-~/.cache}/qorvi-windows. Each is kept there by its own recipe, those
# of what it links, and the compiler's version, so that a change of one recipe builds that one again.
#
# usage: windows/deps.sh [--where]    --where builds nothing
set -euo pipefail

target=x86_64-w64-mingw32
compiler=$($target-g++-posix -dumpfullversion)
cache=${XDG_CACHE_HOME:-$HOME/.cache}/qorvi-windows
work=$cache/work
jobs=${QORVI_JOBS:-$(nproc)}

# In the order in which they are built.
packages=(gtest zlib zstd boost curl qt sqlite sqlitecpp sodium openssl)
declare -A links=([curl]="zlib zstd" [sqlitecpp]=sqlite)

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

# step NAME FUNCTION: what the function says goes into a log.
step() {
  local began=$SECONDS status
  set +e  # in a condition the first failure would not end it
  (set -e; cd "$work"; "$2") >"$work/$1.log" 2>&1 </dev/null 9>&-
  status=$?
  set -e
  ((status == 0)) || die "$1 cannot be built: $(tail -n 40 "$work/$1.log") (whole log: $work/$1.log)"
  say "$1: $((SECONDS - began)) s"
}

# key NAME: of all that decides how it is built. Comments are not in it.
key() {
  local helper other text
  text=$(declare -f "build_$1")
  for helper in archive library_package package pkg_config; do
    [[ $text != *" $helper "* ]] || text+=$'\n'$(declare -f $helper)
  done
  {
    echo "$compiler"
    echo "$text"
    for other in ${links[$1]-}; do key "$other"; done
  } | sha256sum | head -c 16
}

folder() { echo "$cache/packages/$1-$(key "$1")"; }

# build NAME: into a folder of its own, unless it is there. $prefix is where its recipe installs to.
build() {
  local prefix
  prefix=$(folder "$1")
  [[ ! -f $prefix/complete ]] || return 0
  if [[ ! -f $work/sources.complete ]]; then
    say "building what the Windows build needs into $cache, once"
    mkdir -p "$work"
    step sources build_sources
    touch "$work/sources.complete"
  fi
  # Qt's configure does not take up well what was interrupted.
  rm -rf "$prefix" "${work:?}/$1"
  mkdir -p "$prefix"/{include,lib} "$work/$1"
  link_tools
  step "$1" "build_$1"
  touch "$prefix/complete"
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
  rm -rf "$objects"
  mkdir -p "$objects"
  for source in "$@"; do
    local compiler="$target-g++ -std=c++17"
    [[ $source != *.c ]] || compiler=$target-gcc
    printf '%s\0' "$compiler -O2 ${flags[*]} -c '$source' -o '$objects/$(basename "$source").o'"
  done | xargs -0 -P "$jobs" -I{} sh -c '{}'
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

# library_package NAME TARGET LIBRARY: such a package of one static library.
library_package() {
  package "$1" <<END
if(NOT TARGET $2)
  add_library($2 STATIC IMPORTED GLOBAL)
  set_target_properties($2 PROPERTIES IMPORTED_LOCATION \${prefix}/lib/$3)
  target_include_directories($2 SYSTEM INTERFACE \${prefix}/include)
endif()
END
}

# pkg_config NAME LIBRARY... [-- FLAG...]: the same for pkg-config.
pkg_config() {
  local name=$1 libraries=()
  shift
  while (($#)) && [[ $1 != -- ]]; do
    libraries+=("$1")
    shift
  done
  mkdir -p "$prefix/lib/pkgconfig"
  # shellcheck disable=SC2016
  printf '%s\n' 'prefix=${pcfiledir}/../..' "Name: $name" "Description: $name for Windows" 'Version: 1' \
    'Cflags: -I${prefix}/include'" ${*:2}" 'Libs: -L${prefix}/lib'" ${libraries[*]}" >"$prefix/lib/pkgconfig/$name.pc"
}

# Boost.Thread and what of Chrono and Atomic it uses in one library; its package says so.
build_boost() {
  fetch boost1.81
  local libs=$work/src/boost1.81/libs
  ln -sfn "$(boost_headers)" "$work/boost/boost"
  archive libboost_thread.a -DBOOST_ALL_NO_LIB -DBOOST_THREAD_BUILD_LIB -DBOOST_CHRONO_STATIC_LINK \
    -DBOOST_ATOMIC_STATIC_LINK -DBOOST_ATOMIC_SOURCE -D_WIN32_WINNT=0x0A00 -DBOOST_USE_WINAPI_VERSION=0x0A00 \
    -msse4.1 -I"$work/boost" -I"$libs/atomic/src" -- \
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

build_zlib() {
  fetch zlib
  local source=$work/src/zlib
  cp "$source"/{zlib,zconf}.h "$prefix/include"
  archive libz.a -D_LARGEFILE64_SOURCE=1 -- "$source"/{adler32,compress,crc32,deflate,infback,inffast,inflate,inftrees,trees,uncompr,zutil}.c \
    "$source"/{gzclose,gzlib,gzread,gzwrite}.c
  library_package ZLIB ZLIB::ZLIB libz.a
  pkg_config zlib -lz
}

build_zstd() {
  fetch libzstd
  local lib=$work/src/libzstd/lib
  cp "$lib"/{zstd,zstd_errors}.h "$prefix/include"
  archive libzstd.a -DZSTD_DISABLE_ASM -I"$lib" -- "$lib"/{common,compress,decompress}/*.c
  pkg_config libzstd -lzstd
}

# Its own settings for Windows, of protocols HTTP alone, and replies that are packed by zlib or zstd.
build_curl() {
  fetch curl
  local lib=$work/src/curl/lib
  cp -r "$work/src/curl/include/curl" "$prefix/include"
  archive libcurl.a -w -DBUILDING_LIBCURL -DCURL_STATICLIB -DHTTP_ONLY -DUSE_SCHANNEL -DUSE_WINDOWS_SSPI -DUSE_IPV6 \
    -DENABLE_IPV6 -DHAVE_LIBZ -DHAVE_ZSTD -DUNICODE -D_UNICODE -D_WIN32_WINNT=0x0A00 -I"$work/src/curl/include" -I"$lib" \
    -I"$(folder zlib)/include" -I"$(folder zstd)/include" -- \
    "$lib"/*.c "$lib"/vauth/*.c "$lib"/vquic/vquic.c "$lib"/vtls/{vtls,hostcheck,keylog,x509asn1,schannel,schannel_verify}.c
  package CURL <<'END'
set(CURL_VERSION 7.88.1)
if(NOT TARGET CURL::libcurl)
  add_library(CURL::libcurl INTERFACE IMPORTED GLOBAL)
  target_include_directories(CURL::libcurl INTERFACE ${prefix}/include)
  target_compile_definitions(CURL::libcurl INTERFACE CURL_STATICLIB)
  target_link_libraries(CURL::libcurl INTERFACE ${prefix}/lib/libcurl.a ${prefix}/lib/libz.a ${prefix}/lib/libzstd.a
                                                ws2_32 crypt32 bcrypt advapi32)
endif()
END
}

# Debian's source package has SQLite's files one by one; its makefile puts them together. The settings are Debian's as far as
# they change what a program sees.
build_sqlite() {
  fetch sqlite3
  (cd sqlite && ../src/sqlite3/configure --disable-readline && make sqlite3.c)
  cp sqlite/sqlite3.h "$work/src/sqlite3/src/sqlite3ext.h" "$prefix/include"
  archive libsqlite3.a -DSQLITE_THREADSAFE=1 -DSQLITE_ENABLE_COLUMN_METADATA -DSQLITE_SECURE_DELETE \
    -DSQLITE_ENABLE_UNLOCK_NOTIFY -DSQLITE_ENABLE_DBSTAT_VTAB -DSQLITE_MAX_VARIABLE_NUMBER=250000 -- \
    "$work/sqlite/sqlite3.c"
  library_package SQLite3 SQLite::SQLite3 libsqlite3.a
}

build_sqlitecpp() {
  fetch sqlitecpp
  local source=$work/src/sqlitecpp
  cp -r "$source/include/SQLiteCpp" "$prefix/include"
  archive libSQLiteCpp.a -DSQLITE_ENABLE_COLUMN_METADATA -I"$source/include" -I"$(folder sqlite)/include" -- "$source"/src/*.cpp
  package SQLiteCpp <<'END'
include(CMakeFindDependencyMacro)
find_dependency(SQLite3)
if(NOT TARGET SQLiteCpp)
  add_library(SQLiteCpp INTERFACE IMPORTED GLOBAL)
  target_include_directories(SQLiteCpp SYSTEM INTERFACE ${prefix}/include)
  target_compile_definitions(SQLiteCpp INTERFACE SQLITE_ENABLE_COLUMN_METADATA)
  target_link_libraries(SQLiteCpp INTERFACE ${prefix}/lib/libSQLiteCpp.a SQLite::SQLite3)
endif()
END
}

# With what processors have to offer up to SSE 4.1: on Windows GCC does not align the stack for AVX.
build_sodium() {
  fetch libsodium
  local source=$work/src/libsodium/src/libsodium files
  cp -r "$source"/include/sodium{,.h} "$prefix/include"
  cp "$work/src/libsodium/builds/msvc/version.h" "$prefix/include/sodium"
  mapfile -t files < <(find "$source" -name '*.c')
  archive libsodium.a -w -DCONFIGURED=1 -DSODIUM_STATIC -DNATIVE_LITTLE_ENDIAN=1 -DHAVE_TI_MODE -DHAVE_CPUID \
    -DHAVE_C_VARARRAYS -DHAVE_INLINE_ASM -DHAVE_ATOMIC_OPS -DHAVE_MMINTRIN_H -DHAVE_EMMINTRIN_H -DHAVE_PMMINTRIN_H \
    -DHAVE_TMMINTRIN_H -DHAVE_SMMINTRIN_H -DHAVE_WMMINTRIN_H -I"$prefix/include/sodium" -- "${files[@]}"
  pkg_config libsodium -lsodium -ladvapi32 -- -DSODIUM_STATIC
}

# The libraries alone, without what TLS and the tests of it do not use. They read no file of settings, and name no folder
# of this machine.
build_openssl() {
  local data='C:/Program Files/Common Files/SSL'
  fetch openssl
  (cd openssl && ../src/openssl/Configure mingw64 --cross-compile-prefix=$target- no-shared no-tests no-engine no-legacy \
    no-module no-autoload-config no-dtls no-srp no-comp no-idea no-seed no-rc2 no-rc4 no-bf no-cast no-camellia no-aria \
    no-sm2 no-sm3 no-sm4 no-mdc2 no-rmd160 no-whirlpool no-gost)
  make -C openssl build_generated
  make -C openssl -j "$jobs" OPENSSLDIR="$data" ENGINESDIR="$data" MODULESDIR="$data" libcrypto.a libssl.a
  cp openssl/lib{crypto,ssl}.a "$prefix/lib"
  mkdir "$prefix/include/openssl"
  cp "$work"/src/openssl/include/openssl/*.h openssl/include/openssl/*.h "$prefix/include/openssl"
  package OpenSSL <<'END'
if(NOT TARGET OpenSSL::SSL)
  add_library(OpenSSL::Crypto STATIC IMPORTED GLOBAL)
  set_target_properties(OpenSSL::Crypto PROPERTIES IMPORTED_LOCATION ${prefix}/lib/libcrypto.a)
  target_include_directories(OpenSSL::Crypto SYSTEM INTERFACE ${prefix}/include)
  target_link_libraries(OpenSSL::Crypto INTERFACE ws2_32 gdi32 crypt32)
  add_library(OpenSSL::SSL STATIC IMPORTED GLOBAL)
  set_target_properties(OpenSSL::SSL PROPERTIES IMPORTED_LOCATION ${prefix}/lib/libssl.a)
  target_link_libraries(OpenSSL::SSL INTERFACE OpenSSL::Crypto)
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
  make -C qt sub-src-qmake_all
  make -C qt/src/3rdparty/pcre2 -j "$jobs" release
  make -C qt/src/corelib -f Makefile.qtzlib -j "$jobs" release
  make -C qt/src/corelib -f Makefile -j "$jobs" release
  make -C qt/src/corelib -f Makefile install
  # What its CMake package looks for besides.
  mkdir -p "$prefix/mkspecs/win32-g++"
  for tool in qmake moc rcc; do ln -sfn "$(qmake -query QT_HOST_BINS)/$tool" "$prefix/bin/$tool"; done
}

# --- all together -----------------------------------------------------------------------------------------------

# What is made of headers alone is this machine's own; there are links to it, never to the whole folder, whose C headers are
# another system's.
boost_headers() { echo "${Boost_ROOT:-/usr}/include/boost"; }

link_headers() {
  local name
  ln -sfn "$(boost_headers)" "$prefix/include/boost"
  for name in rapidjson spdlog fmt CLI; do ln -sfn "/usr/include/$name" "$prefix/include/$name"; done
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
  package CLI11 <<'END'
if(NOT TARGET CLI11::CLI11)
  add_library(CLI11::CLI11 INTERFACE IMPORTED GLOBAL)
  target_include_directories(CLI11::CLI11 INTERFACE ${prefix}/include)
endif()
END
}

# One folder of all packages; their files are the same ones, where the file system has links.
put_together() {
  local name
  rm -rf "$prefix"
  mkdir -p "$prefix"
  for name in "${packages[@]}"; do
    cp -al "$(folder "$name")/." "$prefix" 2>/dev/null || cp -a "$(folder "$name")/." "$prefix"
  done
  rm -f "$prefix/complete"
  package_headers
  link_headers
  touch "$prefix/complete"
}

prefix=$cache/$({
  for name in "${packages[@]}"; do key "$name"; done
  declare -f put_together package_headers link_headers package
} | sha256sum | head -c 16)
[[ ${1-} == --where ]] && echo "$prefix" && exit 0
mkdir -p "$cache/packages"
exec 9>"$cache/lock"
flock 9  # another work tree may want the same
if [[ ! -f $prefix/complete ]]; then
  began=$SECONDS
  for name in "${packages[@]}"; do build "$name"; done
  put_together
  rm -rf "$work"
  say "ready in $((SECONDS - began)) s: $(du -sh "$prefix" | cut -f1)"
fi
link_headers
echo "$prefix"
