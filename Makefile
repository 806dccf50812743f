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

bench: release
	@for b in build/release/bench/yarvbook_bench_*; do [ -x "$$b" ] && "$$b"; done; true

fuzz: deps
	cmake --preset fuzz >/dev/null
	cmake --build --preset fuzz
	@if [ -x scripts/fuzz_smoke.sh ]; then scripts/fuzz_smoke.sh; fi

clean:
	rm -rf build
