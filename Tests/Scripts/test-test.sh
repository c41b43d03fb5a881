#!/usr/bin/env bash
# shellcheck disable=SC2016 # What stands in single quotes is for somebody else to expand.
# scripts/test is red when a test fails, when none is found and when the build breaks; and it closes
# with CTest's summary.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

stand_in dpkg-query 'shift 2; for p; do echo "$p installed"; done'
stand_in cmake 'exit 0'

stand_in ctest 'printf "1/2 Test #1: a_test ... Passed\n100%% tests passed, 0 tests failed out of 2\n\nTotal Test time (real) = 1 sec\n"'
run "$tree/scripts/test"
expect_success 'with good tests'
[[ $(grep -c '^100% tests passed' <<<"$output") == 2 ]] || fail 'plain and sanitized tests should run'
[[ ${output##*$'\n'} == 'Total Test time'* ]] || fail 'the summary should come last'

stand_in ctest 'printf "50%% tests passed, 1 tests failed out of 2\n"; exit 8'
run "$tree/scripts/test" dev
expect_failure 'with a failing test'
expect_output '1 tests failed out of 2'
expect_one_error_line 'build/logs/dev-test.log'

stand_in ctest 'printf "No tests were found!!!\n"'
run "$tree/scripts/test" dev
expect_failure 'without tests'
expect_one_error_line 'no tests were found'

stand_in cmake '[[ $* != *--build* ]]'
run "$tree/scripts/test" dev
expect_failure 'with a build that breaks'
expect_one_error_line 'building dev failed; see build/logs/dev-build.log'
