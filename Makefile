# Set-up and everyday commands. `make test` and `make demo` work on a fresh Debian 12 machine: they
# install the missing packages first.
BUILD_DIR ?= build
ASAN_DIR ?= build-asan
TSAN_DIR ?= build-tsan
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

.PHONY: all deps configure build test test-plain test-asan test-tsan demo bench bench-import clean

all: build

deps:
	@bash scripts/install-deps.sh

$(BUILD_DIR)/CMakeCache.txt: | deps
	cmake -S . -B $(BUILD_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo $(CMAKE_FLAGS)

configure: deps $(BUILD_DIR)/CMakeCache.txt

build: configure
	cmake --build $(BUILD_DIR) -j $(JOBS)

test-plain: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j $(JOBS)

$(ASAN_DIR)/CMakeCache.txt: | deps
	cmake -S . -B $(ASAN_DIR) -DCMAKE_BUILD_TYPE=Debug -DANNOTATIONLAYER_SANITIZE=ON $(CMAKE_FLAGS)

test-asan: deps $(ASAN_DIR)/CMakeCache.txt
	cmake --build $(ASAN_DIR) -j $(JOBS)
	cd $(ASAN_DIR) && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
		ctest --output-on-failure -j $(JOBS)

$(TSAN_DIR)/CMakeCache.txt: | deps
	cmake -S . -B $(TSAN_DIR) -DCMAKE_BUILD_TYPE=Debug -DANNOTATIONLAYER_TSAN=ON $(CMAKE_FLAGS)

test-tsan: deps $(TSAN_DIR)/CMakeCache.txt
	cmake --build $(TSAN_DIR) -j $(JOBS)
	cd $(TSAN_DIR) && TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1 suppressions=$(CURDIR)/tests/sanitizers/tsan-gdal.supp" \
		ctest --output-on-failure -j $(JOBS)

# The whole suite: the plain build, then the AddressSanitizer+UBSan and ThreadSanitizer builds.
test: test-plain test-asan test-tsan

bench: build
	$(BUILD_DIR)/bench/calculator_bench
	$(BUILD_DIR)/bench/auxdb_bench

# `annotationlayer import` against ogr2ogr on one generated GeoPackage of points (BENCH_FEATURES of
# them; 1000000 for the large run).
BENCH_FEATURES ?= 200000
bench-import: build
	bash bench/import_vs_ogr2ogr.sh --tool $(BUILD_DIR)/tools/annotationlayer --features $(BENCH_FEATURES)

demo: build
	$(BUILD_DIR)/tools/annotationlayer-demo

clean:
	rm -rf $(BUILD_DIR) $(ASAN_DIR) $(TSAN_DIR)
