#!/bin/sh
# A release is whole and has the right checksums; a wrong tag, a gap, a double and a package that no
# bill describes are refused.
. "$(dirname "$0")/support.sh"
for file in "$packages"/*.deb "$packages"/*.cdx.json; do fresh "$file" "$server"; done
cd "$here/../.."
[ -e .git ] || skip "this is not the sources' repository"

# The packages of this machine, under the names of all machines.
mkdir "$work/all"
for file in "$packages"/*.*; do
  for names in amd64:linux-x86_64 arm64:linux-aarch64 arm64:darwin-universal; do
    cp "$file" "$work/all/$(echo "${file##*/}" |
      sed "s/_[a-z0-9]*\.deb$/_${names%:*}.deb/; s/-linux-[a-z0-9_]*\./-${names#*:}./")"
  done
done
gathers() { Scripts/gather "$work/all" "$work/$1"; }
refuses() { if "$@"; then exit 1; fi; }

gathers release
cd "$work/release"
$(command -v sha256sum || echo shasum -a 256) -c SHA256SUMS >"$work/right"
[ "$(grep -c OK "$work/right")" = "$(ls | grep -cv SHA256SUMS)" ]
cd - >/dev/null
tar -tzf "$work/release/trovi-$version.tar.gz" "trovi-$version/CMakeLists.txt"

refuses Scripts/notes "v$version.1" 2>"$work/why"
grep -q "not v$version.1" "$work/why"
bundle=$work/all/trovi-$version-darwin-universal.mcpb
mkdir "$work/all/again"
cp "$bundle" "$work/all/again"
refuses gathers double
rm -r "$work/all/again"
echo >>"$bundle"
refuses gathers unlike-its-bill
rm "$bundle"
refuses gathers gap
