#!/usr/bin/env bash
# shellcheck disable=SC2016 # What stands in single quotes is for somebody else to expand.
# What is there already is not asked of the network, and what is missing is all that gets installed.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

printf 'build first\nbuild second\nlint third\n' >"$tree/scripts/packages"
stand_in sudo '"$@"'
stand_in apt-get 'exit 0'
all_installed='shift 2; for p; do echo "$p installed"; done'

stand_in dpkg-query "$all_installed"
run "$tree/scripts/install-deps"
expect_success 'with nothing missing'
if grep -q apt-get "$tree/calls"; then
    fail 'nothing is missing, and apt-get was called'
fi

stand_in dpkg-query 'echo "first installed"; echo "second config-files"; exit 1'
run "$tree/scripts/install-deps" build
expect_success 'with one package missing'
grep -q 'apt-get .*update$' "$tree/calls" || fail 'the package lists were not brought up to date'
grep -q 'apt-get .*install --no-install-recommends second$' "$tree/calls" ||
    fail 'not just the missing package of the group was installed'

stand_in apt-get '[[ $* == *update ]]'
run "$tree/scripts/install-deps"
expect_failure 'when the packages cannot be had'
expect_one_error_line 'build/logs/apt-install.log'

run "$tree/scripts/install-deps" nonsense
expect_failure 'a group that is not there'
expect_one_error_line "no group 'nonsense'"
