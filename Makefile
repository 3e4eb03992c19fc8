# make run   install what is missing, build, start the program
# make test  install what is missing, build, run every test headless
# make bench build, then time ondrel-stage against cp and rsync, and the window (bench/run)
# make test-asan  the whole suite under AddressSanitizer and UndefinedBehaviorSanitizer
# make fuzz  run each fuzz target for a minute from its committed corpus (fuzz/run)
# make package  build, then the Debian package build/ondrel_<version>_<arch>.deb
BUILD ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo

.PHONY: all deps configure build run test test-asan bench fuzz package clean format

all: build

deps:
	@scripts/install-deps

configure: deps
	@test -f $(BUILD)/CMakeCache.txt || cmake -S . -B $(BUILD) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD) -j $(JOBS)

run: build
	$(BUILD)/bin/ondrel

test: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

test-asan: deps
	@test -f build-asan/CMakeCache.txt || cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DONDREL_SANITIZE=ON
	cmake --build build-asan -j $(JOBS)
	cd build-asan && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

fuzz: deps
	fuzz/run

package: build
	cmake --build $(BUILD) --target package

bench: build
	BUILD=$(BUILD) bench/run

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) build-asan build-fuzz
