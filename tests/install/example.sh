# shellcheck shell=sh
# The README's example as a program, and a database for it; for the scripts in this folder, which set `source`.

# shellcheck disable=SC2154 # source
write_program() {
    echo '#include <cstdio>'
    for header in "$source"/../../include/*.h; do
        echo "#include <$(basename "$header")>"
    done
    # static variables whose initializers read the library's
    echo 'char const* const label = QOS_LBL[19];'
    echo 'std::string const folder = BEConfig::DOWNLOAD_STORAGE;'
    echo 'int main() {'
    echo 'if (label == nullptr || folder != "/tmp/be_download") { return puts("read too early"); }'
    # shellcheck disable=SC2016 # a pattern
    sed -n '/^```cpp$/,/^```$/p' "$source/../../README.md" | sed '/^```/d'
    echo '}'
}

write_database() { # FOLDER
    mkdir -p "$1/data/network"
    echo '{"lan": {"address": "192.168.1.1"}}' >"$1/data/network/network.ldb"
}
