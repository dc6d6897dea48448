#!/usr/bin/env bash
# Builds everything and runs every test (unit, simulated machine, black-box, the real servers:
# Xorg with the dummy driver, headless Mutter and sway, logind on a private bus), then checks
# that the macOS sources type-check and that the core builds with libc++.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake --preset dev
cmake --build --preset dev
ctest --preset dev -j2
bash scripts/check-macos.sh
bash scripts/check-libcxx.sh
