#!/usr/bin/env bats
# The promises of docs/adapter-contract.md that can be seen from outside, asked of any adapter.
#
#   VORMA=/path/to/scripts/vorma bats conformance.bats
#
# VORMA        the adapter, installed so that it works; the reference adapter on a private sshd when it is not set.
#              Its doors are opened, moved and closed, and its settings changed: use a node that serves nobody.
# VORMA_ADDRESS   where its doors listen (127.0.0.1)
# VORMA_CIPHERS, VORMA_KEXES, VORMA_MACS   two names each that its server knows and the local ssh offers by itself, with a comma between; no
#              cipher that brings a MAC of its own (aes256-ctr,aes128-ctr  curve25519-sha256,ecdh-sha2-nistp256  hmac-sha2-256,hmac-sha2-512)
# VORMA_USER, VORMA_KEY   who may log in through both doors, and the file of the private key; without them no session can be watched

load harness
setup_file() { make_keys; }

setup() {
    free_port port
    free_port other_port
    address=${VORMA_ADDRESS:-127.0.0.1}
    ciphers=${VORMA_CIPHERS:-aes256-ctr,aes128-ctr} cipher=${ciphers%,*} other_cipher=${ciphers#*,}
    if [ -n "${VORMA-}" ]; then
        call=("$VORMA") user=${VORMA_USER-} key=${VORMA_KEY-}
    else
        set_stage
        user=$(id -un) key=$BATS_FILE_TMPDIR/client_key
        call=("$scripts/vorma")
    fi
    limit=30 run_it spi-revision
    IFS=. read -r major minor patch <<<"$output"
}

teardown() {
    end_session
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
    [ "${#stderr_lines[@]}" -eq 1 ] || { echo "vorma $* does not say in one line why: '$stderr'" >&2; return 1; }
}
is_since() { [ "$major" -gt 1 ] || { [ "$major" -eq 1 ] && [ "$minor" -ge "$1" ]; }; }
knows() { is_since "$1" || skip "revision $major.$minor.$patch"; }
open_on() { greets "$1" "$address"; }
closed_on() { refuses "$1" "$address"; }

# What becomes of a client that offers only what it is told to. It ends where it would have to log in.
offer() { # PORT CLIENT-OPTION
    run "${ssh_client[@]}" -n -v -o PreferredAuthentications=none -o "$2" -p "$1" "nobody@$address" true
}
gets_in() { # PORT CLIENT-OPTION: far enough to exchange data under what was agreed
    offer "$@"
    [[ $output == *'SSH2_MSG_SERVICE_ACCEPT received'* ]] || { echo "$2 does not get in: $output" >&2; return 1; }
}
turned_away() { # PORT CLIENT-OPTION
    offer "$@"
    [[ $output == *': no matching '*' found. Their offer: '* ]] || { echo "$2 is not turned away: $output" >&2; return 1; }
}

# Each of the two is set in turn: so it does not matter what the server served before, and that it knows both is seen as well.
only_what_is_set_gets_in() { # OPTION CLIENT-KEYWORD NAME,NAME
    knows 7
    must clissh unlock port "$port"
    must netconfssh unlock port "$other_port"
    for pair in "$3" "${3#*,},${3%,*}"; do
        must ssh --ciphers "$cipher" "$1" "${pair%,*}"
        for at in "$port" "$other_port"; do
            gets_in "$at" "$2=${pair%,*}"
            turned_away "$at" "$2=${pair#*,}"
        done
    done
}

needs_session() { { [ -n "$user" ] && [ -n "$key" ]; } || skip 'VORMA_USER and VORMA_KEY are not set'; }

# A session that asks every second whether the other side is still there. It runs nothing, unless an option says so.
hold_session() { # PORT [CLIENT-OPTION...]
    needs_session
    heard=$BATS_TEST_TMPDIR/heard
    : >"$heard"
    [ -p "$BATS_TEST_TMPDIR/silence" ] || mkfifo "$BATS_TEST_TMPDIR/silence"
    "${ssh_client[@]}" -vvv -o ServerAliveInterval=1 "${@:2}" -o SessionType=none -i "$key" -p "$1" "$user@$address" <>"$BATS_TEST_TMPDIR/silence" \
        2>>"$heard" >/dev/null 3>&- &
    session=$!
    wait_until is_answered 1
}
answers() { grep -c 'receive packet: type 8[12]' "$heard" || true; }
is_answered() { [ "$(answers)" -ge "$1" ]; }
is_over() { ! kill -0 "$session" 2>/dev/null; }
is_answered_or_over() { is_answered "$1" || is_over; }
# The first answer may have been under way before.
session_lives() { wait_until is_answered_or_over $(($(answers) + 2)) && ! is_over; }
end_session() { [ -z "${session-}" ] || { kill "$session" 2>/dev/null || true; wait "$session" || true; session=''; }; }

# --- what packets carry ---

# A session behind a filter that, once the session is there, lets through only what carries the DSCP.
needs_gate() {
    gate=${ADAPTER%/*}/dscp-gate
    [ -x "$gate" ] || skip 'the program dscp-gate is not built'
    "$gate" --allowed || skip 'this kernel lets nobody filter a socket of his own'
    [[ $address != *:* ]] || skip 'dscp-gate knows no IPv6'
    needs_session
}
shut_gate() { # PORT DSCP
    local told=$BATS_TEST_TMPDIR/gate
    rm -f "$told"
    # A server may mark only sessions that run something.
    hold_session "$1" -o SessionType=default -o RemoteCommand=cat -o ServerAliveCountMax=2 -o "ProxyCommand=$gate %h %p $(($2 * 4)) '$told'"
    kill -USR1 "$(cat "$told")"
    wait_until grep -q closed "$told"
}
carries() { # PORT DSCP
    shut_gate "$@"
    session_lives || { echo "packets do not carry DSCP $2" >&2; return 1; }
    end_session
}
carries_not() { # PORT DSCP
    shut_gate "$@"
    run ! session_lives
    end_session
}

# --- the processes behind a port ---

listener_of() { # PORT: nothing when the system does not tell
    ss -Hltnp "sport = :$1" | sed -n 's/.*[^0-9]pid=\([0-9]*\).*/\1/p' | sort -n | head -n 1
}

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

@test "once lock has ended with 0 the door refuses connections" {
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

@test "the cipher that is set gets in through both doors, and no other" { only_what_is_set_gets_in --ciphers Ciphers "$ciphers"; }

@test "the key exchange that is set gets in through both doors, and no other" {
    only_what_is_set_gets_in --kexAlgorithms KexAlgorithms "${VORMA_KEXES:-curve25519-sha256,ecdh-sha2-nistp256}"
}

@test "the MAC that is set gets in through both doors, and no other" {
    only_what_is_set_gets_in --macs MACs "${VORMA_MACS:-hmac-sha2-256,hmac-sha2-512}"
}

@test "a session lives on while its door is moved and locked, and while settings change" {
    must clissh unlock port "$port"
    hold_session "$port"
    must clissh unlock port "$other_port"
    ! is_since 7 || must ssh --ciphers "$other_cipher"
    must clissh lock
    closed_on "$other_port"
    session_lives
}

@test "algorithms, DSCP and renegotiation are taken in one batch, and the doors go on greeting" {
    knows 8
    must clissh unlock port "$port"
    must ssh --ciphers "$other_cipher" --ciphers "$cipher" --ipQos 46 --ipQos 10 --renegotiationTime 3600
    gets_in "$port" "Ciphers=$cipher"
    turned_away "$port" "Ciphers=$other_cipher"
    for dscp in 0 63; do must ssh --ipQos $dscp --renegotiationTime 1; done
    must ssh --removeIpQoS --renegotiationTime none
    gets_in "$port" "Ciphers=$cipher"
    turned_away "$port" "Ciphers=$other_cipher"
}

@test "packets of a new session carry the DSCP that is set, and no longer once it is removed" {
    knows 7
    needs_gate
    must clissh unlock port "$port"
    # No server chooses this one by itself.
    must ssh --ipQos 41
    carries "$port" 41
    must ssh --removeIpQoS
    carries_not "$port" 41
}

@test "a session is renegotiated by the server once the time that is set has passed" {
    knows 8
    must clissh unlock port "$port"
    must ssh --renegotiationTime 1
    hold_session "$port"
    wait_until is_renegotiated_or_answered 6
    is_renegotiated
    session_lives
}
# The first exchange is the one at the beginning. The client itself wants no other one.
is_renegotiated() { [ "$(grep -c 'SSH2_MSG_KEXINIT received' "$heard")" -ge 3 ]; }
is_renegotiated_or_answered() { is_renegotiated || is_answered "$1"; }

@test "settings that are given while a door is closed hold when it opens" {
    knows 7
    must clissh unlock port "$port"
    must netconfssh lock
    for set in "$cipher" "$other_cipher"; do must ssh --ciphers "$set"; done
    must netconfssh unlock port "$other_port"
    gets_in "$other_port" "Ciphers=$other_cipher"
    turned_away "$other_port" "Ciphers=$cipher"
    for door in clissh netconfssh; do must $door lock; done
    must ssh --ciphers "$cipher"
    must clissh unlock port "$port"
    must netconfssh unlock port "$other_port"
    for at in "$port" "$other_port"; do
        gets_in "$at" "Ciphers=$cipher"
        turned_away "$at" "Ciphers=$other_cipher"
    done
}

@test "a batch with an unknown algorithm or a bad value is refused as a whole" {
    knows 7
    local kexes=${VORMA_KEXES:-curve25519-sha256,ecdh-sha2-nistp256} macs=${VORMA_MACS:-hmac-sha2-256,hmac-sha2-512}
    must clissh unlock port "$port"
    must ssh --ciphers "$cipher" --kexAlgorithms "${kexes%,*}" --macs "${macs%,*}"
    must_not ssh --ciphers "$other_cipher" --macs no-such-algorithm
    must_not ssh --kexAlgorithms "${kexes#*,}" --macs "${macs#*,}" --ciphers no-such-algorithm
    must_not ssh --macs "${macs#*,}" --kexAlgorithms no-such-algorithm
    for option in --ciphers --kexAlgorithms --macs; do must_not ssh $option no-such-algorithm; done
    for list in ',' "$cipher," "$cipher,,$cipher" '-*' ''; do must_not ssh --ciphers "$list"; done
    for dscp in 64 -1 ef ''; do must_not ssh --ciphers "$other_cipher" --ipQos "$dscp"; done
    gets_in "$port" "Ciphers=$cipher"
    turned_away "$port" "Ciphers=$other_cipher"
    gets_in "$port" "KexAlgorithms=${kexes%,*}"
    turned_away "$port" "KexAlgorithms=${kexes#*,}"
    gets_in "$port" "MACs=${macs%,*}"
    turned_away "$port" "MACs=${macs#*,}"
}

@test "a listener that died comes back with the same unlock" {
    must clissh unlock port "$port"
    listener=$(listener_of "$port")
    [ "${listener:-1}" -gt 1 ] || skip 'the system does not tell which process listens'
    kill -KILL "$listener"
    wait_until closed_on "$port"
    must clissh unlock port "$port"
    open_on "$port"
}

# How long a run takes here and now; fixed moments would all fall into its beginning on a slow machine.
measure() { # VORMA-WORDS...
    local begin=${EPOCHREALTIME/./}
    must "$@"
    took=$((${EPOCHREALTIME/./} - begin))
}
kill_at() { # PERCENT VORMA-WORDS...
    local moment=$((took * $1 / 100))
    env -i PATH=/usr/bin:/bin setsid "${call[@]}" "${@:2}" </dev/null >/dev/null 2>&1 3>&- &
    sleep "$((moment / 1000000)).$(printf %06d $((moment % 1000000)))"
    kill -KILL -- "-$!" 2>/dev/null || true
    wait $! 2>/dev/null || true
}

@test "a run that is killed keeps no later run from succeeding, and leaves the other door open" {
    must netconfssh unlock port "$other_port"
    measure clissh unlock port "$port"
    must clissh lock
    # Near the end more than once: what is written down last is written there.
    for percent in 0 15 30 45 60 70 80 85 90 95 100; do
        kill_at $percent clissh unlock port "$port"
        open_on "$other_port"
        must clissh unlock port "$port"
        open_on "$port"
        must clissh lock
        closed_on "$port"
    done
}

@test "a lock or a batch that is killed keeps no later run from succeeding, and both doors reachable" {
    knows 7
    must netconfssh unlock port "$other_port"
    must clissh unlock port "$port"
    measure ssh --ciphers "$other_cipher"
    for percent in 20 50 70 80 90 95; do
        must ssh --ciphers "$cipher"
        kill_at $percent ssh --ciphers "$other_cipher"
        must ssh --ciphers "$other_cipher"
        for at in "$port" "$other_port"; do
            open_on "$at"
            turned_away "$at" "Ciphers=$cipher"
        done
    done
    measure clissh lock
    for percent in 20 50 80 95; do
        must clissh unlock port "$port"
        kill_at $percent clissh lock
        open_on "$other_port"
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
