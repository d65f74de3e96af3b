#!/bin/bash
# Builds the third-party libraries of the Windows program into .libraries/windows, where CMake's Windows preset looks:
# cmake/windows-libraries.sh [LIBRARY…], by default all of them. A library is built again only when its recipe has
# changed. The sources are the upstream tarballs of Debian's source packages, so both platforms use the same versions.
# apt checks their signatures.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=$root/.libraries
prefix=$folder/windows
source "$root/cmake/packages.sh"
source "$root/cmake/debian-sources.sh"

# The table: name, Debian source package. The function build_NAME below builds a library. Its arguments are the unpacked
# source and an empty folder to build in.
libraries="
  pcre2 pcre2
  expat expat
  libzip libzip
  curl curl
  sqlite sqlite3
  exif libexif
  taglib taglib
"

# UTF-16 only, which is what names are kept as.
build_pcre2() {
  build_with_cmake "$1" "$2" -DPCRE2_BUILD_PCRE2_8=OFF -DPCRE2_BUILD_PCRE2_16=ON -DPCRE2_SUPPORT_JIT=ON \
    -DPCRE2_BUILD_PCRE2GREP=OFF -DPCRE2_BUILD_TESTS=OFF
}

build_expat() {
  local source=$1
  # In some versions the tarball is the whole repository, with the library in its own folder.
  [ ! -d "$source/expat" ] || source=$source/expat
  build_with_cmake "$source" "$2" -DEXPAT_SHARED_LIBS=OFF -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF \
    -DEXPAT_BUILD_TESTS=OFF -DEXPAT_BUILD_DOCS=OFF
}

# Deflate alone, with Debian's zlib: scan files use no other compression and no encryption.
build_libzip() {
  build_with_cmake "$1" "$2" -DENABLE_COMMONCRYPTO=OFF -DENABLE_GNUTLS=OFF -DENABLE_MBEDTLS=OFF -DENABLE_OPENSSL=OFF \
    -DENABLE_WINDOWS_CRYPTO=OFF -DENABLE_BZIP2=OFF -DENABLE_LZMA=OFF -DENABLE_ZSTD=OFF -DBUILD_TOOLS=OFF \
    -DBUILD_REGRESS=OFF -DBUILD_EXAMPLES=OFF -DBUILD_DOC=OFF
}

# Mail to a server only. The system itself encrypts. Host names are looked up on a thread, so that a time limit holds
# there as well.
build_curl() {
  local protocol off=()
  for protocol in DICT FILE FTP GOPHER HTTP IMAP LDAP LDAPS MQTT POP3 RTSP SMB TELNET TFTP; do
    off+=("-DCURL_DISABLE_$protocol=ON")
  done
  build_with_cmake "$1" "$2" "${off[@]}" -DCURL_USE_SCHANNEL=ON -DCURL_WINDOWS_SSPI=ON -DENABLE_THREADED_RESOLVER=ON \
    -DENABLE_UNICODE=ON -DCURL_ZLIB=OFF -DCURL_BROTLI=OFF -DCURL_ZSTD=OFF -DUSE_NGHTTP2=OFF -DUSE_LIBIDN2=OFF \
    -DUSE_WIN32_IDN=OFF -DUSE_WIN32_LDAP=OFF -DCURL_USE_LIBPSL=OFF -DCURL_USE_LIBSSH2=OFF -DCURL_USE_LIBSSH=OFF \
    -DCURL_DISABLE_ALTSVC=ON -DCURL_DISABLE_HSTS=ON -DCURL_DISABLE_COOKIES=ON -DCURL_DISABLE_NETRC=ON \
    -DBUILD_CURL_EXE=OFF -DBUILD_TESTING=OFF -DENABLE_MANUAL=OFF -DENABLE_CURL_MANUAL=OFF
}

