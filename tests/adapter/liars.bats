#!/usr/bin/env bats
# Adapters that report success and break a promise, before the conformance test: it must find each of them.

load harness
setup_file() { make_keys; }
setup() {
    set_stage
}
teardown() {
    for pid in $(processes_of "$state"); do kill -KILL "$pid"; done
    clear_stage
}

# An adapter that stands before the reference adapter.
conformance() { # TEST SCRIPT: asks this one test; in the script, honestly does what was asked for
    printf '%s\n' '#!/bin/sh' "state=$state" "honestly() { $scripts/vorma \"\$@\"; }" "$2" 'honestly "$@"' >"$BATS_TEST_TMPDIR/liar"
    chmod +x "$BATS_TEST_TMPDIR/liar"
    run env -i PATH="${PATH#"$BATS_LIBEXEC:"}" HOME="$HOME" TMPDIR="${TMPDIR:-/tmp}" VORMA="$BATS_TEST_TMPDIR/liar" \
        VORMA_USER="$(id -un)" VORMA_KEY="$BATS_FILE_TMPDIR/client_key" \
        bats --tap -f "^$1\$" "$BATS_TEST_DIRNAME/conformance.bats" 3>&-
    echo "$output" >&2
}

expect_found() { # TEST LIE
    conformance "$1" ''
    [ "$status" -eq 0 ] && [ "${lines[0]}" = 1..1 ] && [[ $output != *'# skip'* ]]
    conformance "$1" "$2"
    [ "$status" -ne 0 ] && [[ ${lines[1]} == 'not ok 1 '* ]]
}

@test "settings that are never applied are found" {
    for kind in cipher 'key exchange' MAC; do
        expect_found "the $kind that is set gets in through both doors, and no other" '[ "$1" != ssh ] || exit 0'
    done
}

@test "settings that reach only the open door are found" {
    expect_found 'settings that are given while a door is closed hold when it opens' \
        'case $1:$(ls $state) in ssh:*clissh.conf*netconfssh.conf*) ;; ssh:*) exit 0 ;; esac'
}

@test "sessions that end with their door are found" {
    expect_found 'a session lives on while its door is moved and locked, and while settings change' \
        'if [ "$2" = lock ]; then honestly "$@" || exit; kill $(cat $state/sessions 2>/dev/null) 2>/dev/null; exit 0; fi
         if [ -s $state/clissh.pid ]; then awk -v parent="$(cat $state/clissh.pid)" '\''$4 == parent { print $1 }'\'' /proc/[0-9]*/stat >$state/sessions; fi'
}

@test "a locked door that still accepts connections, though it greets nobody, is found" {
    expect_found 'once lock has ended with 0 the door refuses connections' \
        'if [ "$2" = lock ] && [ -s $state/clissh.pid ]; then kill -STOP $(cat $state/clissh.pid); exit 0; fi'
}

@test "a refused batch of which a part was applied is found" {
    expect_found 'a batch with an unknown algorithm or a bad value is refused as a whole' \
        'case "$*" in "ssh --ciphers "*" --macs no-such"*) honestly ssh --ciphers "$3" ;; esac'
}
