#!/usr/bin/env bats
# The promises of docs/adapter-contract.md that can be seen from outside, asked of any adapter.
#
#   VORMA=/path/to/scripts/vorma bats conformance.bats
#
# VORMA        the adapter, installed so that it works; the reference adapter on a private sshd when it is not set.
#              Its doors are opened, moved and closed, and its settings changed: use a node that serves nobody.
# VORMA_ADDRESS   where its doors listen (127.0.0.1)
# VORMA_CIPHER    a cipher that its sshd knows (aes256-ctr)

load harness
setup_file() { make_keys; }

setup() {
    free_port port
    free_port other_port
    address=${VORMA_ADDRESS:-127.0.0.1} cipher=${VORMA_CIPHER:-aes256-ctr}
    if [ -n "${VORMA-}" ]; then
        call=("$VORMA")
    else
        set_stage
        # shellcheck disable=SC2206
        call=(${VORMA_SHELL:-sh} "$scripts/vorma")
    fi
    limit=30 run_it spi-revision
    IFS=. read -r major minor patch <<<"$output"
}

teardown() {
    limit=30 run_it clissh lock
    limit=30 run_it netconfssh lock
    [ -n "${VORMA-}" ] || clear_stage
}

# As the node runs it. Output is taken through a pipe: a listener that kept it would hold this up beyond the limit.
run_it() { run --separate-stderr timeout -s KILL "$limit" env -i PATH=/usr/bin:/bin setsid -w "${call[@]}" "$@" </dev/null; }
must() { limit=30 run_it "$@"; [ "$status" -eq 0 ] || { echo "vorma $* ended with $status: $stderr" >&2; return 1; }; }
must_not() {
    limit=30 run_it "$@"
    { [ "$status" -ne 0 ] && [ "$status" -lt 126 ]; } || { echo "vorma $* ended with $status" >&2; return 1; }
    [ -n "$stderr" ] || { echo "vorma $* does not say why" >&2; return 1; }
}
knows() { [ "$major" -gt 1 ] || { [ "$major" -eq 1 ] && [ "$minor" -ge "$1" ]; } || skip "revision $major.$minor.$patch"; }
open_on() { greets "$1" "$address"; }
closed_on() { ! open_on "$1"; }

@test "the revision is three numbers, within 5 seconds" {
    limit=5 run_it spi-revision
    [ "$status" -eq 0 ]
    [[ $output =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]]
}

@test "once unlock has ended with 0 the door greets" {
    for door in clissh netconfssh; do
        must $door unlock port "$port"
        open_on "$port"
        must $door lock
    done
}

@test "once lock has ended with 0 the door is closed" {
    must clissh unlock port "$port"
    must clissh lock
    closed_on "$port"
}

@test "unlock on another port closes the old one" {
    must clissh unlock port "$port"
    must clissh unlock port "$other_port"
    open_on "$other_port"
    closed_on "$port"
}

@test "the doors are independent" {
    must clissh unlock port "$port"
    must netconfssh unlock port "$other_port"
    must clissh lock
    open_on "$other_port"
    closed_on "$port"
}

@test "the same twice is as good as once" {
    for again in 1 2; do must clissh unlock port "$port"; done
    open_on "$port"
    for again in 1 2; do must clissh lock; done
    closed_on "$port"
}

@test "a port that is none is refused and the door stays as it is" {
    must clissh unlock port "$port"
    for bad in 0 65536 4294967295 -1 abc ''; do must_not clissh unlock port "$bad"; done
    open_on "$port"
}

@test "a taken port is refused and the door stays as it is" {
    must clissh unlock port "$port"
    must netconfssh unlock port "$other_port"
    must_not clissh unlock port "$other_port"
    open_on "$port"
    open_on "$other_port"
}

@test "an unknown command, door or option is refused" {
    must_not
    must_not telnet lock
    must_not clissh frobnicate
    must_not ssh --frobnicate 1
}

@test "algorithms, DSCP and renegotiation are taken in one batch, and the doors go on greeting" {
    knows 8
    must clissh unlock port "$port"
    must ssh --ciphers "$cipher" --ipQos 46 --ipQos 10 --renegotiationTime 3600
    open_on "$port"
    must ssh --removeIpQoS --renegotiationTime none
    open_on "$port"
}

@test "settings are taken while the doors are closed" {
    knows 7
    must ssh --ciphers "$cipher" --removeIpQoS
    must clissh unlock port "$port"
    open_on "$port"
}

@test "an unknown algorithm is refused and the doors go on greeting" {
    knows 7
    must clissh unlock port "$port"
    for option in --ciphers --kexAlgorithms --macs; do must_not ssh $option no-such-algorithm; done
    for list in ',' "$cipher," "$cipher,,$cipher" '-*' ''; do must_not ssh --ciphers "$list"; done
    for dscp in 64 -1 ef ''; do must_not ssh --ipQos "$dscp"; done
    open_on "$port"
}

@test "a run that is killed keeps no later run from succeeding" {
    for milliseconds in 0 5 10 15 20 30 40; do
        env -i PATH=/usr/bin:/bin setsid "${call[@]}" clissh unlock port "$port" </dev/null >/dev/null 2>&1 3>&- &
        sleep "0.$(printf %03d $milliseconds)"
        kill -KILL -- "-$!" 2>/dev/null || true
        wait $! 2>/dev/null || true
        must clissh unlock port "$port"
        open_on "$port"
        must clissh lock
        closed_on "$port"
    done
}

@test "runs at the same time follow one another" {
    pids=()
    for command in "clissh unlock port $port" "netconfssh unlock port $other_port" "clissh unlock port $port" "netconfssh unlock port $other_port"; do
        # shellcheck disable=SC2086
        env -i PATH=/usr/bin:/bin setsid -w "${call[@]}" $command </dev/null >/dev/null 2>&1 3>&- &
        pids+=($!)
    done
    for pid in "${pids[@]}"; do wait "$pid"; done
    open_on "$port"
    open_on "$other_port"
}

@test "the listener stays when the adapter's process group is killed after the run" {
    env -i PATH=/usr/bin:/bin setsid "${call[@]}" clissh unlock port "$port" </dev/null >/dev/null 2>&1 3>&- &
    group=$!
    wait $group
    kill -KILL -- "-$group" 2>/dev/null || true
    open_on "$port"
}
