#!/bin/sh
# Builds and runs the program in the library's page on the library of a build tree, on a shared one, and with
# the library's sources as a part of it.
# Usage: consumer.sh BUILD-TREE WORK-FOLDER VERSION
set -eux
tree=$1 work=$2 version=$3
cd "$(dirname "$0")/../.."

# runs PROGRAM: files a message, and gets the library's exception for the second one of the same id.
runs() {
  rm -f "$work/trovi.sqlite"
  [ "$("$1" "$work/trovi.sqlite" 7 'Lead the way. Now.')" = '7  Lead the way' ]
  if "$1" "$work/trovi.sqlite" 7 'Again.' 2>"$work/error"; then exit 1; fi
  grep -q '^Erro no banco: ' "$work/error"
}

rm -rf "$work/static" "$work/shared" "$work/moved"
"$CMAKE" --install "$tree" --component TroviCore --prefix "$work/static"
"$CMAKE" -S . -B "$work/shared-tree" -DBUILD_SHARED_LIBS=ON -DTROVI_BUILD_SERVER=OFF \
  -DTROVI_BUILD_EXAMPLES=OFF -DCMAKE_INSTALL_PREFIX="$work/shared"
"$CMAKE" --build "$work/shared-tree" --target install
for flavour in static shared; do
  mv "$work/$flavour" "$work/moved"
  "$CMAKE" -S Tests/Install/Consumer -B "$work/build" --fresh -DCMAKE_PREFIX_PATH="$work/moved"
  "$CMAKE" --build "$work/build"
  runs "$work/build/note"
  export PKG_CONFIG_PATH="$(find "$work/moved" -name pkgconfig)"
  [ "$(pkg-config --modversion TroviCore)" = "$version" ]
  "$CXX" -std=c++20 "$work/build/note.cpp" -o "$work/note" \
    $(pkg-config --cflags --libs TroviCore) -Wl,-rpath,"$PKG_CONFIG_PATH/.."
  runs "$work/note"
  # CMake before 3.23 finds the headers by this alone.
  grep -rq 'INTERFACE_INCLUDE_DIRECTORIES.*/include"' "$PKG_CONFIG_PATH/../cmake"
  mv "$work/moved" "$work/$flavour"
done
# The platform layer and the inside of a connection must not be exported.
find "$work/shared" -name 'libTroviCore.*' -exec nm -DC --defined-only {} + >"$work/symbols"
grep -q 'TroviStore::recados' "$work/symbols"
if grep -E 'platform::|Connection|sqlite3_|utf8proc_' "$work/symbols"; then exit 1; fi

"$CMAKE" -S Tests/Install/Consumer -B "$work/within" -DTROVI_SOURCE="$PWD" \
  -DCMAKE_INSTALL_PREFIX="$work/within/installed"
"$CMAKE" --build "$work/within" --target install
runs "$work/within/installed/bin/note"
[ "$(find "$work/within/installed" -type f)" = "$work/within/installed/bin/note" ]
