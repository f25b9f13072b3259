#!/bin/sh
# run.sh BUILD NM CXX [TOOLCHAIN]: installs the build to a folder of its own, checks what the shared
# libraries export and under which version, builds and runs the example of the README against them, through
# CMake and through pkg-config, and puts another validator in the place of the library's. With "static" for
# BUILD it first builds static libraries. RUN is the emulator of a foreign program, if there has to be one.
set -eu
build=$1
nm=$2
cxx=$3
toolchain=${4:-}
source=$(dirname "$0")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
# shellcheck source=tests/install/example.sh
. "$source/example.sh"

if [ "$build" = static ]; then
    build=$work/build
    cmake -S "$source/../.." -B "$build" -DBUILD_SHARED_LIBS=OFF -DCMAKE_BUILD_TYPE=Debug \
        -DVOBIUTILS_BUILD_TESTS=OFF -DVOBIUTILS_BUILD_EXAMPLES=OFF -DCMAKE_CXX_COMPILER="$cxx" \
        ${toolchain:+"-DCMAKE_TOOLCHAIN_FILE=$toolchain"} >/dev/null
    cmake --build "$build" --parallel 2 >/dev/null
fi
cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name libvobiutils.so -o -name libvobiutils.a)
jsonschema=$(find "$prefix" -name libjsonschema-c.so)
case $library in
    *.a) static=yes ;;
    *) static= ;;
esac

if [ -z "$static" ]; then
    # size_t and int64_t are other types with another word size
    "$nm" -DC --defined-only "$library" ${jsonschema:+"$jsonschema"} |
        sed -n 's/unsigned long/unsigned int/g; s/long long/long/g; s/^[0-9a-f]* [^A] //p' |
        LC_ALL=C sort -u >"$work/exports"
    grep "${jsonschema:+.}\|@@VOBIUTILS" "$source/exports.txt" | diff - "$work/exports"
fi

write_program >"$work/example.cpp"

check() {
    write_database "$work"
    (cd "$work" && ${RUN:-} "$1" | grep -qx 192.168.1.1 && grep -q '"host":"printer"' data/network/network.ldb)
}

cmake -S "$source" -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCONSUMER_SOURCE="$work/example.cpp" ${toolchain:+"-DCMAKE_TOOLCHAIN_FILE=$toolchain"} >/dev/null
cmake --build "$work/cmake" >/dev/null
check "$work/cmake/consumer"

PKG_CONFIG_PATH=$(dirname "$library")/pkgconfig
export PKG_CONFIG_PATH
others=
if [ -n "$toolchain" ]; then
    others=$VOBIUTILS_PREFIX/lib
    export PKG_CONFIG_LIBDIR="$others/pkgconfig"
fi
compile() { # PROGRAM SOURCE...
    program=$work/$1
    shift
    # shellcheck disable=SC2046 # a list of options
    "$cxx" -std=c++11 "$@" -o "$program" $(pkg-config ${static:+--static} --cflags --libs vobiutils) \
        -Wl,-rpath,"$(dirname "$library")" ${others:+"-Wl,-rpath-link,$others"}
}
compile consumer "$work/example.cpp"
check "$work/consumer"

# A program's own validator, and a platform's.
cat >"$work/own.cpp" <<'END'
#include <json-c/json.h>
#include <cstdio>
extern "C" int json_validate_instance(json_object* value, json_object*) { return puts("own") >= 0 && value != nullptr; }
extern "C" int json_validate_instance_from_file(char const*, char const*) { return puts("own, files") >= 0; }
END
cat >"$work/validating.cpp" <<'END'
#include <JsonData.h>
#include <TreeMapObject.h>
int main() {
    TreeMapObject value("1");
    JsonData::validateFile(&value, "schema");
    JsonData::validateFile(&value, "schema");
    return JsonData::validateObject(&value, "{\"type\": \"string\"}") + JsonData::validateFile("own.cpp", "own.cpp");
}
END
echo '{"type": "string"}' >"$work/schema"
expect() { # LINES PROGRAM: it uses that validator, and nothing else is printed
    (cd "$work" && ${RUN:-} "./$2") >"$work/output" 2>&1 || echo "ended with $?" >>"$work/output"
    printf '%b' "$1" | diff - "$work/output"
}
check_own() { # PROGRAM
    expect 'own\nown\nown\nown, files\n' "$1"
}

# A compiled schema: by the library's own validator, and below by those that take its place.
cat >"$work/checking.cpp" <<'END'
#include <CompiledSchema.h>
#include <cstdio>
int main() {
    json_object* const value = json_object_new_int(1);
    CompiledSchema const rule("schema");
    CompiledSchema::Fault fault;
    bool const accepted = rule.accepts(value);
    bool const refused = !CompiledSchema("schema").accepts(nullptr, &fault);
    json_object_put(value);
    printf("%d %d %s\n", accepted, refused, fault.message);
}
END
compile checking "$work/checking.cpp"
expect '0 1 must be a string\n' checking

compile validating_itself "$work/own.cpp" "$work/validating.cpp"
check_own validating_itself
[ -z "$static" ] || { echo "installed static libraries, built twice and run, with two validators" && exit; }
compile validating "$work/validating.cpp"
mkdir "$work/platform"
compile platform/libjsonschema-c.so.1 -shared -fPIC -Wl,-soname,libjsonschema-c.so.1 "$work/own.cpp"
if [ -z "${RUN:-}" ]; then # an emulator sets the path itself
    LD_LIBRARY_PATH=$work/platform check_own validating
fi
cp "$work/platform/libjsonschema-c.so.1" "$(dirname "$library")/"
check_own validating

cat >"$work/compiling.cpp" <<'END'
#include "own.cpp"
#include <CompiledSchema.h>
extern "C" void* json_schema_compile(json_object*, CompiledSchema::Fault*) { return puts("compile") >= 0 ? stdout : nullptr; }
extern "C" int json_schema_check(void const*, json_object* value, CompiledSchema::Fault* fault) {
    return value != nullptr ? 1 : std::snprintf(fault->message, sizeof fault->message, "refused") * 0;
}
extern "C" void json_schema_free(void*) {}
END
expect 'own\nown\n1 1 is not valid\n' checking
compile platform/libjsonschema-c.so.1 -shared -fPIC -Wl,-soname,libjsonschema-c.so.1 "$work/compiling.cpp"
cp "$work/platform/libjsonschema-c.so.1" "$(dirname "$library")/"
expect 'compile\n1 1 refused\n' checking
echo "installed, built twice and run, with four validators"
