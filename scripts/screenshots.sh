#!/usr/bin/env bash
# Pictures of the desktop program for the documentation: the main window with the demo
# patch's panels, a connection list, the module map and the options window, drawn on a
# virtual display and saved as PNG into docs/.
#   BUILD_DIR=build-gui bash scripts/screenshots.sh
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build}"
if [ ! -f "$build/CMakeCache.txt" ]; then
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
fi
cmake --build "$build" --target quillmer
# A private runtime folder keeps the virtual display's session away from the user's own.
runtime="$(mktemp -d)"
trap 'rm -rf "$runtime"' EXIT
XDG_RUNTIME_DIR="$runtime" xvfb-run -a -s "-screen 0 1600x1000x24" \
  "$build/app/quillmer/quillmer" --screenshot docs $( [ -f examples/demo.qmp ] && echo examples/demo.qmp )
ls -l docs/quillmer-*.png
