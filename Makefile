# The few commands that people type; what they build is described in CMakeLists.txt and CMakePresets.json.

.PHONY: run test bench clang asan tsan clean

# Prints the attributes of the samples, or of DOC=path.
run:
	scripts/install-dependencies
	cmake --preset release
	cmake --build --preset release
	build/release/bin/wqf import $(if $(DOC),"$(DOC)",build/release/samples)

test:
	scripts/install-dependencies
	cmake --preset dev
	cmake --build --preset dev
	ctest --preset dev --parallel 2

# The same tests with another compiler and under sanitizers.
clang asan tsan:
	scripts/install-dependencies $(filter clang,$@)
	cmake --preset $@
	cmake --build --preset $@
	ctest --preset $@ --parallel 2

bench:
	scripts/install-dependencies bench
	cmake --preset bench
	cmake --build --preset bench
	bench/run build/bench

clean:
	rm -rf build
