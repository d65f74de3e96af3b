#!/bin/bash
# Builds Qt for the Windows window program, as shared libraries: cmake/windows-qt.sh. That takes some 20 minutes on two
# processors. So the result is kept in the user's cache folder, under a key of the recipe, where all clones find it.
# .libraries/windows-qt in this clone is a link to it.
#
# The source is the upstream tarball of Debian's source package. It has the version of the Qt on this machine, whose
# tools the build uses.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=$root/.libraries
source "$root/cmake/packages.sh"
source "$root/cmake/debian-sources.sh"

# The window needs widgets, pictures and printing. What a library of this machine could bring for Windows is taken from
# Qt's own copies, so that the result does not depend on what is installed here.
build_qt() {
  local source=$1 build=$2 target=$3 feature features=()
  for feature in sql network dbus opengl vulkan icu tabletevent concurrent xml androiddeployqt windeployqt zstd pkg_config; do
    features+=("-DFEATURE_$feature=OFF")
  done
  for feature in zlib pcre2 png jpeg freetype harfbuzz doubleconversion; do
    features+=("-DFEATURE_system_$feature=OFF")
  done
  cmake -S "$source" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/windows-shared.cmake" \
    -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="$(qmake6 -query QT_HOST_LIBS)/cmake" -DCMAKE_INSTALL_PREFIX="$target" -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=ON \
    -DCMAKE_C_COMPILER_LAUNCHER="$(command -v ccache)" -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache)" \
    -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DINPUT_opengl=no "${features[@]}"
  ninja -C "$build" install
}

# The compiler's runtime libraries, which Qt and the program share.
copy_runtime() {
  local target=$1 name
  for name in libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll; do
    cp "$(x86_64-w64-mingw32-g++-posix -print-file-name=$name)" "$target/bin/"
  done
}

# shellcheck disable=SC2086 # a list of words
require_packages $packages_windows_libraries $packages_window || exit 1
recipe=$(declare -f build_qt copy_runtime; grep -hv '^#' "$root"/cmake/windows*.cmake; qmake6 -query QT_VERSION; x86_64-w64-mingw32-g++-posix -dumpfullversion)
key=$(sha256sum <<<"$recipe" | cut -c 1-16)
cache=${XDG_CACHE_HOME:-${HOME:-}/.cache}
# A user without a home folder, as services have, has no cache either.
mkdir -p "$cache" 2>/dev/null && [ -w "$cache" ] || cache=$folder
target=$cache/vantrel/windows-qt-$key
mkdir -p "$folder"
ln -sfn "$target" "$folder/windows-qt"
[ ! -f "$target/complete" ] || exit 0

echo "Building Qt for Windows, which takes a while…" >&2
work=$folder/work/qt
rm -rf "$work" "$target"
mkdir -p "$work/build" "$target/bin"
log=$folder/qt.log
# Runs in its own shell: "set -e" has no effect inside a function that "if" or "||" waits for.
set +e
(set -e; fetch_index; fetch qt6-base "$work/source"; build_qt "$work/source" "$work/build" "$target"; copy_runtime "$target") \
  >"$log" 2>&1 </dev/null
code=$?
set -e
if [ $code != 0 ]; then
  tail -n 100 "$log" >&2
  echo "Building Qt for Windows failed; the whole output is in $log." >&2
  exit 1
fi
rm -rf "$work"
touch "$target/complete"
