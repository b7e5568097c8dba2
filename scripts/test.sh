#!/usr/bin/env bash
# Installs what is missing, builds everything and runs all tests: the plain build, a short
# fixed-seed run of every fuzz target (scripts/fuzz.sh --ci), then the whole suite again under
# AddressSanitizer and UndefinedBehaviorSanitizer (scripts/asan.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLMER_WERROR=ON
cmake --build build -j"$(nproc)"
ctest --test-dir build --output-on-failure -j"$(nproc)"
bash scripts/fuzz.sh --ci
bash scripts/asan.sh
