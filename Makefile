# The few commands that people type; what they build is described in CMakeLists.txt and CMakePresets.json.

.PHONY: run test bench clang tsan fuzz format tidy package clean

# Prints the attributes of the samples, or of DOC=path.
run:
	scripts/install-dependencies
	cmake --preset release
	cmake --build --preset release
	build/release/bin/wqf import $(if $(DOC),"$(DOC)",build/release/samples)

test:
	scripts/install-dependencies test
	cmake --preset dev
	cmake --build --preset dev
	ctest --preset dev --parallel 2

# The same tests with another compiler, and under the thread sanitizer.
clang tsan:
	scripts/install-dependencies test $(filter clang,$@)
	cmake --preset $@
	cmake --build --preset $@
	ctest --preset $@ --parallel 2

bench:
	scripts/install-dependencies bench
	cmake --preset bench
	cmake --build --preset bench
	bench/run build/bench
	bench/storage_bench build/bench

# Looks for inputs that break a promise: every target for a minute, or SECONDS=600, or only those in TARGETS=import.
fuzz:
	scripts/install-dependencies fuzz
	cmake --preset fuzz
	cmake --build --preset fuzz
	fuzz/run build/fuzz $(or $(SECONDS),60) $(TARGETS)

# Fails where clang-format would change something.
format:
	scripts/install-dependencies format
	git ls-files -z '*.h' '*.cpp' | xargs -0 clang-format --dry-run --Werror

# Looks for the habits that .clang-tidy names, in the product's sources.
tidy:
	scripts/install-dependencies tidy
	cmake --preset clang -DZEMA_TESTS=OFF -B build/tidy
	git ls-files -z '*.cpp' ':!tests' ':!bench' ':!fuzz' | xargs -0 -n 8 -P 2 clang-tidy -p build/tidy --quiet

# Leaves wqf_VERSION_ARCHITECTURE.deb in build/package.
package:
	scripts/install-dependencies package
	cmake --preset package
	cmake --build --preset package
	cmake --build --preset package --target package
	lintian --fail-on error,warning build/package/*.deb

clean:
	rm -rf build
