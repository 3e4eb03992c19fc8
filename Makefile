# make run   install what is missing, build, start the program
# make test  install what is missing, build, run every test headless
# make bench build, then time ondrel-stage against cp and rsync, and the window (bench/run)
# make test-asan  the whole suite under AddressSanitizer and UndefinedBehaviorSanitizer
# make test-tsan  the engine's tests (staging, safety, the stager) under ThreadSanitizer
# make fuzz  run each fuzz target for a minute from its committed corpus (fuzz/run)
# make package  build, then the Debian package build/ondrel_<version>_<arch>.deb
BUILD ?= build
JOBS ?= $(shell nproc 2>/dev/null || echo 2)
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo

.PHONY: all deps configure build run test test-asan test-tsan bench fuzz package clean format

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

# The engine's tests only: the windows' tests have no threads of the engine to race.
TSAN_TESTS = tst_StagingRun tst_ParallelStaging tst_basLibrary tst_CrashPoints tst_Attacks \
	tst_KillSafety tst_Topology tst_ResourceFaults tst_ondrelStage
test-tsan: deps
	@test -f build-tsan/CMakeCache.txt || cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DONDREL_SANITIZE_THREAD=ON
	cmake --build build-tsan -j $(JOBS) --target ondrel-stage $(TSAN_TESTS)
	cd build-tsan && TSAN_OPTIONS="halt_on_error=1 suppressions=$(CURDIR)/tests/tsan.supp" QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS) -R '^($(subst $(eval) ,|,$(TSAN_TESTS)))$$'

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
