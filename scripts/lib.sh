# shellcheck shell=bash
# What the scripts share: where things are, steps with progress and a log, and one line on failure.
# Sourced first by every script; leaves the shell at the top of the tree.

set -euo pipefail
export LC_ALL=C.UTF-8

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
program=${0#"$root/"}
logs=$root/build/logs
cores=$(nproc)
cd "$root"
mkdir -p "$logs"

# One compiler cache serves every clone of the tree, wherever it stands.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

# A script that ends badly says so in one line: its own words when it has any, else the command.
explained=false
trap 'ended $? "$BASH_COMMAND"' EXIT
ended() {
    if (($1 != 0)) && [[ $explained == false ]]; then
        printf '%s: failed (exit code %d): %s\n' "$program" "$1" "${2%%$'\n'*}" >&2
    fi
}

die() {
    explained=true
    printf '%s: %s\n' "$program" "$*" >&2
    exit 1
}

# call SCRIPT [ARGUMENT...]: runs another of these scripts, which says itself what failed.
call() {
    "$@" || {
        explained=true
        exit 1
    }
}

# git over this tree, also when another user owns it (a clone used through sudo).
tree_git() { git -c safe.directory="$root" -C "$root" "$@"; }

# Reads a log and shows how it goes: a changing line on a terminal, else a line every ten seconds.
progress() {
    local line shown=$SECONDS
    while IFS= read -r line || [[ -n $line ]]; do
        if [[ -t 1 ]]; then
            printf '\r\033[K    %s' "${line:0:90}"
        elif ((SECONDS - shown >= 10)); then
            shown=$SECONDS
            printf '    %s\n' "${line:0:110}"
        fi
    done
    if [[ -t 1 ]]; then
        printf '\r\033[K'
    fi
}

# logged NAME COMMAND...: runs COMMAND, shows its progress and keeps its output in a log.
# Gives back the exit code of COMMAND.
logged() {
    local log=$logs/$1.log
    shift
    "$@" </dev/null 2>&1 | tee "$log" | progress
}

# step TITLE NAME COMMAND...: `logged`, announced and timed. A failure ends the script; where nobody
# can look at the log afterwards its last lines come first.
step() {
    local title=$1 name=$2 started=$SECONDS
    shift 2
    printf '%s...\n' "$title"
    if ! logged "$name" "$@"; then
        if [[ ${CI:-} == true ]]; then
            tail -n 60 "$logs/$name.log"
        fi
        die "${title,} failed; see build/logs/$name.log"
    fi
    printf '%s: done in %d s\n' "$title" $((SECONDS - started))
}

# build PRESET [TARGET...]: configures a preset and builds the targets, or everything.
build() {
    local preset=$1 targets=()
    shift
    if (($# > 0)); then
        targets=(--target "$@")
    fi
    step "Configuring $preset" "$preset-configure" cmake --preset "$preset"
    step "Building $preset" "$preset-build" \
        cmake --build --preset "$preset" --parallel "$cores" "${targets[@]}"
}
