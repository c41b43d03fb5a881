#!/usr/bin/env bash
# shellcheck disable=SC2016 # What stands in single quotes is for somebody else to expand.
# A broken text anywhere in the tree makes the check red, and ordinary ones do not.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

# One letter of each is written as its code, so that the check of this very file stays green.
broken=(
    'as the sp\x65c says' 'the Specific\x61tion' 'as sp\x65cified' 'see Pa\x72t 3.2' 'by this Pa\x72t'
    'Subsyst\x65m 2' 'Sect\x69on 4.1' 'see DESI\x47N.md' 'closes iss\x75e 3'
    'in /wo\x72k/main' '"/ro\x6ft/.cache"' 'to /t\x6dp/x.svg' 'from deb.debi\x61n.org' 'regist\x72y.npmjs.org'
    'a codin\x67 agent' 'a language mo\x64el' 'the C\x45O' 'Co-auth\x6fred-by: X' 'by Zibblef\x72atz'
    'class MyZibblef\x72atzMouse' 'ZIBBLE_F\x52ATZ'
    'myzibblef\x72atzmouse' 'a Zi\x62Mouse' 'zi\x62_mouse' 'zI\x42'
)
ordinary='the part of a plan, an inspector, a special section of 3 lines, homework/main, it issued 3
postings, build/tmp/x, the whole specific case, ${TMPDIR:-/tmp}, parts of it, a subsystem, a zibber'

checker=$tree/scripts/check-wording
printf '11 %s\n' "$(printf zibblefratz | sha256sum | cut -d ' ' -f 1)" >>"$checker"
printf '3 %s\n' "$(printf zib | sha256sum | cut -d ' ' -f 1)" >>"$checker"
check() { run "$checker" "$tree"; }

printf '%s\n' "$ordinary" >"$tree/notes.txt"
git -C "$tree" add notes.txt
git -C "$tree" commit -qm 'Say what a part is for'
check
expect_success 'a tree without broken texts'

for text in "${broken[@]}"; do
    printf "first line\nhere: %b\n" "$text" >"$tree/notes.txt"
    check
    expect_failure "a file with: $text"
    expect_output 'notes.txt:2: '
done

printf '%s\n' "$ordinary" >"$tree/notes.txt"
touch "$tree/$(printf 'sp\x65c.txt')"
check
expect_failure 'a file with a broken name'
rm "$tree/$(printf 'sp\x65c.txt')"

git -C "$tree" commit -q --allow-empty -m "$(printf 'Add a thing\n\nAs Pa\x72t 1.2 says')"
check
expect_failure 'a commit message that is broken'
expect_output 'commit '
