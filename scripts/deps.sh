#!/usr/bin/env bash
# Installs the Debian packages the build needs, if any is missing. Quiet when all are there.
set -euo pipefail
need=(cmake ninja-build g++ clang libclang-rt-14-dev pkg-config libicu-dev libgtest-dev libgmock-dev
      libbenchmark-dev python3)
missing=()
for p in "${need[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  SUDO=""; [ "$(id -u)" -ne 0 ] && SUDO=sudo
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}"
fi
