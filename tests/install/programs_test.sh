#!/usr/bin/env bash
# --help and --version of both programs, and the desktop program without a display.
# Usage: programs_test.sh QUILLMER QUILLMER_CLI
set -uo pipefail
gui="$1"
cli="$2"
fail=0
check() {  # WHAT EXPECTED_STATUS PATTERN COMMAND...
  local what="$1" status="$2" pattern="$3"
  shift 3
  local out
  out="$("$@" 2>&1)"
  local got=$?
  if [ "$got" -ne "$status" ]; then
    echo "$what: exit status $got, not $status"
    fail=1
  fi
  if ! grep -q -- "$pattern" <<< "$out"; then
    echo "$what: no \"$pattern\" in:"
    echo "$out"
    fail=1
  fi
}
check "quillmer --help" 0 "Usage: quillmer" "$gui" --help
check "quillmer --help lists -m" 0 "^  -m " "$gui" --help
check "quillmer --version" 0 "^quillmer [0-9]" "$gui" --version
check "quillmer -h" 0 "Usage: quillmer" "$gui" -h
check "quillmer --bogus" 2 "unknown option" "$gui" --bogus
check "quillmer without a display" 1 "no display" env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$gui"
check "quillmer with a display that isn't there" 1 "can't be opened" \
  env -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM DISPLAY=:97 XAUTHORITY=/nonexistent "$gui"
check "quillmer-cli --help" 0 "Usage: quillmer-cli" "$cli" --help
check "quillmer-cli --version" 0 "^quillmer-cli [0-9]" "$cli" --version
exit $fail
