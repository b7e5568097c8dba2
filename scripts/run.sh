#!/usr/bin/env bash
# Installs what is missing, builds, and plays the demo patch's song through the built-in
# synth: in the desktop program where there is a display (the Composer window opens playing),
# otherwise rendered offline to out/demo.wav and out/demo.mid.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build-release -G Ninja -DCMAKE_BUILD_TYPE=Release
cmake --build build-release -j"$(nproc)"

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -x build-release/app/quillmer/quillmer ]; then
  exec build-release/app/quillmer/quillmer --song examples/demo.qmp
fi
mkdir -p out
build-release/app/cli/quillmer-cli run examples/demo.qmp --song --wav out/demo.wav --record out/demo.mid
echo "No display: the demo's song is rendered to out/demo.wav (audio) and out/demo.mid (MIDI)."
