# What keeps a test from running makes it skipped, and a failure where nothing may be skipped.
skip() {
  echo "skipped: $*" >&2
  [ -z "${TROVI_SKIP_NOTHING-}" ] || exit 1
  exit 77
}

# fresh PACKAGE SERVER: one that is older than the server is of another build.
fresh() {
  [ "$1" -nt "$2" ] || skip "there is no fresh ${1##*/}, which Scripts/package makes"
}
