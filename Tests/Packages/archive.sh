#!/bin/sh
# The archive may be unpacked anywhere, tells who reads what it is, and needs the C library alone.
. "$(dirname "$0")/support.sh"
archive=$(package "$packages"/trovi-mcp-"$version"-*.tar.gz)

tar -C "$work" --strip-components=1 -xzf "$archive"
answers "$work/bin/trovi-mcp"
[ -s "$work/share/doc/trovi-mcp/README.md" ]
if objdump -p "$work/bin/trovi-mcp" | grep NEEDED | grep -vE ' (libc|libm|ld-linux.*)\.so\.[0-9]$'
then exit 1; fi
grep -q "^## $version\b" "$work/share/doc/trovi-mcp/CHANGELOG.md"
gzip -dc "$work/share/man/man1/trovi-mcp.1.gz" | grep -qF "Trovi $version"
