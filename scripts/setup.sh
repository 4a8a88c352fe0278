#!/usr/bin/env bash
# Installs what the build needs and a fresh machine of this kind lacks. Safe to run
# again: it only asks apt for packages that are missing.
set -euo pipefail

packages=(cmake g++ make pkg-config libopenblas-dev libgtest-dev libbenchmark-dev libxml2-dev)
# The Python package (python/quellon) and its tests run on Debian's interpreter.
packages+=(python3 python3-numpy python3-pandas python3-matplotlib python3-pytest)
# The fuzz build needs clang with libFuzzer and its OpenMP runtime.
if [ "${QUELLON_WITH_FUZZ:-${CI:-false}}" = "true" ]; then
  packages+=(clang-14 libclang-rt-14-dev libomp-14-dev)
fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -ne 0 ] && SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi
