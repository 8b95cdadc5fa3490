# Entry points for people and CI. Everything builds with CMake; this file only strings the
# steps together so that a fresh Debian machine needs two commands.
JOBS ?= $(shell nproc)
BUILD ?= build
ASAN_BUILD ?= build-asan
DEMO_DB ?= $(BUILD)/demo/studies.db

.PHONY: deps build demo test test-plain test-asan bench bench-quick clean

deps:
	@bash scripts/install-deps.sh

build: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	@cmake --build $(BUILD) -j $(JOBS)

# The main job: a fresh database, the sample studies imported into it, listed, one shown.
demo: build
	@bash scripts/demo.sh $(BUILD)/cli/kwx $(DEMO_DB)

test: test-plain test-asan

test-plain: build
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DKWX_SANITIZE=ON -DKWX_BUILD_BENCHMARKS=OFF >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)
	@ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

bench: build
	@$(BUILD)/bench/kwx-bench

bench-quick: build
	@$(BUILD)/bench/kwx-bench --quick

clean:
	rm -rf $(BUILD) $(ASAN_BUILD)
