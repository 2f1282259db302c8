# Everything by one word. The work is done by CMake (CMakePresets.json); see CONTRIBUTING.md.

MAKEFLAGS += --no-print-directory
.NOTPARALLEL:
.DEFAULT_GOAL := help

JOBS ?= $(shell nproc)
export CMAKE_BUILD_PARALLEL_LEVEL := $(JOBS)

SETUP := tools/setup.sh
SOURCES = $(shell find subtitle platform tests tools bench fuzz -name '*.h' -o -name '*.cpp' 2>/dev/null)
TIDIED = $(filter-out %/empty_7z.cpp platform/web/% tools/page/%,$(shell find subtitle platform tools -name '*.cpp'))

SECONDS ?= 60
TARGET ?=
RECORD ?=
REASON ?=
CASES ?= 200000
COUNT ?= 600
SEED ?=
AT ?=
PREFIX ?=
SAMPLES ?=

# $(call build,preset)
build = @cmake --preset $(1) --log-level=WARNING && cmake --build --preset $(1)
# $(call check,preset)
check = @tools/check.sh $(1) $(JOBS)

.PHONY: help
help:
	@echo 'make demo     plays and draws sample subtitles (make demo FILE=movie.srt SPEED=10: plays yours)'
	@echo 'make page     the inspector as one HTML file for any browser, build/page/vxsub.html'
	@echo 'make test     builds the library and runs its tests'
	@echo 'make page-test  drives the page in a headless Chromium; pictures of it in build/page-test'
	@echo '              (SAMPLES=DIR: compares the files of a folder with vxsub, too)'
	@echo 'make arm      the tests on 32-bit ARM, under qemu-user; make arm-build only builds them'
	@echo 'make asan     the tests under the address and undefined-behaviour sanitizers'
	@echo 'make tsan     the tests that have threads, under the thread sanitizer'
	@echo 'make clang    the tests built by clang, with checked containers and, in the library, integers'
	@echo 'make valgrind the seeds of every fuzz target under valgrind'
	@echo 'make fuzz     every fuzz target for SECONDS=60, or one: make fuzz SECONDS=600 TARGET=srt'
	@echo '              (RECORD=1: the figures are added to the rows of docs/quality.md)'
	@echo 'make fuzz-minimise  the inputs that fuzzing found become seeds, as few as cover the same'
	@echo 'make differential   every format against a second reading of it, CASES=200000 files each;'
	@echo '              the table goes into docs/quality.md'
	@echo 'make coverage which lines and branches of the library the tests run (RECORD=1: goes into docs/quality.md)'
	@echo 'make mutants  changes the library in COUNT=600 ways chosen by SEED=n, and looks whether a test fails for each'
	@echo '              (again with the same SEED: goes on; AT=FILE:LINE: those of one line; RECORD=1 as above)'
	@echo 'make bench    the benchmarks: ours, by hand, general libraries; their table goes into docs/performance.md'
	@echo 'make bench-busy  how long a film takes to open on a machine that has no time; make bench-arm: the pace on'
	@echo '              32-bit ARM under qemu-user; both tables go there, too'
	@echo 'make instructions  the instructions of each operation against bench/instructions.txt'
	@echo "              (RECORD=1 REASON='what changed': writes them anew)"
	@echo 'make abi      the binary interface on both processors against the reviewed one in tests/package/abi'
	@echo "              (RECORD=1 REASON='what changed': writes it anew)"
	@echo 'make size     what the stripped ARM library takes against its budget, tests/package/budget.txt (RECORD=1 as above)'
	@echo 'make reproducible  builds the library of both processors in two folders, and compares them to the byte'
	@echo 'make android  builds and runs the host tests as Android.bp says'
	@echo 'make docs     the reference of the public headers, into build/docs'
	@echo 'make release  the library and vxsub as shipped, in build/release'
	@echo 'make install  puts them into PREFIX=/usr/local, for CMake and pkg-config to find (DESTDIR is heeded)'
	@echo 'make format   clang-format on every source; make check-format only looks'
	@echo 'make tidy     clang-tidy on the library and the tools'
	@echo 'make clean    removes build/ and tools/page/node_modules'
	@echo
	@echo 'Each installs the Debian packages it needs (as root, or with sudo).'

