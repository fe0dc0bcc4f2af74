# make demo   installs what is missing, builds, and runs qly on the bundled samples
# make test   installs what is missing, builds, and runs every test
# make bench  installs what is missing, builds the benchmarks in Release, and runs them
# make test-sanitize  builds with clang, AddressSanitizer and UndefinedBehaviorSanitizer, runs every test
BUILD_DIR ?= build
BENCH_DIR ?= build-bench
SANITIZE_DIR ?= build-sanitize
JOBS ?= $(shell nproc)
CMAKE_FLAGS ?= -DCMAKE_BUILD_TYPE=RelWithDebInfo
SANITIZE_FLAGS ?=
QLY = $(BUILD_DIR)/tools/qly/qly

.PHONY: demo test test-sanitize bench bootstrap build clean

bootstrap:
	@bash scripts/bootstrap

$(BUILD_DIR)/build.ninja:
	cmake -S . -B $(BUILD_DIR) -G Ninja $(CMAKE_FLAGS)

build: bootstrap $(BUILD_DIR)/build.ninja
	cmake --build $(BUILD_DIR) -j $(JOBS)

test: build
	cd $(BUILD_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

test-sanitize: bootstrap
	CC=clang CXX=clang++ cmake -S . -B $(SANITIZE_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=-O1 \
	    -DQLY_SANITIZE=ON $(SANITIZE_FLAGS)
	cmake --build $(SANITIZE_DIR) -j $(JOBS)
	cd $(SANITIZE_DIR) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j $(JOBS)

demo: bootstrap $(BUILD_DIR)/build.ninja
	cmake --build $(BUILD_DIR) -j $(JOBS) --target qly
	@bash scripts/demo $(QLY)

bench: bootstrap
	cmake -S . -B $(BENCH_DIR) -G Ninja -DCMAKE_BUILD_TYPE=Release -DQLY_BUILD_TESTS=OFF -DQLY_BUILD_BENCH=ON
	cmake --build $(BENCH_DIR) -j $(JOBS)
	@for b in $(BENCH_DIR)/bench/bench_*; do echo "== $$b"; QT_QPA_PLATFORM=offscreen $$b || exit 1; done
	@bash bench/markdown_vs_pandoc.sh $(BENCH_DIR)/tools/qly/qly
	@bash bench/html_vs_pandoc.sh $(BENCH_DIR)/tools/qly/qly

clean:
	rm -rf $(BUILD_DIR) $(BENCH_DIR) $(SANITIZE_DIR) demo-out
