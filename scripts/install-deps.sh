#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the simulator need,
# asking apt-get only for what is missing.
set -euo pipefail
packages=(cmake make g++ libgtest-dev libgmock-dev libbenchmark-dev libsqlite3-dev sqlite3
          libprotobuf-dev libprotoc-dev protobuf-compiler nlohmann-json3-dev)
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
