# Sourced by the scripts that build libraries for Windows. Fetches the upstream tarballs of Debian's source packages. The
# caller sets $folder, where apt's lists and the downloads are kept, and sources packages.sh.

# Runs apt with its own lists and sources below .libraries. The system's configuration does not change, and no rights
# are needed.
private_apt() {
  apt-get -q -o Dir::Etc::SourceList="$folder/apt/sources.list" -o Dir::Etc::SourceParts=/dev/null \
    -o Dir::State::Lists="$folder/apt/lists" -o Dir::Cache="$folder/apt/cache" -o APT::Sandbox::User="$(id -un)" "$@"
}

# Downloads the index of Debian's source packages from the place of this machine's binary packages.
fetch_index() {
  local sources=$folder/apt/sources.list
  mkdir -p "$folder"/apt/{lists,cache}/partial
  list_sources >"$sources"
  # A machine with all packages but without apt's lists, as many images are.
  [ -s "$sources" ] || packages_as_root apt-get -q update
  [ -s "$sources" ] || list_sources >"$sources"
  if [ ! -s "$sources" ]; then
    echo "apt knows no Debian package source." >&2
    return 1
  fi
  private_apt update
}

# The source packages' counterpart of each of apt's package sources, as lines for apt.
list_sources() {
  local line="deb-src [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg]"
  # shellcheck disable=SC2016 # the names in the format are apt's to expand
  line+=' $(REPO_URI) $(RELEASE) $(COMPONENT)'
  apt-get indextargets --format "$line" 'Created-By: Packages' 'Origin: Debian' | sort -u
}

# fetch SOURCE_PACKAGE TARGET: unpacks the package's upstream tarball into the target folder.
fetch() {
  local downloads=$folder/downloads/$1 tarballs
  mkdir -p "$downloads" "$2"
  # A package's description may be missing for a version from the security suite; only the tarball matters.
  (cd "$downloads" && private_apt source --download-only --tar-only "$1") || true
  tarballs=("$downloads"/*.orig.tar.*[^c])
  if [ ! -f "${tarballs[0]}" ]; then
    echo "apt-get source brought no tarball for $1." >&2
    return 1
  fi
  tar -xf "$(printf '%s\n' "${tarballs[@]}" | sort -V | tail -n 1)" -C "$2" --strip-components=1
}
