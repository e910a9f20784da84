#!/bin/sh
# The Debian packages need what they use and no more, and break no rule of Debian's.
. "$(dirname "$0")/support.sh"
command -v lintian >/dev/null || skip "there is no lintian"
server_package=$(package "$packages"/trovi-mcp_"$version"_*.deb)
library_package=$(package "$packages"/libtrovicore-dev_"$version"_*.deb)

field() { dpkg-deb -f "$1" "$2"; }
[ "$(field "$server_package" Version)" = "$version" ]
[ "$(field "$library_package" Version)" = "$version" ]
needs=$(field "$server_package" Depends)
expr "$needs" : 'libc6 (>= [0-9.]*)$'
if grep -q '^12' /etc/debian_version; then  # what is built here runs on somewhat older systems too
  [ "$needs" = "libc6 (>= 2.35)" ]
fi
[ "$(field "$library_package" Depends)" = "libsqlite3-dev, libutf8proc-dev, uuid-dev" ]
lintian --allow-root --fail-on error "$server_package" "$library_package"