.PHONY: release
release:
	@$(SETUP) build
	$(call build,release)

# The loader finds what root has put into one of its folders when its list is made anew.
.PHONY: install
install: prefix = $(or $(PREFIX),/usr/local)
install: release
	@cmake --install build/release --prefix "$(prefix)" >build/install.log || { \
	    echo 'make install: that did not work: another PREFIX=, or as root' >&2; exit 1; }
	@[ "$$(id -u)" != 0 ] || [ -n "$(DESTDIR)" ] || PATH="$$PATH:/usr/sbin:/sbin" ldconfig
	@echo 'vxsubtitle is in $(DESTDIR)$(prefix)'

.PHONY: demo
demo: release
	@cmake --build --preset release --target make_vobsub
	@tools/demo.sh build/release/vxsub build/release/tools/samples/make_vobsub

.PHONY: test
test:
	@$(SETUP) build test
	$(call build,dev)
	$(call check,dev)

NPM = cd tools/page && npm

# What npm installs by the lock file, once for each state of that file.
tools/page/node_modules/.package-lock.json: tools/page/package.json tools/page/package-lock.json
	@echo 'page: installing npm packages'
	@$(NPM) ci --loglevel=error && touch node_modules/.package-lock.json

# A part of the two below.
page-packages:
	@$(SETUP) page
	@$(MAKE) -s tools/page/node_modules/.package-lock.json

.PHONY: page
page: page-packages
	$(call build,web)
	@node tools/page/build.mjs build/web/vxsubtitle.js build/page/vxsub.html
	@echo 'The page: $(CURDIR)/build/page/vxsub.html'

.PHONY: page-test
page-test: page
	@$(SETUP) build page-test
	@cmake --preset release --log-level=WARNING && cmake --build --preset release --target vxsub make_vobsub
	@$(NPM) run --silent types
	@SAMPLES="$(SAMPLES)" node tools/page/test/run.mjs

.PHONY: asan
asan:
	@$(SETUP) build test
	$(call build,asan)
	$(call check,asan)

.PHONY: tsan
tsan:
	@$(SETUP) build test
	$(call build,tsan)
	$(call check,tsan)

.PHONY: clang
clang:
	@$(SETUP) build test clang
	$(call build,clang)
	$(call check,clang)

.PHONY: valgrind
valgrind:
	@$(SETUP) build test valgrind
	$(call build,dev)
	@tools/valgrind.sh

.PHONY: arm-build
arm-build:
	@$(SETUP) arm
	$(call build,arm)

.PHONY: arm
arm: arm-build
	$(call check,arm)

.PHONY: fuzz
fuzz:
	@RECORD=$(RECORD) tools/fuzz.sh $(SECONDS) $(TARGET)

.PHONY: fuzz-minimise
fuzz-minimise:
	@tools/fuzz.sh --minimise $(TARGET)

.PHONY: differential
differential: SHELL := /bin/bash
differential: .SHELLFLAGS := -o pipefail -c
differential:
	@$(SETUP) build test
	@cmake --preset dev --log-level=WARNING && cmake --build --preset dev --target DifferentialTest
	@VX_DIFFERENTIAL=$(CASES) build/dev/tests/DifferentialTest | grep --line-buffered -v '^Thread name' | \
	    tee build/dev/differential.txt
	@{ printf '| format | cases | of them with entries | differences | seed |\n|---|---|---|---|---|\n'; \
	    grep '^| `' build/dev/differential.txt; } | tools/write_table.sh docs/quality.md differential

