#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
#
# Runs viewctl.exe and viewserver.exe under Wine: the demo's tour, each of the two against this machine's other one, in a
# folder whose name has blanks and umlauts, a store that another server holds, a picture without viewdraw, and Ctrl-C.
#
# usage: windows/programs_test.sh BUILD PROGRAMS    PROGRAMS: the folder of this machine's viewctl and viewserver
set -euo pipefail

here=$(cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")" && pwd)
build=$(cd "$1" && pwd)/bin
programs=$(cd "$2" && pwd)
site=$here/../data/site.json
top=$(mktemp -d)
folder="$top/Größe und Maß"
mkdir "$folder"
servers=()
: >"$folder/configuration"
export VIEWCTL_CONFIG=$folder/configuration VIEWCTL_PASSWORD=sample-maria

# shellcheck disable=SC2317
cleanup() {
  kill "${servers[@]}" 2>/dev/null || true
  wait 2>/dev/null || true
  rm -rf "$top"
}
trap cleanup EXIT

say() { printf 'programs: %s\n' "$*"; }
die() {
  printf 'programs: %s\n' "$*" >&2
  exit 1
}

# Under Wine, and this machine's own.
on_windows() { "$here/wine" "$build/$1.exe" "${@:2}"; }
here_too() { "$programs/$1" "${@:2}"; }

# serve SYSTEM STORE: a viewserver of that system with the sample site; $url is where it listens.
serve() {
  local log="$folder/$1 server.txt" tries
  # A job of its own, which signals reach.
  local server=("$programs/viewserver")
  [[ $1 == here_too ]] || server=("$here/wine" "$build/viewserver.exe")
  "${server[@]}" --data "$2" --seed "$site" --listen 127.0.0.1:0 >"$log" 2>&1 &
  servers+=($!)
  for ((tries = 0; tries < 600; ++tries)); do
    url=$(sed -n 's/^Listening on \([^\r]*\)\r*$/\1/p' "$log")
    [[ -z $url ]] || return 0
    sleep 0.1
  done
  die "the server does not start: $(cat "$log")"
}

# lines FILE: without the twigs of a tree, and sorted: in which order names stand is the system's to say.
lines() { sed 's/^[│├└─ ]*//' "$1" | LC_ALL=C sort; }

# same NAME COMMAND...: both systems' viewctl say the same and end in the same way.
same() {
  local name=$1 status=0 other=0
  shift
  on_windows viewctl --server "$url" --user maria "$@" >"$folder/windows.txt" 2>"$folder/windows.err" || status=$?
  here_too viewctl --server "$url" --user maria "$@" >"$folder/here.txt" 2>"$folder/here.err" || other=$?
  ((status == other)) || die "$name: ends with $status, here with $other: $(cat "$folder/windows.err")"
  diff <(lines "$folder/here.txt") <(lines "$folder/windows.txt") && diff "$folder/here.err" "$folder/windows.err" ||
    die "$name differs"
}

tour() {
  on_windows viewctl demo >"$folder/tour.txt" 2>"$folder/tour.err" || die "the demo fails: $(cat "$folder/tour.err")"
  cat "$folder/tour.txt"
  [[ ! -s $folder/tour.err ]] || die "the demo says $(cat "$folder/tour.err")"
  grep -q "^That was the tour" "$folder/tour.txt" || die "the tour does not come to its end"
}

# Reading, editing, and files to and from that folder.
work() {
  same "the tree" tree
  same "a view" show 110
  same "a page in letters" draw 110
  same "an id that is none" show 99999
  on_windows viewctl --server "$url" --user maria export -o "$folder/Größe.json" group:1
  here_too viewctl --server "$url" --user maria export -o "$folder/here.json" group:1
  cmp "$folder/Größe.json" "$folder/here.json" || die "exports differ"
  on_windows viewctl --server "$url" --user maria mkdir "Über Maß"
  same "the tree with a new folder" tree
  on_windows viewctl --server "$url" --user maria import "$folder/Größe.json" --into "Über Maß" >"$folder/import.txt"
  grep -q "failed 0" "$folder/import.txt" || die "import: $(cat "$folder/import.txt")"
  same "the tree with what was imported" tree
}

"$here/wine" --start
tour
say "the demo's tour ends well"
serve on_windows "$folder/views.db"
work
status=0
on_windows viewctl --server "$url" --user maria draw 110 -o "$folder/110.svg" 2>"$folder/draw.err" || status=$?
((status == 2)) && grep -q "viewdraw, which was not found" "$folder/draw.err" || die "draw: $status, $(cat "$folder/draw.err")"
status=0
on_windows viewserver --data "$folder/views.db" --listen 127.0.0.1:0 >"$folder/second.txt" 2>&1 || status=$?
((status != 0)) || die "a second server takes the same store"
sed "s|$top|TMP|g; s/^/programs: a second server: /" "$folder/second.txt"
say "viewserver.exe serves viewctl.exe and viewctl, out of a folder with blanks and umlauts"
# Wine makes a console's Ctrl-C of the signal.
kill -INT "${servers[-1]}"
status=0
wait "${servers[-1]}" || status=$?
((status == 0)) || die "viewserver.exe ends with $status after Ctrl-C"
say "viewserver.exe ends well on Ctrl-C"
serve here_too "$folder/other.db"
work
say "viewctl.exe works with viewserver as viewctl does"
