#!/bin/sh
# The Debian packages depend on what they use and nothing else, and follow Debian's rules.
. "$(dirname "$0")/support.sh"
command -v lintian >/dev/null || skip "there is no lintian"
server_package=$(package "$packages"/trovi-mcp_"$version"_*.deb)
library_package=$(package "$packages"/libtrovicore-dev_"$version"_*.deb)

field() { dpkg-deb -f "$1" "$2"; }
[ "$(field "$server_package" Version)" = "$version" ]
needs=$(field "$server_package" Depends)
expr "$needs" : 'libc6 (>= [0-9.]*)$'
if grep -q '^12' /etc/debian_version; then  # a build on Debian 12 runs on older systems too
  [ "$needs" = "libc6 (>= 2.35)" ]
fi
[ "$(field "$library_package" Depends)" = "libsqlite3-dev, libutf8proc-dev, uuid-dev" ]
lintian --allow-root --fail-on error "$server_package" "$library_package"
