#!/bin/sh
# Runs the tests in a file; skips them without Node or the clients.
# Usage: run.sh FILE [PACKAGE SERVER]
cd "$(dirname "$0")"
. ../Support/skip.sh
[ -z "${TROVI_SKIP_CLIENTS-}" ] || TROVI_SKIP_NOTHING=
command -v node >/dev/null || skip "there is no Node"
[ -d node_modules ] || skip "Scripts/clients installs the clients"
[ $# = 1 ] || fresh "$2" "$3"
exec node --test "$1"
