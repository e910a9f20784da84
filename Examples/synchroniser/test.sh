#!/bin/sh
# Two machines and a shared folder: what one files reaches the other, and goes from both when either deletes it.
# Usage: test.sh SYNCHRONISER TROVI
set -eu
synchroniser=$1 trovi=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir shared
meet() { for inbox in a b a b a b; do "$synchroniser" "$inbox" shared; done; }
titles() { "$trovi" --inbox "$1" list | sed 's/.*  //' | sort | tr '\n' ' '; }

for note in um dois; do "$trovi" --inbox a note $note; done
"$trovi" --inbox b note três
meet
cp -R shared old
id=$("$trovi" --inbox b list | sed -n 's/ .*  um$//p')
"$trovi" --inbox b delete "$id"
# The draft of a run that was killed goes; what others put there is named, and stays.
for machine in shared/*; do
  touch "$machine/$(printf %036d 0).tmp" "$machine/other.json"
done
meet 2>named
grep -q other.json named
[ "$(find shared -name '*.tmp' | grep -c .)" = 0 ]
[ "$(find shared -name other.json | grep -c .)" = 2 ]
rm shared/*/other.json
cp -R old/* shared  # files of an earlier time arrive
meet
[ "$(titles a)" = "dois três " ]
[ "$(titles b)" = "dois três " ]
