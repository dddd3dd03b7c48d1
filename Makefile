# The two main targets are `run` and `test`; the others are for development.

SHELL := /bin/bash
.SHELLFLAGS := -eu -o pipefail -c
.DEFAULT_GOAL := help
.DELETE_ON_ERROR:
MAKEFLAGS += --no-print-directory

JOBS ?= $(shell nproc)
FUZZ_SECONDS ?= 30
BENCH_ARGS ?=
FILES ?=
export FUZZ_SECONDS

RELEASE := build/release
SANITIZE := build/sanitize
FUZZ := build/fuzz
LINT := build/lint

# The builds are configured by CMakePresets.json.
configure = scripts/step.sh "Configuring $(1)" $(1).configure.log cmake --preset $(notdir $(1))
compile = scripts/step.sh "Building $(1)" $(1).log cmake --build $(1) -j $(JOBS)

.PHONY: help setup run test bench fuzz lint package sample pictures translations

help:
	@echo 'make run              install the dependencies, build the editor and start it'
	@echo 'make run FILES="..."  the same, and open these files'
	@echo 'make test             build and run all tests, those of the core also under sanitizers'
	@echo 'make bench            run the benchmarks (BENCH_ARGS="--benchmark_filter=...")'
	@echo 'make fuzz             run every fuzzer for FUZZ_SECONDS ($(FUZZ_SECONDS)) seconds'
	@echo 'make lint             check formatting and includes, run clang-tidy'
	@echo 'make package          make a Debian package in build/package/'
	@echo 'make sample           write the sample document to build/sample.tessel'
	@echo 'make pictures         take the screenshots and draw the overlays in docs/'
	@echo 'make translations     bring the translations up to date with the sources'
	@echo 'make setup            only install the dependencies'

setup:
	@scripts/setup.sh

$(RELEASE)/build.ninja $(SANITIZE)/build.ninja $(FUZZ)/build.ninja $(LINT)/build.ninja: \
  %/build.ninja: Makefile CMakePresets.json | setup
	@$(call configure,$*)

sample: setup
	@python3 scripts/make_sample.py build/sample.tessel

run: setup $(RELEASE)/build.ninja
	@$(call compile,$(RELEASE)) --target orvanel
	@scripts/run.sh $(RELEASE)/src/app/orvanel $(FILES)

# A single run of ctest over both builds, for a single summary.
test: setup $(RELEASE)/build.ninja $(SANITIZE)/build.ninja
	@$(call compile,$(RELEASE))
	@$(call compile,$(SANITIZE))
	@echo 'subdirs(release sanitize)' > build/CTestTestfile.cmake
	@QT_QPA_PLATFORM=offscreen ctest --test-dir build -j $(JOBS) --output-on-failure --no-tests=error </dev/null

bench: setup $(RELEASE)/build.ninja
	@$(call compile,$(RELEASE)) --target orvanel_bench
	@$(RELEASE)/bench/orvanel_bench $(BENCH_ARGS)

fuzz: setup $(FUZZ)/build.ninja
	@$(call compile,$(FUZZ)) --target fuzzers
	@scripts/fuzz.sh $(FUZZ)

lint: setup $(LINT)/build.ninja $(RELEASE)/build.ninja
	@scripts/lint.sh $(LINT) $(JOBS)
	@$(call compile,$(RELEASE)) --target structure_tests
	@ctest --test-dir $(RELEASE)/tests/structure --output-on-failure --no-tests=error

package: setup $(RELEASE)/build.ninja
	@$(call compile,$(RELEASE)) --target package_contents
	@scripts/step.sh "Packing" build/package.log cpack --config $(RELEASE)/CPackConfig.cmake -B build/package
	@ls build/package/*.deb

pictures: setup $(RELEASE)/build.ninja
	@$(call compile,$(RELEASE)) --target orvanel overlay_pictures
	@$(RELEASE)/tests/canvas/overlay_pictures docs/overlays
	@python3 scripts/make_pictures.py $(RELEASE)/src/app/orvanel

translations: setup $(RELEASE)/build.ninja
	@$(call compile,$(RELEASE)) --target translations