# The tarball is the canonical source. Its own makefile puts the one large C file together with tclsh. The cross
# compiler compiles that file alone. No extension is ever loaded.
build_sqlite() {
  local source=$1 build=$2
  (cd "$build" && "$source/configure" --disable-tcl --disable-readline && make sqlite3.c sqlite3.h)
  (cd "$build" && x86_64-w64-mingw32-gcc-posix -O2 -DNDEBUG -DSQLITE_THREADSAFE=1 -DSQLITE_OMIT_LOAD_EXTENSION \
    -DSQLITE_DEFAULT_MEMSTATUS=0 -c sqlite3.c -o sqlite3.o)
  x86_64-w64-mingw32-ar rcs "$build/libsqlite3.a" "$build/sqlite3.o"
  mkdir -p "$prefix/include" "$prefix/lib"
  cp "$build/sqlite3.h" "$prefix/include/"
  cp "$build/libsqlite3.a" "$prefix/lib/"
}

# Properties of pictures. The tarball has no configure script, and the library no needs that one would find out. Texts
# are not translated.
build_exif() {
  local source=$1/libexif build=$2 file
  echo '#include <stdint.h>' >"$build/_stdint.h"
  mkdir -p "$build/libexif" "$prefix/include/libexif" "$prefix/lib"
  : >"$build/config.h"
  cp "$build/_stdint.h" "$build/libexif/"
  for file in "$source"/*.c "$source"/*/*.c; do
    x86_64-w64-mingw32-gcc-posix -O2 -DNDEBUG -DGETTEXT_PACKAGE='"libexif-12"' -DLOCALEDIR='""' -I"$1" -I"$source" \
      -I"$build" -c "$file" -o "$build/$(basename "$(dirname "$file")")-$(basename "$file" .c).o"
  done
  x86_64-w64-mingw32-ar rcs "$prefix/lib/libexif.a" "$build"/*.o
  cp "$source"/*.h "$build/_stdint.h" "$prefix/include/libexif/"
}

# Properties of music.
build_taglib() {
  build_with_cmake "$1" "$2" -DBUILD_EXAMPLES=OFF -DBUILD_TESTS=OFF -DBUILD_TESTING=OFF -DBUILD_BINDINGS=OFF
}

# build_with_cmake SOURCE BUILD OPTION…: for sources that come with a CMakeLists.txt.
build_with_cmake() {
  local source=$1 build=$2
  shift 2
  cmake -S "$source" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/windows.cmake" \
    -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF -DCMAKE_INSTALL_PREFIX="$prefix" "$@"
  ninja -C "$build" install
}

# build NAME SOURCE_PACKAGE
build() {
  local work=$folder/work/$1
  rm -rf "$work"
  mkdir -p "$work/build" "$prefix"
  fetch_index
  fetch "$2" "$work/source"
  "build_$1" "$work/source" "$work/build"
}

# shellcheck disable=SC2086 # a list of words
require_packages $packages_windows_libraries || exit 1
mkdir -p "$prefix"
while read -r name package; do
  [ -n "$name" ] || continue
  [ $# = 0 ] || [[ " $* " == *" $name "* ]] || continue
  recipe=$(declare -f "build_$name" build_with_cmake)
  stamp=$prefix/$name.recipe
  if [ "$(cat "$stamp" 2>/dev/null)" = "$recipe" ]; then
    continue
  fi
  echo "Building $name for Windows…" >&2
  log=$folder/$name.log
  # Runs in its own shell: "set -e" has no effect inside a function that "if" or "||" waits for.
  set +e
  (set -e; build "$name" "$package") >"$log" 2>&1 </dev/null
  code=$?
  set -e
  if [ $code != 0 ]; then
    cat "$log" >&2
    echo "Building $name for Windows failed. Its source comes by apt-get over the network. Where these are missing, copy" >&2
    echo ".libraries/windows from another clone of this project." >&2
    exit 1
  fi
  echo "$recipe" >"$stamp"
done <<<"$libraries"
