#!/usr/bin/env bash
# The engine as a Windows DLL, tested under wine: cross-builds it with the test programs
# (scripts/build-windows.sh --tests), runs the soil and solution suites, and runs a host
# that loads quellon.dll at run time, receives both progress window messages in a hidden
# top-level window, and writes documents that must be byte-identical to the Linux
# build's from the same host source. The paths hold a blank and Latin-1 letters: the
# engine opens files with narrow paths, which Windows reads in the ANSI code page (1252
# here); a host with UTF-8 as its code page, and quellon.exe, take other scripts too.
# The Windows build is in $WINDOWS_BUILD_DIR (default build-windows), the Linux build in
# $LINUX_BUILD_DIR (default build).
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
start=$SECONDS

bash scripts/build-windows.sh --tests
win=$(cd "${WINDOWS_BUILD_DIR:-$root/build-windows}" && pwd)
linux=${LINUX_BUILD_DIR:-$root/build}
[ -f "$linux/CMakeCache.txt" ] || cmake -S . -B "$linux" -DCMAKE_BUILD_TYPE=Release -DQUELLON_BUILD_BENCH=OFF >/dev/null
cmake --build "$linux" -j2 --target quellon quellon_cli >/dev/null
linux=$(cd "$linux" && pwd)
built=$SECONDS

wine=$(command -v wine64 || command -v wine || echo /usr/lib/wine/wine64)
wineserver=$(command -v wineserver || echo /usr/lib/wine/wineserver64)
work=$(mktemp -d)
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY
cleanup() {
  "$wineserver" -k 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
# A fresh prefix, with the null graphics driver: windows exist but need no display.
"$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
"$wineserver" -w
prefix=$SECONDS

status=0
# The DLL exports exactly what the Linux library does, and imports system DLLs only.
if diff <(nm -D --defined-only "$linux/libquellon.so" | awk 'NF == 3 {print $3}' | sort) \
        <(sed -n 's/^ *\([A-Za-z0-9_]*\) @.*/\1/p' "$win/quellon.def" | sort) >/dev/null; then
  echo "quellon.dll: the same $(grep -c ' @' "$win/quellon.def") exports as libquellon.so"
else
  echo "quellon.dll: its exports differ from libquellon.so's"; status=1
fi
imports=$(x86_64-w64-mingw32-objdump -p "$win/dist/quellon.dll" | sed -n 's/.*DLL Name: //p' | tr '\n' ' ')
echo "quellon.dll imports: $imports"
for dll in $imports; do
  case ${dll,,} in kernel32.dll|user32.dll|msvcrt.dll) ;; *) echo "not a system DLL: $dll"; status=1 ;; esac
done
# quellon.exe, with libxml2 linked in, needs the engine's DLL and system DLLs only.
imports=$(x86_64-w64-mingw32-objdump -p "$win/dist/quellon.exe" | sed -n 's/.*DLL Name: //p' | tr '\n' ' ')
echo "quellon.exe imports: $imports"
for dll in $imports; do
  case ${dll,,} in quellon.dll|kernel32.dll|user32.dll|msvcrt.dll|ws2_32.dll) ;; *) echo "not a system DLL: $dll"; status=1 ;; esac
done

for suite in soil solution; do
  echo "== $suite suite under wine"
  "$wine" "$win/tests/windows/${suite}_tests.exe" --gtest_brief=1 || status=1
done

# The model file: an example with flag 16 cleared, so that the engine's own LU solves
# its increments in both builds (LAPACK builds may round differently).
model="Modèle d'essai.tmw"
out="Résultats 1"
sed '/^\[Flags\]/{n;s/^\(.\{15\}\)1/\10/}' examples/group_3x3_combined.tmw > "$work/$model"
mkdir -p "$work/linux/$out" "$work/windows/$out" "$work/windows/bin"
cc -std=gnu11 -I include tests/windows/dll_host.c -ldl -o "$work/dll_host"
cp "$win/dist/quellon.dll" "$win/tests/windows/dll_host.exe" "$work/windows/bin/"

echo "== host on Linux"
(cd "$work/linux" && "$work/dll_host" "$linux/libquellon.so" "../$model" "$out") || status=1
echo "== host on Windows"
(cd "$work/windows" && "$wine" bin/dll_host.exe bin/quellon.dll "../$model" "$out") | tr -d '\r' || status=1
# A host whose manifest makes UTF-8 its ANSI code page takes paths in any script.
model8="Модель €.tmw"
out8="Ergebnisse ω"
cp "$work/$model" "$work/$model8"
mkdir -p "$work/windows/$out8"
cp "$win/tests/windows/dll_host_utf8.exe" "$work/windows/bin/"
echo "== host on Windows, UTF-8 as its code page"
(cd "$work/windows" && "$wine" bin/dll_host_utf8.exe bin/quellon.dll "../$model8" "$out8") | tr -d '\r' || status=1
for f in setters.xml setters.txt model.xml model.txt; do
  for dir in "$out" "$out8"; do
    if cmp -s "$work/linux/$out/$f" "$work/windows/$dir/$f"; then
      echo "$dir/$f: identical ($(wc -c < "$work/windows/$dir/$f") bytes)"
    else
      echo "$dir/$f: the Windows build's differs from the Linux build's"
      diff "$work/linux/$out/$f" "$work/windows/$dir/$f" | head -n 10 || true
      status=1
    fi
  done
done

echo "== quellon.exe under wine (it runs with UTF-8 as its code page)"
cp "$win/dist/quellon.exe" "$work/windows/bin/"
(cd "$work/windows" && "$wine" bin/quellon.exe run "../$model8" --out-dir cli --quiet) | tr -d '\r' | tail -n 3 || status=1
"$linux/cli/quellon" run "$work/$model8" --out-dir "$work/linux/cli" --quiet >/dev/null || status=1
# The same files (no temporary .part file left behind), and the same XML, TXT and CSV.
if [ "$(ls "$work/linux/cli")" = "$(ls "$work/windows/cli")" ]; then
  echo "quellon.exe wrote: $(ls "$work/windows/cli" | tr '\n' ' ')"
else
  echo "quellon.exe wrote other files than the Linux build: $(ls "$work/windows/cli" | tr '\n' ' ')"; status=1
fi
for f in "$work/linux/cli"/*.xml "$work/linux/cli"/*.txt "$work/linux/cli"/*.csv; do
  name=$(basename "$f")
  cmp -s "$f" "$work/windows/cli/$name" && echo "quellon.exe $name: identical" ||
    { echo "quellon.exe $name: differs from the Linux build's"; status=1; }
done

echo "Windows tests: build $((built - start)) s, wine prefix $((prefix - built)) s, runs $((SECONDS - prefix)) s"
[ $status -eq 0 ] && echo "Windows tests passed" || echo "Windows tests FAILED"
exit $status
