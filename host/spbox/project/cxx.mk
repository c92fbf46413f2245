# make: builds @NAME@ in build. make test: plays it in a box. CMakeLists.txt says how.
all:
	cmake -S . -B build
	cmake --build build

test: all
	ctest --test-dir build --output-on-failure

clean:
	rm -rf build

.PHONY: all test clean
