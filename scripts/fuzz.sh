#!/usr/bin/env bash
# The fuzz targets of the readers and the formula parser we own (fuzz/Fuzz_*.cpp), built with clang, libFuzzer,
# AddressSanitizer and UndefinedBehaviorSanitizer in build-fuzz, and run from the seed
# corpus in fuzz/corpus/<target>.
#
#   bash scripts/fuzz.sh --ci             # what CI runs: a short run, fixed seed, every target
#   bash scripts/fuzz.sh [RUNS] [SEED]    # a longer run: RUNS executions a target (1000000)
#   FUZZ_TARGETS=qmp bash scripts/fuzz.sh  # only some targets
#
# New inputs that reach new code go to build-fuzz/corpus/<target> (kept between runs), a
# finding to build-fuzz/findings/<target>-crash-..., and the run fails. A finding is
# replayed with: build-fuzz/fuzz/fuzz_<target> FILE
set -euo pipefail
cd "$(dirname "$0")/.."

read -r -a targets <<< "${FUZZ_TARGETS:-qmp qmj pbt formula ufn mid mfx scala}"
if [ "${1:-}" = "--ci" ]; then
  runs=10000
  seed=1
  fresh=1  # the same inputs every time: only the seed corpus to start from
else
  runs="${1:-1000000}"
  seed="${2:-1}"
  fresh=0
fi

export ASAN_OPTIONS="halt_on_error=1:detect_leaks=1"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1"

CC=clang-14 CXX=clang++-14 cmake -S . -B build-fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g" -DQUILLMER_BUILD_FUZZ=ON -DQUILLMER_SANITIZE=address,undefined \
  -DQUILLMER_BUILD_GUI=OFF -DQUILLMER_BUILD_TESTS=OFF -DQUILLMER_BUILD_BENCH=OFF -DQUILLMER_WERROR=OFF > /dev/null
cmake --build build-fuzz -j"$(nproc)" --target "${targets[@]/#/fuzz_}"

mkdir -p build-fuzz/findings
for t in "${targets[@]}"; do
  corpus="build-fuzz/corpus/$t"
  [ "$fresh" = 1 ] && rm -rf "$corpus"
  mkdir -p "$corpus"
  echo "== fuzz_$t: $runs runs, seed $seed"
  log="build-fuzz/fuzz_$t.log"
  status=0
  "build-fuzz/fuzz/fuzz_$t" -seed="$seed" -runs="$runs" -timeout=30 -rss_limit_mb=4096 \
    -artifact_prefix="build-fuzz/findings/$t-" -print_final_stats=1 "$corpus" "fuzz/corpus/$t" > "$log" 2>&1 || status=$?
  grep -E "^#[0-9]+ +(INITED|DONE)|^Done|^stat::(number_of_executed_units|average_exec_per_sec)" "$log" || true
  if [ "$status" -ne 0 ]; then
    tail -n 80 "$log"
    echo "fuzz_$t found a problem (status $status): see build-fuzz/findings/ and $log"
    exit 1
  fi
done
echo "fuzzing: ${#targets[@]} targets, $runs runs each, no finding"
