# Top-level commands. Each one installs what is missing and builds first.
#   make demo       build the plug-in and the simulator only, run it on the example configuration
#   make test       build and run every test
#   make install PREFIX=DIR   install libraries, headers, tools, schemas, man pages,
#                   pkg-config and CMake package files under DIR (default /usr/local)
#   make test-asan  the same under AddressSanitizer + UndefinedBehaviorSanitizer
#   make test-tsan  the same under ThreadSanitizer
#   make bench      run the benchmarks, then count instructions per record (callgrind)
#   make fuzz       run each fuzz target for FUZZ_SECONDS (default 60) with clang
JOBS ?= $(shell nproc)
BUILD ?= build
FUZZ_SECONDS ?= 60
PREFIX ?= /usr/local
CONFIGURE = cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
# What the demo runs (the simulator; it brings the plug-in and the host
# platform along) and what an install holds.
DEMO_TARGETS = mdtlm-sim
INSTALL_TARGETS = mdtlm_vraldcn mdtlm_platform mdtlm-sim mdtlm-send mdtlm-platform-check

.PHONY: deps build demo install test test-asan test-tsan bench fuzz clean

deps:
	@./scripts/install-deps.sh

build: deps
	$(CONFIGURE)
	cmake --build $(BUILD) -j$(JOBS)

demo: deps
	$(CONFIGURE)
	cmake --build $(BUILD) -j$(JOBS) --target $(DEMO_TARGETS)
	$(BUILD)/tools/mdtlm-sim --config examples/demo.json --duration 10

install: deps
	$(CONFIGURE)
	cmake --build $(BUILD) -j$(JOBS) --target $(INSTALL_TARGETS)
	cmake --install $(BUILD) --prefix $(PREFIX)

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j$(JOBS)

test-asan: deps
	cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DMDTLM_SANITIZE=ON -DMDTLM_BUILD_BENCH=OFF >/dev/null
	cmake --build build-asan -j$(JOBS)
	ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 ctest --test-dir build-asan --output-on-failure -j$(JOBS)

test-tsan: deps
	cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DMDTLM_TSAN=ON -DMDTLM_BUILD_BENCH=OFF >/dev/null
	cmake --build build-tsan -j$(JOBS)
	ctest --test-dir build-tsan --output-on-failure -j$(JOBS)

# The peers that need the bench package group are compiled in once it is
# installed; the instruction counts need valgrind from the same group.
bench:
	@./scripts/install-deps.sh build bench
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
	cmake --build $(BUILD) -j$(JOBS) --target mdtlm_bench
	$(BUILD)/bench/mdtlm_bench
	bench/instructions.sh $(BUILD) '^BM_(Flow|ExportFlowCache|ResultStatistic|IoService)'

fuzz:
	@./scripts/install-deps.sh build fuzz
	cmake -S fuzz -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
	  -DCMAKE_C_COMPILER=clang >/dev/null
	cmake --build build-fuzz -j$(JOBS)
	fuzz/run.sh build-fuzz $(FUZZ_SECONDS)

clean:
	rm -rf $(BUILD) build-asan build-tsan build-fuzz
