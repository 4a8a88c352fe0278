#!/usr/bin/env bash
# Cross-builds the engine for 64-bit Windows: quellon.dll, its import library
# quellon.lib and module definition quellon.def, the header, and quellon.exe, in
# $WINDOWS_BUILD_DIR/dist (default build-windows/dist).
#
#   scripts/build-windows.sh             reference LAPACK (builds in a few minutes once,
#                                        then comes from the build folder)
#   scripts/build-windows.sh --openblas  OpenBLAS built for Windows, for a release: it is
#                                        what large runs need, and takes many minutes
#   scripts/build-windows.sh --tests     also the test programs run by test-windows.sh
#
# Debian ships no LAPACK for mingw, so its source package is fetched with apt-get source
# and built here with the mingw compilers; everything is linked statically, and the
# DLL imports system DLLs only.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
build=${WINDOWS_BUILD_DIR:-$root/build-windows}
openblas=false
tests=OFF
for arg in "$@"; do
  case $arg in
    --openblas) openblas=true ;;
    --tests) tests=ON ;;
    *) echo "usage: $0 [--openblas] [--tests]" >&2; exit 2 ;;
  esac
done

bash scripts/setup-windows.sh
mkdir -p "$build"
build=$(cd "$build" && pwd)
deps=$build/deps
toolchain=$root/cmake/mingw-w64-x86_64.cmake
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

# The unpacked source package of that name, fetched on first use.
source_of() {
  local dir
  mkdir -p "$deps/src"
  dir=$(find "$deps/src" -mindepth 1 -maxdepth 1 -type d -name "$1-*" | head -n 1)
  if [ -z "$dir" ]; then
    (cd "$deps/src" && apt-get source -qq "$1" >/dev/null 2>"$deps/src/$1.log") || {
      cat "$deps/src/$1.log" >&2; exit 1; }
    dir=$(find "$deps/src" -mindepth 1 -maxdepth 1 -type d -name "$1-*" | head -n 1)
  fi
  echo "$dir"
}

if [ "$openblas" = true ]; then
  lib=$deps/openblas/lib/libopenblas.a
  if [ ! -f "$lib" ]; then
    src=$(source_of openblas)
    # The compilers answer -dumpversion with "12-posix", which OpenBLAS's build scripts
    # compare as text: they take it for a gcc older than 4.7 and quietly leave out the
    # AVX2 kernels (NO_AVX2=1). Wrappers answer with the number; the Fortran compiler,
    # which is recognised by the version in its assembly output, is named outright.
    # DYNAMIC_ARCH picks the kernels for the processor at run time. Zen is left out: a
    # library without its own Zen set gives Zen processors the Haswell one, whose SGEMM
    # kernel and blocking sizes the Zen set shares, and each set is some 560 compiles.
    # On an Intel family 6 model newer than its list (Raptor Lake, Arrow Lake, Emerald
    # Rapids, ...) this OpenBLAS falls out of the model switch into the Pentium 4 case and
    # runs the Prescott kernels, several times slower. A return of "unknown" there makes
    # it choose by the instructions the processor has (AVX-512, AVX2, AVX), as it does
    # for other unknown models.
    dynamic=$src/driver/others/dynamic.c
    grep -q 'family 6 model not listed' "$dynamic" ||
      perl -0pi -e 's/(\n\treturn NULL;\n      \}\n)(      case 0xf:)/$1      return NULL;  \/* a family 6 model not listed *\/\n$2/' "$dynamic"
    grep -q 'family 6 model not listed' "$dynamic" || { echo "cannot correct $dynamic" >&2; exit 1; }
    mkdir -p "$deps/bin"
    for tool in gcc gfortran; do
      real=x86_64-w64-mingw32-$tool-posix
      version=$(echo __GNUC__.__GNUC_MINOR__.__GNUC_PATCHLEVEL__ | "$real" -E -P -x c - | tr -d ' ')
      printf '#!/bin/sh\nfor a; do case $a in -dumpversion|-dumpfullversion) echo %s; exit 0 ;; esac; done\nexec %s "$@"\n' \
        "$version" "$real" > "$deps/bin/mingw-$tool"
      chmod +x "$deps/bin/mingw-$tool"
    done
    options=(CC="$deps/bin/mingw-gcc" FC="$deps/bin/mingw-gfortran" F_COMPILER=GFORTRAN HOSTCC=gcc CROSS=1
      CROSS_SUFFIX=x86_64-w64-mingw32- BINARY=64 TARGET=PRESCOTT DYNAMIC_ARCH=1
      DYNAMIC_LIST="NEHALEM SANDYBRIDGE HASWELL SKYLAKEX"
      USE_OPENMP=0 USE_THREAD=1 NUM_THREADS=64 NO_SHARED=1 NO_CBLAS=1 NO_LAPACKE=1)
    # All precisions: the Windows thread server of this OpenBLAS refers to the blocking
    # sizes of each, and fails to compile with single precision alone.
    # No "netlib": Debian's source package carries no LAPACK sources, and its netlib
    # target would copy the host's Linux LAPACK objects into the archive. OpenBLAS's own
    # LAPACK part (GESV, GETRF, GETRS, POTRF and a few more) has SGESV, the one LAPACK
    # routine the engine calls.
    make -C "$src" -j2 "${options[@]}" libs > "$deps/openblas.log" 2>&1 ||
      { tail -n 30 "$deps/openblas.log" >&2; exit 1; }
    make -C "$src" "${options[@]}" PREFIX="$deps/openblas" install >> "$deps/openblas.log" 2>&1 ||
      { tail -n 30 "$deps/openblas.log" >&2; exit 1; }
    lib=$(find "$deps/openblas/lib" -name 'libopenblas*.a' | head -n 1)
  fi
  # The kernel sets in the library, and the fused multiply-adds on 256- and 512-bit
  # registers in the SGEMM kernels that need them: none means AVX2 was dropped.
  echo "OpenBLAS kernel sets: $(x86_64-w64-mingw32-nm "$lib" | sed -n 's/^[0-9a-f]* D gotoblas_\([A-Z0-9]*\)$/\1/p' | sort -u | tr '\n' ' ')"
  kernels=$(mktemp -d)
  for core in HASWELL SKYLAKEX; do
    (cd "$kernels" && x86_64-w64-mingw32-ar x "$lib" "sgemm_kernel_$core.obj")
    echo "FMA on ymm/zmm in sgemm_kernel_$core: $(x86_64-w64-mingw32-objdump -d "$kernels/sgemm_kernel_$core.obj" |
      grep -cE 'vfmadd[0-9]+ps.*%[yz]mm' || true)"
  done
  rm -rf "$kernels"
  lapack="$lib"
