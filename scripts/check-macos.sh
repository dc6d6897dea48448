#!/usr/bin/env bash
# Type-checks the macOS backend on a machine without an Apple SDK: every source and header
# under src/backends/macos is compiled for arm64-apple-macos13 with -fsyntax-only against the
# declaration headers in scripts/macos-sdk (and, through the backend, the core's port headers).
#
# The C++ standard library is the host's libc++ (package libc++-dev), the library family
# Apple ships, so features Apple's library lacks fail here too. Its C library headers come
# from glibc for a 64-bit ARM target (package libc6-dev-arm64-cross), which matches the
# Mac's data model; xlocale.h, which glibc lacks, is declared in scripts/macos-sdk.
#
# Usage: scripts/check-macos.sh [FILE...]   (default: the whole backend)
# Environment: CXX (clang++), LIBCXX_INCLUDE, LIBC_INCLUDE, JSON_INCLUDE override the paths.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
backend="$root/src/backends/macos"
cxx=${CXX:-clang++}
libcxx=${LIBCXX_INCLUDE:-/usr/lib/llvm-14/include/c++/v1}
libc=${LIBC_INCLUDE:-/usr/aarch64-linux-gnu/include}
json=${JSON_INCLUDE:-/usr/include}

if ! "$cxx" --version 2>/dev/null | grep -q clang; then
  echo "check-macos: $cxx is not clang (set CXX to a clang++)" >&2
  exit 2
fi
for dir in "$libcxx" "$libc"; do
  if [ ! -d "$dir" ]; then
    echo "check-macos: $dir is missing (install libc++-dev and libc6-dev-arm64-cross)" >&2
    exit 2
  fi
done
if [ ! -f "$json/nlohmann/json.hpp" ]; then
  echo "check-macos: nlohmann/json.hpp not found under $json (install nlohmann-json3-dev)" >&2
  exit 2
fi

# Only the JSON library of the host's include folder: the rest of it is the host's C library.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$scratch/include"
ln -s "$json/nlohmann" "$scratch/include/nlohmann"

resource=$("$cxx" -print-resource-dir)
flags=(
  -target arm64-apple-macos13 -std=c++20 -fsyntax-only
  -nostdinc -nostdinc++
  -isystem "$libcxx"
  -isystem "$resource/include"
  -isystem "$root/scripts/macos-sdk"
  -isystem "$libc"
  -isystem "$scratch/include"
  # Clang predefines __nonnull for Apple targets; glibc's headers need their own.
  -U__nonnull
  # Apple's C library declares everything by default; glibc only with this.
  -D_GNU_SOURCE
  # glibc's ctype macros take a locale pointer where Apple's functions accept 0.
  -D__NO_CTYPE
  -I "$root/src/core" -I "$backend"
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Werror
)

if [ $# -gt 0 ]; then
  files=("$@")
else
  mapfile -t files < <(find "$backend" -type f \( -name '*.cpp' -o -name '*.mm' -o -name '*.h' \) | sort)
fi

failed=0
for file in "${files[@]}"; do
  case "$file" in
    *.mm) language=(-x objective-c++ -fobjc-arc) ;;
    *.h)
      # A header is checked on its own, in the language of the files that include it.
      if grep -qE '^(#import|@interface)' "$file"; then
        language=(-x objective-c++-header -fobjc-arc)
      else
        language=(-x c++-header)
      fi
      ;;
    *) language=(-x c++) ;;
  esac
  if "$cxx" "${flags[@]}" "${language[@]}" "$file"; then
    echo "ok    ${file#"$root"/}"
  else
    echo "FAIL  ${file#"$root"/}"
    failed=1
  fi
done

if [ "$failed" -ne 0 ]; then
  echo "check-macos: type errors in the macOS backend" >&2
  exit 1
fi
echo "check-macos: ${#files[@]} files type-check for arm64-apple-macos13"
