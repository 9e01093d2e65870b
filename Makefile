# The front door: `make run` and `make test` work on a fresh Debian 12 machine.
PRESET ?= release
BUILD  := build/$(PRESET)
JOBS   ?= $(shell nproc)
# Seconds each fuzzer runs in `make fuzz-smoke`.
FUZZ_SECONDS ?= 30

.PHONY: all deps build run test test-asan test-tsan bench fuzz fuzz-smoke format format-check include-check clean

all: build

deps:
	@scripts/install-deps

$(BUILD)/build.ninja: | deps
	cmake --preset $(PRESET)

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/app/cli/quester search 'readme OR search' --in . --limit 40

# Every test, the format and include checks among them.
test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-asan:
	$(MAKE) test PRESET=asan

test-tsan:
	$(MAKE) test PRESET=tsan

bench: deps
	cmake --preset bench
	cmake --build build/bench -j $(JOBS)
	scripts/run-benchmarks build/bench

fuzz: deps
	cmake --preset fuzz
	cmake --build build/fuzz -j $(JOBS)

fuzz-smoke: fuzz
	scripts/fuzz-smoke build/fuzz $(FUZZ_SECONDS)

format: deps
	git ls-files '*.cpp' '*.h' | xargs clang-format-14 -i

format-check: deps
	scripts/check-format

include-check: deps
	scripts/check-includes

clean:
	rm -rf build
