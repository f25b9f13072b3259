#!/bin/sh
# Makes a C and C++ compiler for musl out of Debian's g++ 12 for glibc.
#   scripts/musl-toolchain.sh PREFIX TARGET FOLDER SOURCES
# builds musl from SOURCES and libstdc++ from gcc-12-source, and installs FOLDER/bin/TARGET-gcc and -g++, which call
# PREFIXgcc-12 and PREFIXg++-12.
set -eu
prefix=$1
target=$2
folder=$3
sources=$(realpath "$4")
find_object=$(realpath "$(dirname "$0")/musl-find-object.c")
mkdir -p "$folder/bin" "$folder/etc" "$folder/build/libstdc++"
cd "$folder"
for tool in ar as ld nm objcopy objdump ranlib readelf size strip; do
    ln -s "$(command -v "$prefix$tool")" "bin/$target-$tool"
done
PATH=$folder/bin:$PATH

(cd "$sources" && CC=${prefix}gcc-12 ./configure --target="$target" --prefix="$folder" \
    --syslibdir="$folder/lib" --disable-wrapper && make -j"$(nproc)" && make install)
loader=$(echo "$folder"/lib/ld-musl-*.so.1)
echo "$folder/lib" >"etc/$(basename "$loader" .so.1).path"  # where the loader looks for libraries

# The compiler finds in FOLDER what it would take from glibc: headers, start files (-B), libraries and loader. Its
# shared unwinder needs glibc; the static one (-static-libgcc) becomes a part of each program and library.
own_headers=$("${prefix}gcc-12" -print-file-name=include)  # stddef.h, stdarg.h and the like
wrap() { # COMPILER HEADERS...
    compiler=$1
    shift
    cat >"bin/$target-$compiler" <<WRAPPER
#!/bin/sh
exec $prefix$compiler-12 -nostdinc $(printf -- '-isystem %s ' "$@" "$folder/include" "$own_headers")\\
    -B$folder/lib/ -L$folder/lib -static-libgcc -Wl,--dynamic-linker=$loader,-rpath-link=$folder/lib "\$@"
WRAPPER
    chmod +x "bin/$target-$compiler"
}
wrap gcc

cp "$("${prefix}gcc-12" -print-file-name=libgcc_eh.a)" lib
"$target-gcc" -O2 -fPIC -c "$find_object" -o build/find-object.o
"$target-ar" rs lib/libgcc_eh.a build/find-object.o

tar -xf /usr/src/gcc-12/gcc-*.tar.xz -C build --strip-components=1 --exclude=gcc/testsuite
ln -s gthr-posix.h build/libgcc/gthr-default.h  # made by a build of all of gcc; without it there is no std::thread
# configured with the compiler for C: a wrapper of g++ would not link before there is a libstdc++, and tests that do
# not link count as functions that musl lacks
(cd build/libstdc++ && CC=$target-gcc CXX="$target-gcc -nostdinc++" CFLAGS="-O2 -fPIC" CXXFLAGS="-O2 -fPIC" \
    ../libstdc++-v3/configure --host="$target" --prefix="$folder" --libdir="$folder/lib" --disable-multilib \
    --disable-nls --disable-libstdcxx-pch --disable-shared --with-gxx-include-dir="$folder/include/c++" &&
    make -j"$(nproc)" && make install)
wrap g++ "$folder/include/c++" "$folder/include/c++/$target"

# linked here, as libstdc++ itself would ask for the shared unwinder
"$target-gcc" -shared -Wl,-soname,libstdc++.so.6 -o lib/libstdc++.so.6 \
    -Wl,--whole-archive lib/libstdc++.a -Wl,--no-whole-archive
ln -s libstdc++.so.6 lib/libstdc++.so
rm -rf build
