# The README's commands. Each installs the packages it needs (tools/install-deps does nothing when all are there).
JOBS   ?= $(shell nproc)
WERROR ?= $(if $(CI),ON,OFF)
export CMAKE_BUILD_PARALLEL_LEVEL = $(JOBS)

SECONDS ?= 60
MINUTES ?= 15
PREFIX  ?= /usr/local
BENCHES = bench-cipher bench-network bench-store bench-text bench-images bench-startup
.PHONY: help demo gallery build test install package docs core format check asan tsan fuzz soak coverage bench benchmarks $(BENCHES) clean

help:
	@echo "make demo     build the command-line tool and watch encrypted requests run over pinned TLS"
	@echo "make gallery  open a wallet and the panes around it; SHOT=DIR writes pictures of it instead"
	@echo "make test     build everything and run the tests"
	@echo "make build    programs in build/bin, libraries in build/lib"
	@echo "make install  libraries, headers and the tool into PREFIX=/usr/local"
	@echo "make package  Debian packages, in build-package"
	@echo "make docs     the reference of every public header, and the guides, in build-docs/html"
	@echo "make core     the core alone, warnings as errors, in build-core"
	@echo "make format   rewrite the sources in the project's format"
	@echo "make check    format and include arrows, changing nothing"
	@echo "make asan     the tests under AddressSanitizer and UBSan (build-asan)"
	@echo "make tsan     the tests under ThreadSanitizer (build-tsan)"
	@echo "make fuzz     every fuzz target for SECONDS=60 each (build-fuzz)"
	@echo "make bench    every benchmark program and one table (build-bench); bench-cipher, bench-network, ... run one"
	@echo "make soak     a million requests with random faults, MINUTES=15 at most"
	@echo "make coverage the lines and functions that no test reaches (build-coverage)"
	@echo "make clean    remove the build folders"

demo:
	tools/install-deps core
	cmake --preset release -DTORVEL_WERROR=$(WERROR) >/dev/null
	cmake --build build --target torvel-cli
	build/bin/torvel demo

gallery:
	tools/install-deps core ui
	cmake --preset release -DTORVEL_UI=ON -DTORVEL_WERROR=$(WERROR) >/dev/null
	cmake --build build --target torvel-gallery
	build/bin/torvel-gallery $(if $(SHOT),--shot "$(SHOT)")

build:
	tools/install-deps core ui
	cmake --preset release -DTORVEL_UI=ON -DTORVEL_WERROR=$(WERROR)
	cmake --build build

test:
	tools/install-deps core ui test
	cmake --preset release -DTORVEL_UI=ON -DTORVEL_TESTS=ON -DTORVEL_WERROR=$(WERROR)
	cmake --build build
	ctest --test-dir build --output-on-failure -j $(JOBS)

# A folder of its own for either: the prefix is built in, and the packages' is /usr.
install:
	tools/install-deps core ui package
	cmake --preset release -B build-install -DCMAKE_INSTALL_PREFIX="$$(realpath -m "$(PREFIX)")" -DTORVEL_UI=ON -DTORVEL_TESTING=ON -DTORVEL_WERROR=$(WERROR)
	cmake --build build-install
	cmake --install build-install

package:
	tools/install-deps core ui package
	cmake --preset release -B build-package -DCMAKE_INSTALL_PREFIX=/usr -DTORVEL_UI=ON -DTORVEL_TESTING=ON -DTORVEL_WERROR=$(WERROR)
	cmake --build build-package
	cd build-package && cpack
	tests/install/packages build-package

docs:
	tools/install-deps docs
	tools/docs build-docs

core:
	tools/install-deps core
	cmake --preset core
	cmake --build build-core

asan tsan:
	tools/install-deps core ui test
	cmake --preset $@ -DTORVEL_UI=ON
	cmake --build build-$@
	TSAN_OPTIONS="suppressions=$(CURDIR)/tests/support/tsan.supp" ctest --test-dir build-$@ --output-on-failure -j $(JOBS)

fuzz:
	tools/install-deps core ui fuzz
	cmake --preset fuzz
	cmake --build build-fuzz
	tools/fuzz $(SECONDS)

benchmarks:
	tools/install-deps core ui bench
	cmake --preset bench >/dev/null
	cmake --build build-bench --target benchmarks

bench: benchmarks
	tools/bench

$(BENCHES): bench-%:
	tools/install-deps core ui bench
	cmake --preset bench >/dev/null
	cmake --build build-bench --target $@
	tools/bench $*

soak:
	tools/install-deps core test
	cmake --preset release -DTORVEL_TESTS=ON
	cmake --build build --target soak
	build/tests/soak 1000000 $(MINUTES)

coverage:
	tools/install-deps core test cover
	cmake --preset coverage
	cmake --build build-coverage
	tools/coverage

format:
	tools/install-deps test
	tools/format

check:
	tools/install-deps test
	tools/format --check
	tools/check_includes

clean:
	rm -rf build build-*
