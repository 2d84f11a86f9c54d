#!/usr/bin/env bash
# Installs the Debian packages a job needs, asking apt-get only for what is missing.
#   scripts/install-deps.sh [GROUP...]   groups: build (default), bench, fuzz
set -euo pipefail

declare -A groups
groups[build]="cmake make g++ libgtest-dev libgmock-dev libbenchmark-dev libsqlite3-dev sqlite3
               libprotobuf-dev libprotoc-dev protobuf-compiler nlohmann-json3-dev"
groups[bench]="valgrind libprotozero-dev rapidjson-dev python3-matplotlib
               libprotobuf-c-dev protobuf-c-compiler nanopb libnanopb-dev"
groups[fuzz]=""

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
echo "installing: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO=sudo; fi
$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
