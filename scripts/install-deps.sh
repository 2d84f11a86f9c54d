#!/usr/bin/env bash
# Installs the Debian packages a job needs, asking apt-get only for what is missing.
#   scripts/install-deps.sh [GROUP...]   groups: build (default), bench, fuzz
set -euo pipefail

declare -A groups
groups[build]="cmake make g++ libgtest-dev libgmock-dev libbenchmark-dev libsqlite3-dev sqlite3
               libprotobuf-dev libprotoc-dev protobuf-compiler nlohmann-json3-dev pkgconf"
groups[bench]="valgrind libprotozero-dev rapidjson-dev python3-matplotlib
               libprotobuf-c-dev protobuf-c-compiler nanopb libnanopb-dev"
groups[fuzz]="clang libclang-rt-14-dev"

wanted=("$@")
[ ${#wanted[@]} -gt 0 ] || wanted=(build)
packages=()
for g in "${wanted[@]}"; do
  if [ -z "${groups[$g]+set}" ]; then
    echo "install-deps: unknown group '$g' (groups: ${!groups[*]})" >&2
    exit 2
  fi
  packages+=(${groups[$g]})
done

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi
install_command="apt-get install -y --no-install-recommends ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null 2>&1; then
    # Nothing here can install packages: say exactly what root must run.
    {
      echo "install-deps: missing Debian packages: ${missing[*]}"
      echo "install-deps: installing them needs root, and this user is not root and has no sudo."
      echo "install-deps: as root, run:"
      echo "    $install_command"
      echo "install-deps: (after 'apt-get update' if a package is not found), then run this command again."
    } >&2
    exit 1
  fi
  SUDO=sudo
fi
echo "installing: ${missing[*]}"
$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
