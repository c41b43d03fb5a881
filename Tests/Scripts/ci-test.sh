#!/usr/bin/env bash
# shellcheck disable=SC2016 # What stands in single quotes is for somebody else to expand.
# .ci/run goes through all stages whatever happens, adds up their tests and fails with any of them.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

mkdir "$tree/.ci"
cp "$source_tree/.ci/run" "$tree/.ci/run"

# script NAME BODY: stands in for one of the scripts.
script() {
    printf '#!/bin/bash\n%s\n' "$2" >"$tree/scripts/$1"
    chmod +x "$tree/scripts/$1"
}
summary='printf "100%% tests passed, 0 tests failed out of 10\n\nTotal Test time (real) = 1 sec\n"'

script test "$summary"
script lint 'exit 0'
script run 'exit 0'
run "$tree/.ci/run"
expect_success 'with every stage good'
[[ ${output##*$'\n'} == '22 passed, 0 failed' ]] || fail 'two test runs and two checks should count'

script test '[[ $1 != tsan ]] || { printf "80%% tests passed, 2 tests failed out of 10\n"; exit 1; }; '"$summary"
script lint 'exit 1'
run "$tree/.ci/run"
expect_failure 'with failing stages'
expect_output 'failed: lint, thread sanitizer'
[[ ${output##*$'\n'} == '19 passed, 3 failed' ]] || fail 'each failed test and check should count'
