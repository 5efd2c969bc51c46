#!/usr/bin/env bash
# Installs the built tree into a temporary prefix, builds the consumer project against it with
# find_package(AnnotationLayer), and runs it.
set -euo pipefail
build_dir=$1
source_dir=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build_dir" --prefix "$work/prefix" > "$work/install.log"
test -f "$work/prefix/include/annotationlayer/AnnotationLayer.h"
cmake -S "$source_dir/tests/package/consumer" -B "$work/build" \
  -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_BUILD_TYPE=Release > "$work/configure.log"
cmake --build "$work/build" > "$work/build.log"
mkdir -p "$work/data"
"$work/build/consumer" "$work/data"

# The README's C++ example, built and run as written.
mkdir -p "$work/readme"
awk '/^## Using the library/{inside=1} inside && /^```cpp/{code=1; next} code && /^```/{exit} code{print}' \
  "$source_dir/README.md" > "$work/readme/main.cpp"
cp "$source_dir/tests/package/consumer/CMakeLists.txt" "$work/readme/"
cmake -S "$work/readme" -B "$work/readme/build" -DCMAKE_PREFIX_PATH="$work/prefix" \
  -DCMAKE_BUILD_TYPE=Release > "$work/readme.log"
cmake --build "$work/readme/build" >> "$work/readme.log"
(cd "$work/readme" && ./build/consumer | grep -q "feature W-1") && echo "readme example ok"
