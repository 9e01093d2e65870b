# The front door: `make run` and `make test` work on a fresh Debian 12 machine.
PRESET ?= release
BUILD  := build/$(PRESET)
JOBS   ?= $(shell nproc)

.PHONY: all deps build run test test-asan bench fuzz clean

all: build

deps:
	@scripts/install-deps

$(BUILD)/build.ninja: | deps
	cmake --preset $(PRESET)

build: deps $(BUILD)/build.ninja
	cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/app/cli/quester search 'readme OR search' --in . --limit 40

test: build
	ctest --test-dir $(BUILD) --output-on-failure -j $(JOBS)

test-asan:
	$(MAKE) test PRESET=asan

bench: deps
	cmake --preset bench
	cmake --build build/bench -j $(JOBS)
	scripts/run-benchmarks build/bench

fuzz: deps
	cmake --preset fuzz
	cmake --build build/fuzz -j $(JOBS)

clean:
	rm -rf build
