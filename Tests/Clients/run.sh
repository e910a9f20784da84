#!/bin/sh
# Runs the tests in a file; without Node or the clients they are skipped.
# Usage: run.sh FILE [BUNDLE SERVER]
cd "$(dirname "$0")"
. ../Support/skip.sh
[ -z "${TROVI_SKIP_CLIENTS-}" ] || TROVI_SKIP_NOTHING=
command -v node >/dev/null || skip "there is no Node"
[ -d node_modules ] || skip "Scripts/clients installs the clients"
[ $# = 1 ] || fresh "$2" "$3"
exec node --test "$1"
