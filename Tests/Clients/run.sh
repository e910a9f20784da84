#!/bin/sh
# Runs clients.mjs; skips it without Node, the clients or the bundle of this build.
# Usage: run.sh [BUNDLE SERVER]
cd "$(dirname "$0")"
. ../Support/skip.sh
[ -z "${TROVI_SKIP_CLIENTS-}" ] || TROVI_SKIP_NOTHING=
command -v node >/dev/null || skip "there is no Node"
[ -d node_modules ] || skip "Scripts/setup clients installs the clients"
[ $# = 0 ] || fresh "$1" "$2"
exec node --test clients.mjs
