#!/bin/sh
# The Debian packages follow Debian's rules, and work once they are installed with what they ask for. They
# are installed on request only, as root, and removed again.
. "$(dirname "$0")/support.sh"
command -v lintian >/dev/null || skip "there is no lintian: Scripts/setup ci installs it"
[ -n "${TROVI_INSTALL_PACKAGES-}" ] || skip "TROVI_INSTALL_PACKAGES=1 lets it install packages"
server_package=$(package "$packages"/trovi-mcp_"$version"_*.deb)
library_package=$(package "$packages"/libtrovicore-dev_"$version"_*.deb)

# The old address is in the licences of libraries, which are not ours to correct.
lintian --allow-root --fail-on error,warning --suppress-tags old-fsf-address-in-copyright-file \
  "$server_package" "$library_package"
[ "$(dpkg-deb -f "$library_package" Depends)" = "libsqlite3-dev, libutf8proc-dev, uuid-dev" ]
trap 'dpkg --purge trovi-mcp libtrovicore-dev; rm -rf "$work"' EXIT
DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
  "$server_package" "$library_package"
answers trovi-mcp
[ "$(trovi --version)" = "trovi $version" ]
cmake -S "$here/../Install/Consumer" -B "$work/build"
cmake --build "$work/build"
[ "$(pkg-config --modversion TroviCore)" = "$version" ]
