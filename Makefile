# Thin wrapper over the CMake presets.
#   make run    release build, then the yarvbook CLI on the example workbook
#   make test   sanitizer build (ASan + UBSan), then the whole test suite
#   make bench  release build, then the benchmark program
#   make fuzz   clang libFuzzer targets, each run briefly
.PHONY: deps release debug run test bench fuzz clean

deps:
	@scripts/deps.sh

release: deps
	cmake --preset release >/dev/null
	cmake --build --preset release

debug: deps
	cmake --preset debug >/dev/null
	cmake --build --preset debug

run: release
	build/release/cli/yarvbook --version
	build/release/cli/yarvbook calc examples/budget.csv

test: debug
	@if [ -x scripts/fuzz_smoke.sh ]; then scripts/fuzz_smoke.sh; fi
	ctest --preset debug

# The standard workloads come from the shared generator (not committed: generated data).
WORKLOADS_GEN ?= $(firstword $(wildcard ../shared/bench/gen_workloads.py /work/shared/bench/gen_workloads.py))

bench: release
	@if [ ! -f build/workloads/manifest.json ] && [ -n "$(WORKLOADS_GEN)" ]; then \
	  python3 "$(WORKLOADS_GEN)" --out build/workloads; fi
	build/release/bench/yarvbook_bench_recalcbench build/workloads
	build/release/bench/yarvbook_bench_parsebench
	build/release/bench/yarvbook_bench_cellmemorybench

fuzz: deps
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz
	@if [ -x scripts/fuzz_smoke.sh ]; then scripts/fuzz_smoke.sh; fi

clean:
	rm -rf build
