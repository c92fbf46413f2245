# make: builds @NAME@. make test: plays its plays, each in a box of its own.
# Where lmainte is below a folder of its own, PKG_CONFIG_PATH and PATH lead there.
LIBRARIES = lmainte_procedure lmainte lmainte_host
CFLAGS = -std=c11 -O2 -g -Wall -Wextra
override CFLAGS += $(shell pkg-config --cflags $(LIBRARIES))
LDLIBS = $(shell pkg-config --libs $(LIBRARIES)) -Wl,-rpath,$(shell pkg-config --variable=libdir lmainte)

@NAME@: @NAME@.c

test: @NAME@
	spbox test

clean:
	rm -f @NAME@

.PHONY: test clean
