#!/usr/bin/env bash
# Installs the Debian packages the build needs, and only those that are missing.
# Safe to run on every build: with everything present it exits without touching apt.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libsqlite3-dev sqlite3
  libspatialite-dev libsqlite3-mod-spatialite
  qtbase5-dev
  libjsoncpp-dev
  libgtest-dev googletest
  libbenchmark-dev
  clang libclang-rt-14-dev
  libgdal-dev gdal-bin
  libzip-dev libxml2-utils
  time
  fonts-dejavu-core fontconfig
)
# Sanitizer runtimes come with gcc; nothing extra to install for them.

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "Installing missing packages: ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
