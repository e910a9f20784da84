#!/bin/sh
# The archive can be unpacked anywhere, its executables need only the C library and GCC's runtime, and its
# documents fit it.
. "$(dirname "$0")/support.sh"
archive=$(package "$packages"/trovi-mcp-"$version"-*.tar.gz)

tar -C "$work" --strip-components=1 -xzf "$archive"
answers "$work/bin/trovi-mcp"
"$work/bin/trovi" --inbox "$work/notes" note 'Pra roadmap: um mapa.' | grep -q '  Roadmap  '
for executable in "$work/bin/trovi-mcp" "$work/bin/trovi"; do
  objdump -p "$executable" >"$work/needs"
  if grep NEEDED "$work/needs" | grep -vE ' (libc|libm|libgcc_s|ld-linux.*)\.so\.[0-9]$'; then exit 1; fi
  # Only a build on a newer Debian may ask for a newer C library.
  newest=$(grep -o 'GLIBC_2\.[0-9]*' "$work/needs" | sort -V | tail -n 1)
  case $newest in GLIBC_2.34) ;; *) ! grep '^12' /etc/debian_version ;; esac
done
cd "$work/share/doc/trovi-mcp"
for page in README.md LEIAME.md; do
  grep -q '"/PATH/TO/.*/bin/trovi-mcp"' $page
  for link in $(sed -n 's/.*](\([^)#:]*\)).*/\1/p' $page); do [ -e "$link" ]; done
done
grep -q "^## $version\b" CHANGELOG.md
grep -q '^---- .*utf8proc' copyright
for page in trovi-mcp trovi; do
  gzip -dc "$work/share/man/man1/$page.1.gz" | grep -qF "Trovi $version"
done
