#!/usr/bin/env bats
# Variants of the adapter that leave out one care each, beside the adapter: a test must fail for each, or it proves nothing. Those that
# show only when the power is lost or at a kill in the middle are put before adapter-walk.

load harness
setup() { programs=${ADAPTER%/*}; }

expect_noticed() { # VARIANT SUITE TEST
    [ -x "$programs/$1" ] || { echo "$programs/$1 is not built" >&2; return 1; }
    ask "$ADAPTER" "$2" "$3"
    { [ "$status" -eq 0 ] && [ "${lines[0]}" = 1..1 ]; } || return
    [[ $output != *'# skip'* ]] || skip "${output##*# skip }"
    ask "$programs/$1" "$2" "$3"
    [ "$status" -ne 0 ] && [[ $output == *'not ok 1 '* ]]
}
ask() { # PROGRAM SUITE TEST
    run env -i TUL_VORMA="$1" PATH="${PATH#"$BATS_LIBEXEC:"}" HOME="$HOME" TMPDIR="${TMPDIR:-/tmp}" VORMA_OWN_MOUNTS="${VORMA_OWN_MOUNTS-}" \
        bats --tap -f "^$3\$" "$BATS_TEST_DIRNAME/$2.bats" 3>&-
    echo "$output" >&2
}

@test "control: a listener that is stopped before all is checked is noticed" {
    expect_noticed vorma-stop-before-check hostile 'a port that only an outgoing connection has is seen before anything is stopped'
}

@test "control: a pid file that is believed is noticed" {
    expect_noticed vorma-pid-file-believed hostile 'when the store is removed under running listeners a lock still closes the port, and an unlock takes the listener over'
}

@test "control: a change that is not rolled back is noticed" {
    expect_noticed vorma-no-roll-back faults 'when the reloaded listener dies the old file and the old port are back'
}

@test "control: a way back that is not gone on a full disk is noticed" {
    expect_noticed vorma-no-roll-back scarce 'on a disk that fills up once all is checked the way back needs no room'
}
