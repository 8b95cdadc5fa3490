# Entry points for people and CI. Everything builds with CMake; this file only strings the
# steps together so that a fresh Debian machine needs two commands.
JOBS ?= $(shell nproc)
BUILD ?= build
ASAN_BUILD ?= build-asan
FUZZ_BUILD ?= build-fuzz
# Seconds each fuzz target runs for.
FUZZ_SECONDS ?= 60
CLANGXX := $(shell command -v clang++ 2>/dev/null)
DEMO_DB ?= $(BUILD)/demo/studies.db
# CMake's generated makefiles call make again for every target; without this each call says
# which directory it enters and leaves.
MAKEFLAGS += --no-print-directory

.PHONY: deps configure build demo test test-plain test-asan fuzz bench bench-quick clean

deps:
	@bash scripts/install-deps.sh

configure: deps
	@cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_VERBOSE_MAKEFILE=OFF >/dev/null

build: configure
	@cmake --build $(BUILD) -j $(JOBS)

# The main job: a fresh database, the sample studies imported into it, listed, one shown and
# its chart written. Only the kwx command is built (not the tests and benchmarks), so the
# first study shows soon on a fresh machine; `make test` builds the rest in the same folder.
demo: configure
	@cmake --build $(BUILD) -j $(JOBS) --target kwx
	@bash scripts/demo.sh $(BUILD)/cli/kwx $(DEMO_DB)

# The fuzz targets run too when clang is on the machine.
test: test-plain test-asan $(if $(CLANGXX),fuzz)

test-plain: build
	@ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DKWX_SANITIZE=ON -DKWX_BUILD_BENCHMARKS=OFF >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)
	@ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

# Each libFuzzer target of tests/fuzz runs for FUZZ_SECONDS from its seeds; a finding (a crash,
# a sanitizer report or a broken check) fails. The executions of each run are written to
# $(FUZZ_BUILD)/executions.txt.
fuzz: deps
	@CC=clang CXX=clang++ cmake -S . -B $(FUZZ_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKWX_BUILD_FUZZ=ON >/dev/null
	@cmake --build $(FUZZ_BUILD) -j $(JOBS)
	@bash tests/fuzz/run.sh $(FUZZ_BUILD) $(FUZZ_SECONDS)

bench: build
	@$(BUILD)/bench/kwx-bench

bench-quick: build
	@$(BUILD)/bench/kwx-bench --quick

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) $(FUZZ_BUILD)
