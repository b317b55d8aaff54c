# The two commands the README names are `make run` and `make test`.
# Tests always run in a build with AddressSanitizer and UndefinedBehaviorSanitizer;
# `make run` and the benchmarks use an optimised build.

JOBS      ?= $(shell nproc)
# Let ccache reuse objects across checkouts in different directories (CI clones afresh).
export CCACHE_BASEDIR := $(CURDIR)
export CCACHE_NOHASHDIR := 1
TEST_DIR  := build/test
REL_DIR   := build/release
FUZZ_DIR  := build/fuzz
CAMPAIGN_DIR := build/fuzzfast
CMAKE_GEN := -G Ninja

.PHONY: all deps test run build bench fuzz fuzz-campaign format clean package coverage

all: build

deps:
	@bash scripts/install-deps.sh

$(TEST_DIR)/build.ninja: | deps
	@cmake -S . -B $(TEST_DIR) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DZELVANE_SANITIZE=ON \
	  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" >/dev/null

$(REL_DIR)/build.ninja: | deps
	@cmake -S . -B $(REL_DIR) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Release -DZELVANE_BENCH=ON \
	  -DCMAKE_INSTALL_PREFIX=/usr >/dev/null

test: deps $(TEST_DIR)/build.ninja
	@cmake --build $(TEST_DIR) -j $(JOBS)
	@cd $(TEST_DIR) && ctest --output-on-failure -j $(JOBS)

build: deps $(REL_DIR)/build.ninja
	@cmake --build $(REL_DIR) -j $(JOBS)

run: deps $(REL_DIR)/build.ninja
	@cmake --build $(REL_DIR) -j $(JOBS) --target workbench
	@bash scripts/run.sh $(REL_DIR)

# The Debian package of the release build, in build/release.
package: build
	@cd $(REL_DIR) && cpack -G DEB >/dev/null && ls $(CURDIR)/$(REL_DIR)/*.deb

bench: build
	@bash scripts/bench.sh $(REL_DIR)

fuzz: deps
	@cmake -S . -B $(FUZZ_DIR) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DZELVANE_FUZZ=ON -DZELVANE_TESTS=OFF \
	  -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" >/dev/null
	@cmake --build $(FUZZ_DIR) -j $(JOBS)
	@bash scripts/fuzz.sh $(FUZZ_DIR)

# A long campaign (FUZZ_RUNS executions per target, 10 million unless given) on a build with
# UndefinedBehaviorSanitizer only, at -O2: about three times the executions per second of the
# AddressSanitizer build. `make fuzz` then replays the kept corpus under both sanitizers.
fuzz-campaign: deps
	@cmake -S . -B $(CAMPAIGN_DIR) $(CMAKE_GEN) -DCMAKE_BUILD_TYPE=Debug -DZELVANE_FUZZ=ON \
	  -DZELVANE_TESTS=OFF -DZELVANE_FUZZ_SANITIZERS=undefined -DCMAKE_CXX_COMPILER=clang++ \
	  -DCMAKE_CXX_FLAGS_DEBUG="-O2 -g" >/dev/null
	@cmake --build $(CAMPAIGN_DIR) -j $(JOBS)
	@FUZZ_RUNS=$${FUZZ_RUNS:-10000000} bash scripts/fuzz.sh $(CAMPAIGN_DIR)

# Line and branch coverage of the suite per directory, on a build of its own.
coverage: deps
	@bash scripts/coverage.sh build/coverage

format:
	@git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf build
