#!/bin/sh
# The Debian packages need what they use and no more, and break no rule of Debian's.
. "$(dirname "$0")/support.sh"
command -v lintian >/dev/null || skip "there is no lintian"
server_package=$(package "$packages"/trovi-mcp_"$version"_*.deb)
library_package=$(package "$packages"/libtrovicore-dev_"$version"_*.deb)

field() { dpkg-deb -f "$1" "$2"; }
[ "$(field "$server_package" Version)" = "$version" ]
[ "$(field "$library_package" Version)" = "$version" ]
expr "$(field "$server_package" Depends)" : 'libc6 (>= [0-9.]*)$'
[ "$(field "$library_package" Depends)" = "libsqlite3-dev, libutf8proc-dev, uuid-dev" ]
lintian --allow-root --fail-on error "$server_package" "$library_package"
