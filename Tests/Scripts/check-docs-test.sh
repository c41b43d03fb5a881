#!/usr/bin/env bash
# shellcheck disable=SC2016 # What stands in single quotes is for somebody else to expand.
# A document that names a path which is not there makes the check red, and says where.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

mkdir "$tree/docs"
touch "$tree/docs/picture.svg"
printf '%s\n' 'See `docs/picture.svg`, ![it](picture.svg), [far](https://example.org/a.md), `build/x/y`,' \
    '`scripts/count --check` and `<Library>/src/X.cpp`.' >"$tree/docs/a.md"
run "$tree/scripts/check-docs" "$tree"
expect_success 'a document with good paths'

for text in 'in `docs/none.svg` it' 'a [link](none.md) to it' 'the file `None.cpp`'; do
    printf 'first\n%s\n' "$text" >"$tree/docs/b.md"
    run "$tree/scripts/check-docs" "$tree"
    expect_failure "a document with: $text"
    expect_output 'docs/b.md:2: there is no '
done
