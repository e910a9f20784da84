# Read by the tests of packages. Usage of each: NAME.sh PACKAGES-FOLDER VERSION SERVER
set -eu
here=$(cd "$(dirname "$0")" && pwd)
. "$here/../Support/skip.sh"
packages=$1 version=$2 server=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The package of this name, made of this build.
package() {
  fresh "$1" "$server"
  echo "$1"
}

# An executable names its version and ends with status 0; its inbox is thrown away.
answers() {
  request='{"jsonrpc":"2.0","id":1,"method":"initialize"}'
  echo "$request" | HOME=$work "$1" >"$work/reply"
  grep -qF "\"version\":\"$version\"" "$work/reply"
}
