# Sourced by the tests of packages. Usage of each: NAME.sh PACKAGES-FOLDER VERSION SERVER
set -eu
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../Support/skip.sh"
packages=$1 version=$2 server=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The package with this name, which must be from this build.
package() {
  fresh "$1" "$server"
  echo "$1"
}

# The executable must report its version and exit with status 0. Its inbox is temporary.
answers() {
  echo '{"jsonrpc":"2.0","id":1,"method":"initialize"}' | HOME=$work "$1" >"$work/reply"
  grep -qF "\"version\":\"$version\"" "$work/reply"
}
