# Entry points for people and CI. Everything builds with CMake; this file only strings the
# steps together so that a fresh Debian machine needs two commands.
JOBS ?= $(shell nproc)
BUILD ?= build
ASAN_BUILD ?= build-asan
SHARED_BUILD ?= build-shared
FUZZ_BUILD ?= build-fuzz
# Seconds each fuzz target runs for.
FUZZ_SECONDS ?= 60
CLANGXX := $(shell command -v clang++ 2>/dev/null)
DEMO_DB ?= $(BUILD)/demo/studies.db
# The tests run inside a throwaway PostgreSQL cluster (postgresql-common's pg_virtualenv, which
# sets the PG* variables), so that the database suites run on the server as well as on SQLite.
# The cluster lives in a folder of its own (-t) on a port of its own, so that a server already
# running, or another test run at the same time, is left alone.
PG_VIRTUALENV := $(shell command -v pg_virtualenv 2>/dev/null)
WITH_PG := $(if $(PG_VIRTUALENV),PGPORT=$$((20000 + $$$$ % 20000)) pg_virtualenv -t env KWX_TEST_PG=postgresql://)

# CMake's generated makefiles call make again for every target; without this each call says
# which directory it enters and leaves.
MAKEFLAGS += --no-print-directory

.PHONY: deps configure build demo test test-plain test-shared test-asan fuzz bench bench-quick \
	bench-pg bench-pg-quick clean

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
test: test-plain test-shared test-asan $(if $(CLANGXX),fuzz)

test-plain: build
	@$(WITH_PG) ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

# The libraries built shared (BUILD_SHARED_LIBS=ON), installed, and used by a separate host
# project and by the Python tests from the installed prefix (the plain build's ctest does the
# same with the static libraries).
test-shared: deps
	@cmake -S . -B $(SHARED_BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_SHARED_LIBS=ON \
	  -DKWX_BUILD_TESTS=OFF -DKWX_BUILD_BENCHMARKS=OFF >/dev/null
	@cmake --build $(SHARED_BUILD) -j $(JOBS)
	@bash tests/consumer/run.sh $(SHARED_BUILD) . /usr/bin/python3

test-asan: deps
	@cmake -S . -B $(ASAN_BUILD) -DCMAKE_BUILD_TYPE=Debug -DKWX_SANITIZE=ON -DKWX_BUILD_BENCHMARKS=OFF >/dev/null
	@cmake --build $(ASAN_BUILD) -j $(JOBS)
	@ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 LSAN_OPTIONS=suppressions=$(CURDIR)/tests/lsan.supp \
	  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	  $(WITH_PG) ctest --test-dir $(ASAN_BUILD) --output-on-failure -j $(JOBS)

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

# The same figures on a throwaway PostgreSQL server against raw libpq.
PG_BENCH = $(if $(PG_VIRTUALENV),PGPORT=$$((20000 + $$$$ % 20000)) pg_virtualenv -t,$(error bench-pg needs pg_virtualenv (postgresql-common)))

bench-pg: build
	@$(PG_BENCH) $(BUILD)/bench/kwx-bench --engine postgresql

bench-pg-quick: build
	@$(PG_BENCH) $(BUILD)/bench/kwx-bench --quick --engine postgresql

clean:
	rm -rf $(BUILD) $(SHARED_BUILD) $(ASAN_BUILD) $(FUZZ_BUILD)
