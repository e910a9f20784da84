# Skips a test that cannot run, or fails it where nothing may be skipped.
skip() {
  echo "skipped: $*" >&2
  [ -z "${TROVI_SKIP_NOTHING-}" ] || exit 1
  exit 77
}

# fresh PACKAGE SERVER: a package older than the server is from another build.
fresh() {
  [ "$1" -nt "$2" ] || skip "there is no fresh ${1##*/}, which Scripts/package makes"
}
