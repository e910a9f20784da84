#!/bin/sh
# Installs the library of a build tree, moves it elsewhere, and builds and runs a stranger's program
# on it, with CMake and with pkg-config. The program in the library's README
# uses pkg-config only.
# Usage: stranger.sh BUILD-TREE WORK-FOLDER LIBDIR static|shared VERSION
set -eux
tree=$1 work=$2 libdir=$3 flavour=$4 version=$5
stranger=$(dirname "$0")/Stranger

rm -rf "$work"
"$CMAKE" --install "$tree" --component TroviCore --prefix "$work/installed"
mv "$work/installed" "$work/moved"
if [ "$flavour" = shared ]; then
  # The platform layer and the inside of a connection must not be exported.
  nm -DC --defined-only "$work/moved/$libdir"/libTroviCore.* >"$work/symbols"
  grep -q 'TroviStore::recados' "$work/symbols"
  if grep -E 'platform::|Connection|sqlite3_|utf8proc_' "$work/symbols"; then exit 1; fi
fi

"$CMAKE" -S "$stranger" -B "$work/build" -DCMAKE_PREFIX_PATH="$work/moved"
"$CMAKE" --build "$work/build"
"$work/build/stranger" "$work/by-cmake"

export PKG_CONFIG_PATH="$work/moved/$libdir/pkgconfig"
[ "$(pkg-config --modversion TroviCore)" = "$version" ]
sed '1,/^```cpp$/d;/^```$/,$d' "$stranger/../../../Sources/TroviCore/README.md" >"$work/note.cpp"
for program in "$stranger/main" "$work/note"; do
  "$CXX" -std=c++20 "$program.cpp" -o "$work/$(basename "$program")" \
    $(pkg-config --cflags --libs TroviCore) -Wl,-rpath,"$work/moved/$libdir"
done
"$work/main" "$work/by-pkg-config"
[ "$("$work/note" "$work/by-pkg-config/trovi.sqlite" 7 'Lead the way. Now.')" = '7  Lead the way' ]
