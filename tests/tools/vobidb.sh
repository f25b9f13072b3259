#!/bin/sh
# vobidb.sh PROGRAM: plays the session in vobidb.txt, each line that begins with "$ " as a shell command in a
# folder with the sample gateway's data, and compares what it prints (standard error, too) and its status.
# With UPDATE set the file is written anew. RUN is the emulator of a foreign program, if there has to be one.
set -eu
program=$(realpath "$1")
folder=$(realpath "$(dirname "$0")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r "$folder/../../examples/gateway/data" "$work/data"
cd "$work"
rm data/misc/misc_SCHEMA.ldb data/fac/fac_SCHEMA.ldb
vobidb() {
    # shellcheck disable=SC2086 # a command and its arguments
    ${RUN:-} "$program" "$@"
}
hold() { # TYPE COMMAND...: while another process has the database
    (flock -n 9 && shift && "$@") 9>>"data/$1/.lock"
}
same() { # whether the data are what they were
    diff -r -x .lock -x .change -x .change.lock before data
}
TMPDIR=$work
export TMPDIR
while IFS= read -r line; do
    printf '%s\n' "$line"
    case $line in
        '$ '*)
            status=0
            (eval "${line#??}") </dev/null 2>&1 || status=$?
            [ $status = 0 ] || echo "= $status"
            ;;
    esac
done >played <<END_OF_SESSION
$(grep '^[$#]' "$folder/vobidb.txt")
END_OF_SESSION
[ -z "${UPDATE:-}" ] || cp played "$folder/vobidb.txt"
diff "$folder/vobidb.txt" played
echo "all as wanted"
