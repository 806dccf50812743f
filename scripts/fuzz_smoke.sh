#!/usr/bin/env bash
# Builds the libFuzzer targets (preset "fuzz") and runs each for a short while, starting
# from fuzz/corpus/<target>/ when that folder exists. Fails when a target finds a crash.
set -euo pipefail
cd "$(dirname "$0")/.."
# A fixed seed and a fixed number of inputs make the smoke run the same on every
# machine; FUZZ_SEED=0 picks a random seed, FUZZ_SECONDS caps each target's time.
SEED="${FUZZ_SEED:-1}"
RUNS="${FUZZ_RUNS:-100000}"
SECONDS_EACH="${FUZZ_SECONDS:-120}"
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j2
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
status=0
for source in fuzz/*.cpp; do
  name="$(basename "$source" .cpp)"
  exe="build/fuzz/fuzz/yarvbook_fuzz_$name"
  corpus="$work/$name"
  mkdir -p "$corpus"
  if [ -d "fuzz/corpus/$name" ]; then cp -r "fuzz/corpus/$name/." "$corpus/"; fi
  echo "fuzz: $name, $RUNS inputs from seed $SEED"
  if ! "$exe" -seed="$SEED" -runs="$RUNS" -max_total_time="$SECONDS_EACH" -max_len=4096 -artifact_prefix="$work/" \
      "$corpus" >"$work/$name.log" 2>&1; then
    tail -40 "$work/$name.log"
    status=1
  else
    grep -E "DONE|Done" "$work/$name.log" | tail -1 || true
  fi
done
exit $status
