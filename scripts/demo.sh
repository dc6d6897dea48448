#!/usr/bin/env bash
# Builds Lumora and shows what it sees on the built-in simulated machine.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --target lumora
./build/release/src/app/lumora --simulate --list
