# shellcheck shell=sh
# Read by the other scripts, from anywhere, with their own arguments. The first comment of a script is
# its help text.

help=$(sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0")
case ${1-} in
  -h | --help) printf '%s\n' "$help"; exit 0 ;;
esac
cd "$(dirname "$0")/.." || exit

# Ends the script because of arguments that it does not know.
refuse() {
  printf '%s\n' "$help" >&2
  exit 2
}

# quietly SENTENCE COMMAND...: prints the sentence; what the command prints is shown only if it fails.
quietly() {
  printf '%s\n' "$1"
  shift
  chatter=$(mktemp)
  status=0
  "$@" >"$chatter" 2>&1 || status=$?
  [ "$status" = 0 ] || cat "$chatter" >&2
  rm -f "$chatter"
  return "$status"
}

# Configures the release build unless that has been done. Only Scripts/test needs GoogleTest.
configured() {
  [ -f build/release/build.ninja ] || cmake --preset release -DBUILD_TESTING=OFF
}

# Prints the version in CMakeLists.txt.
project_version() {
  sed -n 's/^project(.* VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt
}

# sums FILE...: prints their SHA-256 checksums as sha256sum does, which macOS does not have.
sums() {
  if command -v sha256sum >/dev/null; then sha256sum "$@"; else shasum -a 256 "$@"; fi
}
