# Quelmor: every target does its own set-up on a fresh Debian 12 machine.
JOBS   ?= $(shell nproc)
BUILD  ?= build
ASAN   ?= build-asan
FUZZ   ?= build-fuzz
# Seconds each fuzz target runs under `make fuzz`.
FUZZ_SECONDS ?= 60

.PHONY: deps configure build test test-asan fuzz bench run screenshot clean format format-check

deps:
	@sh scripts/deps.sh

$(BUILD)/CMakeCache.txt:
	cmake -S . -B $(BUILD) -DCMAKE_BUILD_TYPE=Release

configure: deps $(BUILD)/CMakeCache.txt

build: configure
	cmake --build $(BUILD) -j $(JOBS)

test: format-check build
	cd $(BUILD) && ctest --output-on-failure -j $(JOBS)

# Style is the tool's: make format rewrites the files, the check (part of make test) fails
# on any file that differs.
format: deps
	@sh scripts/format.sh

format-check: deps
	@sh scripts/format.sh check

test-asan: deps
	cmake -S . -B $(ASAN) -DCMAKE_BUILD_TYPE=Debug -DQUELMOR_SANITIZE=ON \
	      -DQUELMOR_GUI=OFF -DQUELMOR_BENCH=OFF
	cmake --build $(ASAN) -j $(JOBS)
	cd $(ASAN) && ASAN_OPTIONS=detect_leaks=1:allocator_may_return_null=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
	      ctest --output-on-failure -j $(JOBS)

# The readers of untrusted files under libFuzzer (clang), each for FUZZ_SECONDS, seeded with
# the corpus the tests write. Crashes land in $(FUZZ)/findings.
fuzz: deps
	cmake -S . -B $(FUZZ) -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang-14 \
	      -DCMAKE_CXX_COMPILER=clang++-14 -DCMAKE_CXX_FLAGS=-fsanitize=fuzzer-no-link \
	      -DQUELMOR_SANITIZE=ON -DQUELMOR_FUZZ=ON -DQUELMOR_GUI=OFF -DQUELMOR_BENCH=OFF
	sh scripts/fuzz.sh $(FUZZ) $(FUZZ_SECONDS) $(JOBS)

bench: build
	@sh scripts/bench.sh $(BUILD)

run: build
	$(BUILD)/app/quelmor

# Pictures of the main window and the about dialog, taken under Xvfb.
screenshot: build
	xvfb-run -a -s "-screen 0 1280x800x24" $(BUILD)/app/quelmor_screenshot quelmor.png quelmor_about.png \
		quelmor_scripts.png quelmor_functions.png quelmor_image.png quelmor_roi.png \
		quelmor_mu_data.png quelmor_mu_params.png quelmor_mu_mask.png quelmor_mu_wrap.png \
		quelmor_mu_filter.png quelmor_mu_output.png quelmor_mu_lfe.png quelmor_stiffness.png \
		quelmor_plot.png

clean:
	rm -rf $(BUILD) $(ASAN) $(FUZZ)
