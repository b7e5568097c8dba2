#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j"$(nproc)"
exec build/app/tour/quillmer-tour "$@"
