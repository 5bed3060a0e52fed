#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# unit_file_test.sh UNIT VIEWSERVER: systemd finds no fault with the unit file, nor exposes the service much. Skipped
# (77) where there is no systemd-analyze.
set -euo pipefail
command -v systemd-analyze >/dev/null || exit 77
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
sed "s|/usr/bin/viewserver|$2|" "$1" >"$folder/viewserver.service"
said=$(systemd-analyze verify "$folder/viewserver.service" 2>&1) || { echo "$said"; exit 1; }
[[ $said != *viewserver.service* ]] || { echo "$said"; exit 1; }
systemd-analyze security --offline=true --threshold=20 "$folder/viewserver.service" >"$folder/security" ||
  { cat "$folder/security"; exit 1; }
