#!/usr/bin/env bash
# Installs every Debian package Quillmer needs to build, test and run.
# Safe to run again: packages already present are left alone.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev
  libmuparser-dev  # bench/ExpressionBench.cpp compares our formula evaluator with it
  qt6-base-dev
  librtmidi-dev libfluidsynth-dev timgm6mb-soundfont
  libjack-jackd2-dev libasound2-dev
  libsmf-dev libglib2.0-dev
  libcli11-dev
  liblo-dev nlohmann-json3-dev
  jackd2
  xvfb xauth
  desktop-file-utils
  clang-14 libclang-rt-14-dev llvm-14
)
# liblo-dev: Open Sound Control for links between programs and session managers;
# nlohmann-json3-dev: the text form of a patch.
# desktop-file-utils: desktop-file-validate for the installation test.
# clang-14 with libclang-rt-14-dev: libFuzzer and clang's sanitizer runtimes for the fuzz
# targets (scripts/fuzz.sh); llvm-14: llvm-symbolizer for readable reports. GCC's own
# ASan, UBSan and TSan runtimes come with build-essential.

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update
"${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