# Counting costs more than what is counted: tests that repeat do it less often.
.PHONY: coverage
coverage:
	@$(SETUP) build test coverage
	$(call build,coverage)
	@rm -rf build/coverage/profiles build/coverage/failed
	@VXSUBTITLE_TEST_PERCENT=10 LLVM_PROFILE_FILE=$(CURDIR)/build/coverage/profiles/%p-%m.profraw \
	    ctest --preset coverage -j $(JOBS) --quiet \
	    || { echo 'coverage: not all tests pass; make test or make clang says which'; touch build/coverage/failed; }
	@tools/coverage.py build/coverage build/coverage/profiles $(if $(RECORD),--record)
	@[ ! -e build/coverage/failed ]

.PHONY: mutants
mutants:
	@$(SETUP) build test mutants
	@nice tools/mutants.py --jobs $(JOBS) --count $(COUNT) $(if $(SEED),--seed $(SEED)) \
	    $(addprefix --at ,$(AT)) $(if $(RECORD),--record)

# $(call table,command,document,name): what a command prints becomes a table of a document.
table = $(1) | tee build/$(3)-table.txt && tools/write_table.sh $(2) $(3) <build/$(3)-table.txt

.PHONY: bench
bench: SHELL := /bin/bash
bench: .SHELLFLAGS := -o pipefail -c
bench:
	@$(SETUP) build bench
	$(call build,bench)
	@$(call table,build/bench/bench/vxsubtitle_bench,docs/performance.md,bench)

.PHONY: bench-busy
bench-busy: SHELL := /bin/bash
bench-busy: .SHELLFLAGS := -o pipefail -c
bench-busy:
	@$(SETUP) build
	@cmake --preset bench --log-level=WARNING && cmake --build --preset bench --target vxsubtitle_busy
	@$(call table,build/bench/bench/vxsubtitle_busy,docs/performance.md,busy)

.PHONY: bench-arm
bench-arm: SHELL := /bin/bash
bench-arm: .SHELLFLAGS := -o pipefail -c
bench-arm:
	@$(SETUP) arm
	$(call build,arm-bench)
	@$(call table,qemu-arm build/arm-bench/bench/vxsubtitle_pace,docs/performance.md,arm)

.PHONY: instructions
instructions:
	@$(SETUP) build instructions
	@cmake --preset bench --log-level=WARNING && cmake --build --preset bench --target vxsubtitle_instructions
	@tools/instructions.py build/bench/bench/vxsubtitle_instructions $(if $(RECORD),--record "$$REASON")

.PHONY: abi
abi:
	@$(SETUP) build arm abi
	$(call build,abi)
	$(call build,abi-arm)
	@tools/abi.sh $(if $(RECORD),--record "$$REASON") \
	    armv7l=build/abi-arm/libvxsubtitle.so x86_64=build/abi/libvxsubtitle.so

.PHONY: size
size:
	@$(SETUP) arm
	$(call build,abi-arm)
	@tools/size.sh $(if $(RECORD),--record "$$REASON") build/abi-arm/libvxsubtitle.so

.PHONY: reproducible
reproducible:
	@$(SETUP) build arm
	@tools/reproducible.sh abi-arm abi

.PHONY: android
android:
	@$(SETUP) build test
	@JOBS=$(JOBS) tools/android_host.sh

.PHONY: docs
docs:
	@$(SETUP) docs
	@tools/docs.sh

.PHONY: format
format:
	@$(SETUP) format
	@clang-format-14 -i $(SOURCES)

.PHONY: check-format
check-format:
	@$(SETUP) format
	@clang-format-14 --dry-run -Werror $(SOURCES)

.PHONY: tidy
tidy:
	@$(SETUP) build test tidy
	@cmake --preset dev --log-level=WARNING
	@mkdir -p build/tidy  # g++ has options that clang does not know
	@sed 's/ -fno-ipa-sra//g' build/dev/compile_commands.json > build/tidy/compile_commands.json
	@printf '%s\0' $(TIDIED) | xargs -0 -n 1 -P $(JOBS) \
	    clang-tidy-14 --quiet -p build/tidy --extra-arg=-Wno-unknown-warning-option

.PHONY: clean
clean:
	@rm -rf build tools/page/node_modules
