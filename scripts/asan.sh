#!/usr/bin/env bash
# The whole suite, GUI tests included, built with AddressSanitizer and UndefinedBehavior-
# Sanitizer in build-asan (QUILLMER_SANITIZE=address,undefined). Any report fails the test
# that made it: errors halt the program, undefined behaviour is not recovered from, and a
# leak fails the exit. scripts/lsan.supp names the only leaks let through: inside
# third-party libraries. scripts/test.sh runs this after the plain build.
set -euo pipefail
cd "$(dirname "$0")/.."
root="$PWD"

export ASAN_OPTIONS="halt_on_error=1:detect_leaks=1:check_initialization_order=1:strict_init_order=1:detect_invalid_pointer_pairs=0"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"
export LSAN_OPTIONS="suppressions=$root/scripts/lsan.supp:print_suppressions=0"
# The windows' tests (gui_tests, the desktop program's command line) run offscreen here too.
export QT_QPA_PLATFORM=offscreen

# -O1 keeps the build and the run quick; the sanitizers see the same code paths.
cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g" \
  -DQUILLMER_SANITIZE=address,undefined -DQUILLMER_BUILD_BENCH=OFF
# Only the test programs (and the two programs the command-line tests drive): the plain
# build has already built everything else.
cmake --build build-asan -j"$(nproc)" --target quillmer_tests
ctest --test-dir build-asan --output-on-failure -j"$(nproc)" --timeout 900
