#!/usr/bin/env bash
# scripts/install-deps.sh run by a user without root and without sudo: it
# stops with a non-zero status and prints the one apt-get command to run.
#   install_deps_test.sh SOURCE_DIR
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A PATH that holds only what the script needs: an unprivileged id, a package
# database where nothing is installed, and no sudo.
mkdir "$work/bin"
printf '#!/bin/sh\necho 1000\n' >"$work/bin/id"
printf '#!/bin/sh\nexit 1\n' >"$work/bin/dpkg-query"
chmod +x "$work/bin/id" "$work/bin/dpkg-query"
ln -s "$(command -v grep)" "$work/bin/grep"

status=0
PATH=$work/bin "$BASH" "$source/scripts/install-deps.sh" build >"$work/out" 2>&1 || status=$?
out=$(cat "$work/out")
fail() { echo "install-deps without root: $*"; echo "$out"; exit 1; }

[ "$status" -ne 0 ] || fail "exited 0"
[ "$(grep -c 'apt-get install' <<<"$out")" -eq 1 ] || fail "does not print exactly one apt-get install command"
command_line=$(grep 'apt-get install' <<<"$out")
for package in cmake g++ libgtest-dev libsqlite3-dev libprotobuf-dev nlohmann-json3-dev pkgconf; do
  grep -qw -- "$package" <<<"$command_line" || fail "the command lacks $package"
done
grep -q "no sudo" <<<"$out" || fail "does not say why it stops"
grep -q "sudo: command not found\|apt-get update -qq" <<<"$out" && fail "tried to run sudo or apt-get"
echo "install-deps without root: stops with: $command_line"
