#!/usr/bin/env bash
# Installs the Debian packages the build needs, and only those that are missing.
# Safe to run again: a machine that has everything is left alone.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libsqlite3-dev sqlite3
  libicu-dev
  libgtest-dev libgmock-dev googletest
  libbenchmark-dev
  libcli11-dev nlohmann-json3-dev libfmt-dev
  libcairo2-dev
  python3-dev pybind11-dev python3-pybind11 python3-pytest
  libpq-dev postgresql postgresql-common
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "installing: ${missing[*]}" >&2
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
