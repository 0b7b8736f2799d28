# A thin front: every target says what it runs. The presets in CMakePresets.json do the rest.

PREFIX ?= /usr/local
FUZZ_SECONDS ?= 60
ARGS ?=

help: ## List these targets
	@awk -F ':.*## ' '/^[a-z-]+:.*## / { printf "  make %-12s %s\n", $$1, $$2 }' $(MAKEFILE_LIST)

# The Python package in .venv, optimised. CMake builds the libraries, which shows how far it is;
# what is left for pip takes seconds.
define release-wheel
@scripts/quietly.sh cmake --preset release
@cmake --build --preset release --target kxsim_design
@scripts/quietly.sh .venv/bin/python -m pip install --disable-pip-version-check --no-deps \
  --no-build-isolation -C build-dir=build/release -C cmake.build-type=Release .
endef

demo: ## Set up and run the motor study in Python: tables, pictures (ARGS="--help" for its options)
	@scripts/setup.sh demo
	$(release-wheel)
	@.venv/bin/python examples/motor_study.py $(ARGS)

demo-cpp: ## Build and run the motor study written in C++ (ARGS="--help" for its options)
	@scripts/setup.sh demo-cpp
	@scripts/quietly.sh cmake --preset release -DKXSIM_EXAMPLES=ON
	@cmake --build --preset release --target motor_study
	@build/release/examples/motor_study --output build/motor_study.csv $(ARGS)

test: ## Run every test and check, as continuous integration does
	@scripts/test.sh

bench: ## Measure against hand-written code, one table (ARGS="--quick", "--filter create", "--help")
	@scripts/setup.sh bench
	@scripts/quietly.sh cmake --preset release -DKXSIM_BENCH=ON
	@cmake --build --preset release --target kxsim_bench
	@build/release/bench/kxsim_bench $(ARGS)

bench-counts: ## Count instructions and hold them against the record (ARGS="--update" to accept)
	@scripts/setup.sh counts
	@scripts/quietly.sh cmake --preset release -DKXSIM_BENCH=ON
	@cmake --build --preset release --target kxsim_bench
	@python3 bench/counts.py build/release/bench/kxsim_bench $(ARGS)

bench-python: ## Measure what Python pays beside plain Python, in the release build, one table
	@scripts/setup.sh demo
	$(release-wheel)
	@.venv/bin/python bench/python.py

bench-build: ## Measure a clean release build, the generator and the libraries' sizes
	@scripts/setup.sh build
	@bench/build_costs.sh

tsan: ## Run the C++ tests under ThreadSanitizer
	@scripts/setup.sh tsan
	@scripts/quietly.sh cmake --preset tsan
	@cmake --build --preset tsan
	@ctest --preset tsan

fuzz: ## Run each fuzz target for FUZZ_SECONDS (60), keeping what it finds under build/fuzz
	@scripts/setup.sh fuzz
	@scripts/quietly.sh cmake --preset fuzz
	@cmake --build --preset fuzz
	@for target in build/fuzz/tests/fuzz/*_fuzz; do \
	  mkdir -p $$target.corpus && \
	  $$target -max_total_time=$(FUZZ_SECONDS) -artifact_prefix=$$target. $$target.corpus || exit 1; \
	done

format: ## Format the C++ and Python sources
	@scripts/setup.sh format
	@scripts/format.sh

tidy: ## Run clang-tidy over src, after the dev build that it learns the flags from
	@scripts/setup.sh tidy
	@scripts/quietly.sh cmake --preset dev
	@scripts/quietly.sh cmake --build --preset dev
	@run-clang-tidy -quiet -p build/dev '$(CURDIR)/src/'

reference: ## Write docs/reference from the schemas
	@scripts/setup.sh build
	@.venv/bin/python -m generator --reference --out docs/reference

lines: ## Count the lines of code by area, and the generated ones against their budget
	@python3 tools/count_lines.py build/dev/gen

install: ## Install the libraries and headers under PREFIX (/usr/local)
	@scripts/setup.sh build
	@scripts/quietly.sh cmake --preset release
	@cmake --build --preset release
	@cmake --install build/release --prefix $(PREFIX)

clean: ## Remove everything that was built
	rm -rf build

.PHONY: help demo demo-cpp test bench bench-counts bench-python bench-build tsan fuzz format tidy reference lines install clean
