# Set-up and everyday commands. `make test` and `make demo` work on a fresh Debian 12 machine: they
# install the missing packages first.
BUILD_DIR ?= build
ASAN_DIR ?= build-asan
TSAN_DIR ?= build-tsan
FUZZ_DIR ?= build-fuzz
FUZZ_SECONDS ?= 60
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?=

.PHONY: all deps configure build test test-plain test-asan test-tsan fuzz demo bench bench-import clean

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
		ctest --output-on-failure -j $(JOBS) -L threads

# The whole suite: the plain build, the AddressSanitizer+UBSan and ThreadSanitizer builds, and a
# short run of every fuzz target on its seed corpus.
test: test-plain test-asan test-tsan
	$(MAKE) fuzz FUZZ_SECONDS=10

# Each fuzz target runs FUZZ_SECONDS on a scratch copy of its seed corpus (fuzz/corpus/<target>).
$(FUZZ_DIR)/CMakeCache.txt: | deps
	CC=clang CXX=clang++ cmake -S . -B $(FUZZ_DIR) -DCMAKE_BUILD_TYPE=RelWithDebInfo \
		-DANNOTATIONLAYER_FUZZ=ON -DANNOTATIONLAYER_TESTS=OFF $(CMAKE_FLAGS)

fuzz: deps $(FUZZ_DIR)/CMakeCache.txt
	cmake --build $(FUZZ_DIR) -j $(JOBS)
	bash scripts/run-fuzzers.sh $(FUZZ_DIR)/fuzz $(FUZZ_SECONDS)

bench: build
	$(BUILD_DIR)/bench/calculator_bench
	$(BUILD_DIR)/bench/auxdb_bench
	$(BUILD_DIR)/bench/batch_bench
	$(BUILD_DIR)/bench/spatial_engine_bench

# `annotationlayer import` against ogr2ogr on one generated GeoPackage of points (BENCH_FEATURES of
# them; 1000000 for the large run).
BENCH_FEATURES ?= 200000
bench-import: build
	bash bench/import_vs_ogr2ogr.sh --tool $(BUILD_DIR)/tools/annotationlayer --features $(BENCH_FEATURES)

# The demo's database, picture and log go to $(BUILD_DIR)/demo.
demo: build
	$(BUILD_DIR)/tools/annotationlayer-demo --out $(BUILD_DIR)/demo

clean:
	rm -rf $(BUILD_DIR) $(ASAN_DIR) $(TSAN_DIR) $(FUZZ_DIR)
