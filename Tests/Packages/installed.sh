#!/bin/sh
# Installs the Debian packages on this system, uses them, and removes them again. Runs only on
# request, as root.
. "$(dirname "$0")/support.sh"
[ -n "${TROVI_INSTALL_PACKAGES-}" ] || skip "TROVI_INSTALL_PACKAGES=1 lets it install packages"
server_package=$(package "$packages"/trovi-mcp_"$version"_*.deb)
library_package=$(package "$packages"/libtrovicore-dev_"$version"_*.deb)

trap 'dpkg --purge trovi-mcp libtrovicore-dev; rm -rf "$work"' EXIT
DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
  "$server_package" "$library_package"
installed=$(dpkg -L trovi-mcp libtrovicore-dev | grep -i trovi)

answers trovi-mcp
cmake -S "$here/../Install/Stranger" -B "$work/build"
cmake --build "$work/build"
"$work/build/stranger" "$work/by-cmake"
[ "$(pkg-config --modversion TroviCore)" = "$version" ]

dpkg --purge trovi-mcp libtrovicore-dev
for file in $installed; do
  if [ -e "$file" ]; then
    echo "left behind: $file"
    exit 1
  fi
done
