# shellcheck shell=bash
# shellcheck disable=SC2016 # What stands in single quotes is for somebody else to expand.
# What the tests of the scripts share: a scratch tree with a copy of the scripts, commands that stand
# in for real ones, and expectations that say what they saw.

set -euo pipefail
export LC_ALL=C.UTF-8
unset CI

source_tree=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir "$tree/scripts" "$tree/commands"
cp -a "$source_tree/scripts/." "$tree/scripts"
git init -q "$tree"
export PATH="$tree/commands:$PATH"
export GIT_AUTHOR_NAME=A GIT_AUTHOR_EMAIL=a@example.org GIT_COMMITTER_NAME=A GIT_COMMITTER_EMAIL=a@example.org

# stand_in COMMAND BODY: a command that the scripts find before the real one. What it is called with
# is kept in the file `calls`.
stand_in() {
    printf '#!/bin/bash\nprintf "%%s\\n" "%s $*" >>"%s"\n%s\n' "$1" "$tree/calls" "$2" >"$tree/commands/$1"
    chmod +x "$tree/commands/$1"
}

# run COMMAND...: its exit code in $code, what it printed in $output and $errors.
run() {
    code=0
    "$@" >"$tree/output" 2>"$tree/errors" </dev/null || code=$?
    output=$(<"$tree/output")
    errors=$(<"$tree/errors")
}

fail() {
    printf 'FAILED: %s\nexit code: %s\noutput: %s\nerrors: %s\n' "$1" "$code" "$output" "$errors"
    exit 1
}

expect_success() { ((code == 0)) || fail "$1 should succeed"; }
expect_failure() { ((code != 0)) || fail "$1 should fail"; }
expect_output() { [[ $output == *"$1"* ]] || fail "the output should hold: $1"; }
expect_one_error_line() {
    [[ $errors == *"$1"* && $errors != *$'\n'* ]] || fail "the only line of errors should hold: $1"
}
