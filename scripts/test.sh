#!/usr/bin/env bash
# Builds everything and runs every test (unit, simulated-machine and black-box).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake --preset dev
cmake --build --preset dev
ctest --preset dev -j2
