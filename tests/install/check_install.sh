#!/usr/bin/env bash
# Installs the built library into a scratch prefix and builds examples/embed against it,
# once through find_package(YarvBook) and once through pkg-config; both must run.
set -euo pipefail
build=$1; example=$2; work=$3
rm -rf "$work"; mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$example" -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
      -DCMAKE_CXX_FLAGS="${EXTRA_FLAGS:-}" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/embed"
libdir=$(find "$work/prefix" -name yarvbook.pc -printf '%h\n' | head -n1)
export PKG_CONFIG_PATH=$libdir
c++ -std=c++20 ${EXTRA_FLAGS:-} "$example/main.cpp" -o "$work/embed_pc" $(pkg-config --cflags --libs yarvbook) \
    -Wl,-rpath,"$(pkg-config --variable=libdir yarvbook)"
"$work/embed_pc"
