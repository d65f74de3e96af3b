# Sourced by ./run, ./test and the scripts beside this file. Lists the Debian packages of each kind of build and
# installs them.

# Packages to build the program. ccache is optional but makes later rebuilds quicker.
packages_program="g++ cmake ninja-build ccache libboost1.81-dev libfmt-dev libicu-dev libpcre2-dev libssl-dev libxxhash-dev libexpat1-dev
  libzip-dev zlib1g-dev libcurl4-openssl-dev libsqlite3-dev libexif-dev libtag1-dev"
# In addition, packages for the window program.
packages_window="qt6-base-dev"
# In addition, to make Debian packages.
packages_deb="dpkg-dev file"
# In addition, to test it on a display of its own.
packages_window_tests="xvfb xauth fonts-dejavu-core"
# In addition, packages to build and run the tests, for Linux and for Windows. The benchmarks are built with them, so
# that they keep compiling, but not run.
packages_tests="git python3 libgtest-dev libgmock-dev googletest libbenchmark-dev g++-mingw-w64-x86-64-posix wine wine64
  clang-format strace libxml2-utils python3-aiosmtpd openssl sqlite3 man-db mandoc zsh fish ncdu jq
  ntfs-3g sleuthkit dpkg-dev file desktop-file-utils"
# In addition, to try the packages in a bare system.
packages_packages_tests="debootstrap lintian unzip"
# In addition, the second compiler, with its fuzzer and its checks of the sources.
packages_clang="clang clang-tidy libclang-rt-dev"
# Packages to fetch and build the libraries for Windows. The tests begin with this step.
packages_windows_libraries="ca-certificates dpkg-dev cmake ninja-build g++-mingw-w64-x86-64-posix
  gcc-mingw-w64-x86-64-posix libz-mingw-w64-dev xz-utils bzip2 gcc
  libc6-dev make tcl"

# require_packages PACKAGE...: installs the missing packages and asks for rights only when there are any. Ends the
# script with a message when it cannot. With VANTREL_SKIP_PACKAGES=1 it does nothing.
require_packages() {
  local installed missing="" package
  [ "${VANTREL_SKIP_PACKAGES:-}" != 1 ] || return 0
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    {
      echo "This system has no apt-get. Install what these Debian packages hold, then set VANTREL_SKIP_PACKAGES=1:"
      printf '  %s\n' "$@"
    } >&2
    exit 1
  fi
  # One question for all of them; its exit code only says that it does not know some of the names.
  installed=$(dpkg-query -W -f '<${db:Status-Status} ${Package}>' "$@" 2>/dev/null) || true
  for package in "$@"; do
    [[ $installed == *"<installed $package>"* ]] || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  echo "Installing:$missing" >&2
  packages_as_root apt-get -q update || echo "apt-get update failed; going on with the lists that are there." >&2
  # shellcheck disable=SC2086 # a list of words
  packages_as_root apt-get -q install -y --no-install-recommends $missing
}

# Runs a command with the right to install. Shows its output only when it fails.
packages_as_root() {
  local output sudo=""
  if [ "$(id -u)" != 0 ]; then
    sudo=sudo
    if ! command -v sudo >/dev/null; then
      echo "Neither root nor sudo: cannot run $*" >&2
      exit 1
    fi
  fi
  output=$(mktemp)
  # A package's own script must not ask questions. sudo may ask, on the terminal.
  if ! $sudo env DEBIAN_FRONTEND=noninteractive "$@" >"$output" 2>&1 </dev/null; then
    cat "$output" >&2
    rm -f "$output"
    return 1
  fi
  rm -f "$output"
}
