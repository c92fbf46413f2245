# make: builds @NAME@ in build. make test: plays its plays, each in a box of its own. CMakeLists.txt says how.
all:
	cmake -S . -B build
	cmake --build build

test: all
	ctest --test-dir build --output-on-failure

clean:
	rm -rf build

.PHONY: all test clean
