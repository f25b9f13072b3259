#!/bin/sh
# Builds the documentation of the public headers in build/docs: html/index.html, and a manual page
# for each module in man/man3. Fails on a public declaration without documentation.
set -eu
cd "$(dirname "$0")/.."
scripts/install-packages.sh doxygen

rm -rf build/docs
mkdir -p build
copy=$(mktemp -d)  # Doxygen cannot follow links between pages below a folder with a space
trap 'rm -rf "$copy"' EXIT
trap 'exit 1' INT TERM
cp -r --parents include docs tools/vobidb.1 ./*.md "$copy"
mkdir -p "$copy/build/docs"
VOBIUTILS_VERSION=$(sed -n 's/^project(vobiutils VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
export VOBIUTILS_VERSION
(cd "$copy" && doxygen docs/Doxyfile)
mv "$copy/build/docs" build/docs
if grep -nE '^ +[A-Z][A-Z_0-9]*( = [0-9]+)?,$' include/*.h; then  # Doxygen does not warn of these
    echo "enumerators without documentation" >&2
    exit 1
fi

# Doxygen writes one page for a class and one for its header. Merge them, with the usual headings of
# manual pages and without the date and the note on the generator.
cd build/docs/man/man3
rm md_*.3  # the pages in Markdown are for HTML
for page in *.3; do
    sed -i -e "s/\`\`/\\\\(dq/g; s/''/\\\\(dq/g" \
        -e 's/^\.SH "Detailed Description"$/.SH DESCRIPTION/' \
        -e 's/^\.SH "Member Function Documentation"$/.SH FUNCTIONS/' \
        -e 's/^\.SH "Function Documentation"$/.SH "OTHER FUNCTIONS"/' \
        -e 's/^\.SH "\(Member Enumeration\|Enumeration Type\) Documentation"$/.SH ENUMERATIONS/' \
        -e 's/^\.SH "Constructor & Destructor Documentation"$/.SH "CONSTRUCTORS AND DESTRUCTOR"/' \
        -e 's/^\.SH "Member Data Documentation"$/.SH VARIABLES/' \
        -e 's/^\.SH "Variable Documentation"$/.SH "OTHER VARIABLES"/' \
        -e '1s/^\(\.TH "[^"]*" 3\) "[^"]*"/\1 ""/' -e '/^\.SH "Author"$/,$d' "$page"
done
for header in *.h.3; do
    module=${header%.h.3}
    if [ -f "$module.3" ]; then
        {
            sed '/^\.SH DESCRIPTION$/,$d' "$module.3"
            sed -n '/^\.SH SYNOPSIS$/,/^\.SH DESCRIPTION$/p' "$header" |
                sed -n '/^\.SS "\(Functions\|Variables\)"$/,/^\.S[SH]/p' | sed '$d'
            sed -n '/^\.SH DESCRIPTION$/,$p' "$module.3"
            sed -n '/^\.SH DESCRIPTION$/,$p' "$header" | sed 1d | sed -n '/^\.SH /,$p'
        } >page
    else
        sed -e "s|include/$module\\\\*\\.h|$module|" \
            -e "s/^\\.SH SYNOPSIS\$/&\\n\\\\fC#include <$module.h>\\\\fP\\n.br\\n.PP/" "$header" >page
    fi
    mv page "$module.3"
    rm "$header"
done
cd - >/dev/null
ls build/docs/html/index.html build/docs/man/man3/*
