#!/usr/bin/env bash
# Installs what the Windows cross build and its tests under wine need: the mingw-w64
# compilers with the POSIX thread model (std::thread and libgomp need it), wine, the
# GoogleTest sources, and the tools to fetch Debian's LAPACK sources (apt-get source).
# The source entries for apt-get source are derived from this machine's own apt
# configuration: each "deb" entry is copied as "deb-src". Safe to run again.
set -euo pipefail

SUDO=""
[ "$(id -u)" -ne 0 ] && SUDO="sudo"

packages=(g++-mingw-w64-x86-64-posix gfortran-mingw-w64-x86-64-posix wine64 googletest dpkg-dev cmake make)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

# deb-src entries: deb822 files (*.sources) get "Types: deb-src" added to their deb
# stanzas; one-line files get their "deb " lines copied as "deb-src ".
srcfile=/etc/apt/sources.list.d/quellon-deb-src
have_src=false
if grep -rqsE '^(Types:.*deb-src|deb-src )' /etc/apt/sources.list /etc/apt/sources.list.d/; then
  have_src=true
fi
if [ "$have_src" = false ]; then
  tmp=$(mktemp)
  for f in /etc/apt/sources.list.d/*.sources; do
    [ -f "$f" ] || continue
    sed -E 's/^Types:[[:space:]]*deb[[:space:]]*$/Types: deb-src/' "$f" | grep -q '^Types: deb-src' || continue
    sed -E 's/^Types:[[:space:]]*deb[[:space:]]*$/Types: deb-src/' "$f" >> "$tmp"
    echo >> "$tmp"
  done
  if [ -s "$tmp" ]; then
    $SUDO install -m 644 "$tmp" "$srcfile.sources"
  else
    for f in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
      [ -f "$f" ] || continue
      sed -nE 's/^deb[[:space:]]+/deb-src /p' "$f"
    done > "$tmp"
    [ -s "$tmp" ] && $SUDO install -m 644 "$tmp" "$srcfile.list"
  fi
  rm -f "$tmp"
  missing+=(update-only)
fi

if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  $SUDO apt-get -o DPkg::Lock::Timeout=600 update -qq
  real=()
  for p in "${missing[@]}"; do [ "$p" = update-only ] || real+=("$p"); done
  if [ ${#real[@]} -gt 0 ]; then
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get -o DPkg::Lock::Timeout=600 install -y -qq \
      --no-install-recommends "${real[@]}" >/dev/null
  fi
fi
