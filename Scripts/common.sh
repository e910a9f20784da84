# shellcheck shell=sh
# Read by the other scripts, from any folder, with their own arguments. The first comment of a script is
# its help text.

help=$(sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$0")
case ${1-} in
  -h | --help) printf '%s\n' "$help"; exit 0 ;;
esac
from=$PWD
unset CDPATH
cd -P "$(dirname "$0")/.." || exit

# A shell that is interrupted runs its EXIT trap only if it exits.
trap 'exit 129' HUP
trap 'exit 130' INT
trap 'exit 143' TERM

# refuse [SENTENCE]: ends the script because of its arguments.
refuse() {
  printf '%s\n' "$@" "$help" >&2
  exit 2
}

# absolute PATH: prints it, seen from where the caller is.
absolute() {
  case $1 in
    /*) printf '%s\n' "$1" ;;
    *) printf '%s\n' "$from/$1" ;;
  esac
}

# quietly SENTENCE COMMAND...: prints the sentence; what the command prints is shown only if it fails.
quietly() {
  printf '%s\n' "$1"
  shift
  log=$("$@" 2>&1) || { status=$?; printf '%s\n' "$log" >&2; return "$status"; }
}

# may_sudo: whether sudo lets the user in. It asks for the password only if it wants one, and while the
# question can be seen.
may_sudo() {
  command -v sudo >/dev/null && { sudo -n true 2>/dev/null || sudo -v; }
}

# is_ours PRESET: whether it is configured, for the sources here and not for a checkout that was moved or
# copied.
is_ours() {
  [ -f "build/$1/build.ninja" ] &&
    grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "build/$1/CMakeCache.txt"
}

# configure PRESET [OPTION...]
configure() {
  fresh=
  is_ours "$1" || fresh=--fresh
  rm -f "build/$1/build.ninja"  # comes back if this succeeds; the cache comes in any case
  # shellcheck disable=SC2086
  cmake $fresh --preset "$@"
}

# Configures the release build unless that has been done. Only Scripts/test needs GoogleTest.
configured() {
  is_ours release || configure release -DBUILD_TESTING=OFF
}