else
  if [ ! -f "$deps/lapack/lib/liblapack.a" ]; then
    src=$(source_of lapack)
    # Single precision real is all the engine calls (SGESV); the compiler checks run
    # programs, which a cross build cannot.
    cmake -S "$src" -B "$deps/lapack" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
      -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF -DTEST_FORTRAN_COMPILER=OFF -DCBLAS=OFF -DLAPACKE=OFF \
      -DBUILD_SINGLE=ON -DBUILD_DOUBLE=OFF -DBUILD_COMPLEX=OFF -DBUILD_COMPLEX16=OFF \
      -DCMAKE_Fortran_COMPILER_LAUNCHER=ccache > "$deps/lapack.log" 2>&1
    cmake --build "$deps/lapack" -j2 --target lapack blas >> "$deps/lapack.log" 2>&1 ||
      { tail -n 30 "$deps/lapack.log" >&2; exit 1; }
  fi
  lapack="$deps/lapack/lib/liblapack.a;$deps/lapack/lib/libblas.a;gfortran;quadmath"
fi

# libxml2 for the command-line host, which reads the run's XML back: static, and
# without the parts that would pull in more libraries (iconv, compression, networking).
if [ ! -f "$deps/libxml2/install/lib/libxml2.a" ]; then
  src=$(source_of libxml2)
  cmake -S "$src" -B "$deps/libxml2" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
    "${launcher[@]}" -DCMAKE_INSTALL_PREFIX="$deps/libxml2/install" -DBUILD_SHARED_LIBS=OFF \
    -DLIBXML2_WITH_ICONV=OFF -DLIBXML2_WITH_LZMA=OFF -DLIBXML2_WITH_ZLIB=OFF -DLIBXML2_WITH_PYTHON=OFF \
    -DLIBXML2_WITH_TESTS=OFF -DLIBXML2_WITH_PROGRAMS=OFF -DLIBXML2_WITH_HTTP=OFF -DLIBXML2_WITH_FTP=OFF \
    > "$deps/libxml2.log" 2>&1 || { tail -n 30 "$deps/libxml2.log" >&2; exit 1; }
  cmake --build "$deps/libxml2" -j2 --target install >> "$deps/libxml2.log" 2>&1 ||
    { tail -n 30 "$deps/libxml2.log" >&2; exit 1; }
fi

cmake -S "$root" -B "$build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_BUILD_TYPE=Release \
  "${launcher[@]}" -DQUELLON_BUILD_BENCH=OFF -DQUELLON_BUILD_TESTS=$tests \
  -DQUELLON_LAPACK_LIBRARIES="$lapack" -DLIBXML2_INCLUDE_DIR="$deps/libxml2/install/include/libxml2" \
  -DLIBXML2_LIBRARY="$deps/libxml2/install/lib/libxml2.a" > "$build/configure.log" 2>&1 ||
  { cat "$build/configure.log" >&2; exit 1; }
targets=(--target quellon quellon_cli)
[ "$tests" = ON ] && targets+=(soil_tests solution_tests dll_host dll_host_utf8)
cmake --build "$build" -j2 "${targets[@]}"

dist=$build/dist
mkdir -p "$dist"
cp "$build/quellon.dll" "$build/quellon.lib" "$build/quellon.def" "$root/include/quellon.h" \
  "$build/cli/quellon.exe" "$dist/"
x86_64-w64-mingw32-strip --strip-unneeded "$dist/quellon.dll" "$dist/quellon.exe"
echo "Built in $dist:"
ls -l "$dist"
echo "DLLs imported by quellon.dll:"
x86_64-w64-mingw32-objdump -p "$dist/quellon.dll" | grep 'DLL Name'
