#!/usr/bin/env bats
# Adapters whose lies show only after a while, in a session or when they are killed, before the conformance test: it must find each of them.

load liars

@test "sessions that end with their door are found" {
    expect_found 'a session lives on while its door is moved and locked, and while settings change' \
        'if [ "$2" = lock ]; then honestly "$@" || exit; kill $(cat $state/sessions 2>/dev/null) 2>/dev/null; exit 0; fi
         if [ -s $state/clissh.pid ]; then awk -v parent="$(cat $state/clissh.pid)" '\''$4 == parent { print $1 }'\'' /proc/[0-9]*/stat >$state/sessions; fi'
}

@test "a DSCP that never reaches the packets, or stays on them, is found" {
    expect_found 'packets of a new session carry the DSCP that is set, and no longer once it is removed' \
        '[ "$2" != --ipQos ] || exit 0' '[ "$2" != --removeIpQoS ] || exit 0'
}

@test "a renegotiation that never happens is found" {
    expect_found 'a session is renegotiated by the server once the time that is set has passed' '[ "$2" != --renegotiationTime ] || exit 0'
}

# What is in force is written down last, and for a while it is not there.
window_at_end() { # COMMAND
    # shellcheck disable=SC2016
    echo 'if [ "$'"$1"' ]; then honestly "$@" || exit; mkdir -p $state/gone; mv $state/state* $state/gone; sleep 0.3; mv $state/gone/* $state; exit 0; fi'
}

@test "a run that must not be killed shortly before its end is found" {
    expect_found 'a run that is killed keeps no later run from succeeding, and leaves the other door open' "$(window_at_end '2" = unlock')"
    expect_found 'a lock or a batch that is killed keeps no later run from succeeding, and both doors reachable' "$(window_at_end '1" = ssh')" \
        "$(window_at_end '2" = lock')"
}
