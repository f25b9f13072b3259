#!/bin/sh
# Makes a C and C++ compiler for musl out of a compiler for glibc: musl-toolchain.sh COMPILER-PREFIX TARGET FOLDER SOURCES
# builds musl, from SOURCES, and libstdc++, and installs FOLDER/bin/TARGET-gcc and -g++.
set -eu
prefix=$1
target=$2
folder=$3
sources=$(realpath "$4")
mkdir -p "$folder/bin" "$folder/etc" "$folder/build/libstdc++"
cd "$folder"
for tool in ar as ld nm objcopy objdump ranlib readelf strip; do
    ln -sf "$(command -v "$prefix$tool")" "bin/$target-$tool"
done
PATH=$folder/bin:$PATH
(cd "$sources" && CC=${prefix}gcc-12 ./configure --target="$target" --prefix="$folder" \
    --syslibdir="$folder/lib" --enable-wrapper=gcc && make -j"$(nproc)" && make install)
echo "$folder/lib" >"etc/ld-musl-${target%%-*}.path"

# The unwinder of a compiler for glibc asks it for the tables of an address; musl can only list all objects.
cat >build/find_object.c <<'END'
#define _GNU_SOURCE
#include <link.h>
#include <stddef.h>
struct result { unsigned long long flags; void *start, *end; struct link_map *map; void *tables; unsigned long long reserved[7]; };
struct search { ElfW(Addr) address; struct result *result; };
static int visit(struct dl_phdr_info *object, size_t size, void *data) {
    struct search *search = data;
    int is_here = 0;
    ElfW(Addr) tables = 0;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        ElfW(Phdr) const *part = &object->dlpi_phdr[i];
        ElfW(Addr) start = object->dlpi_addr + part->p_vaddr;
        is_here |= part->p_type == PT_LOAD && search->address - start < part->p_memsz;
        tables = part->p_type == PT_GNU_EH_FRAME ? start : tables;
    }
    search->result->tables = (void *)tables;
    return is_here && tables != 0;
}
__attribute__((visibility("hidden"))) int _dl_find_object(void *address, struct result *result) {
    struct search search = {(ElfW(Addr))address, result};
    return dl_iterate_phdr(visit, &search) ? 0 : -1;
}
END
"${prefix}gcc-12" -specs "$folder/lib/musl-gcc.specs" -O2 -fPIC -c build/find_object.c -o build/find_object.o
"bin/$target-ar" rcs lib/libfind_object.a build/find_object.o
sed -i "s|%:if-exists(libgcc_eh.a%s)|& $folder/lib/libfind_object.a|" lib/musl-gcc.specs

wrap() { # COMPILER OPTIONS
    printf '#!/bin/sh\nexec %s%s-12 -specs %s/lib/musl-gcc.specs %s "$@"\n' "$prefix" "$1" "$folder" "$2" >"bin/$target-$1"
    chmod +x "bin/$target-$1"
}
wrap gcc ""
wrap g++ "-nostdinc++"
tar -xf /usr/src/gcc-12/gcc-*.tar.xz -C build --strip-components=1
(cd build/libstdc++ && CC=$folder/bin/$target-gcc CXX=$folder/bin/$target-g++ CFLAGS="-O2 -fPIC" CXXFLAGS="-O2 -fPIC" \
    ../libstdc++-v3/configure --host="$target" --prefix="$folder" --libdir="$folder/lib" --disable-multilib \
    --disable-nls --disable-libstdcxx-pch --disable-shared --with-pic --with-gxx-include-dir="$folder/include/c++" &&
    make -j"$(nproc)" && make install)
wrap g++ "-nostdinc++ -isystem $folder/include/c++ -isystem $folder/include/c++/$target"
# by hand, as the build would leave out the unwinder, which a program cannot provide: its symbols are hidden
"bin/$target-g++" -shared -nodefaultlibs -Wl,-soname,libstdc++.so.6 -o lib/libstdc++.so.6 \
    -Wl,--whole-archive lib/libstdc++.a -Wl,--no-whole-archive -lgcc -lgcc_eh lib/libfind_object.a -lc
ln -sf libstdc++.so.6 lib/libstdc++.so
rm -rf build
