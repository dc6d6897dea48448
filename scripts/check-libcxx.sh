#!/usr/bin/env bash
# Builds the core and the simulated machine with clang and libc++, the C++ library family
# Apple ships, so that a standard-library feature it lacks (floating-point from_chars and
# to_chars in older releases, for example) shows up here and not first on a Mac.
#
# Usage: scripts/check-libcxx.sh [BUILD_DIR]   (default: build/libcxx)
# Environment: CXX (clang++), JOBS (2).
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-"$root/build/libcxx"}
cxx=${CXX:-clang++}
jobs=${JOBS:-2}

if ! "$cxx" --version 2>/dev/null | grep -q clang; then
  echo "check-libcxx: $cxx is not clang (set CXX to a clang++)" >&2
  exit 2
fi
if ! echo '#include <vector>' | "$cxx" -stdlib=libc++ -x c++ -fsyntax-only - 2>/dev/null; then
  echo "check-libcxx: libc++ headers not found (install libc++-dev and libc++abi-dev)" >&2
  exit 2
fi

cmake -S "$root" -B "$build" -G Ninja \
  -DCMAKE_BUILD_TYPE=Debug \
  -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_CXX_FLAGS="-stdlib=libc++" \
  -DCMAKE_EXE_LINKER_FLAGS="-stdlib=libc++" \
  -DCMAKE_SHARED_LINKER_FLAGS="-stdlib=libc++" \
  -DLUMORA_BUILD_TESTS=OFF -DLUMORA_BUILD_BENCH=OFF -DLUMORA_BUILD_FUZZ=OFF

# lumora_core bundles one static library per subsystem; an interface library has nothing to
# build by itself, so its members are built by name (the ones this checkout has).
available=$(cmake --build "$build" --target help | sed -n 's/^\(lumora_[a-z_]*\):.*/\1/p')
targets=()
for target in lumora_core lumora_platform lumora_log lumora_display lumora_ddc lumora_lid \
              lumora_virtual lumora_input lumora_adaptive lumora_model lumora_sim; do
  if grep -qx "$target" <<<"$available"; then
    targets+=("$target")
  fi
done
if [ ${#targets[@]} -eq 0 ]; then
  echo "check-libcxx: no core targets found in $build" >&2
  exit 1
fi

# Keep going after a failure, so one run names every file that needs a change.
cmake --build "$build" -j "$jobs" --target "${targets[@]}" -- -k 0
echo "check-libcxx: ${targets[*]} build with libc++"
