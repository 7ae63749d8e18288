#!/usr/bin/env bats
# An adapter that is killed, with its whole process group, at one moment after the other.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; free_port third_port; }
teardown() { clear_stage; }

# Twelve kills a test are coarse; VORMA_KILLS=200 makes a search of it.
KILLS=${VORMA_KILLS:-12}

# KILLS delays in seconds, spread evenly from the start of a run to beyond its end. What a run takes is measured here and now, since on a
# busy machine fixed delays would all fall into its beginning.
spread_kills() { # COMMAND...: runs it once, uncut; the delays are in $moments
    local begin=${EPOCHREALTIME/./} span i
    "$@"
    span=$(((${EPOCHREALTIME/./} - begin) * 5 / 4)) moments=()
    for ((i = 0; i < KILLS; i++)); do
        printf -v "moments[i]" '%d.%06d' $((span * i / KILLS / 1000000)) $((span * i / KILLS % 1000000))
    done
}

kill_after() { # DELAY COMMAND...
    setsid "${@:2}" </dev/null >/dev/null 2>&1 3>&- &
    local group=$!
    sleep "$1"
    kill -KILL -- "-$group" 2>/dev/null || true
    wait "$group" 2>/dev/null || true
}

run_and_kill_after() { # DELAY COMMAND...
    kill_after "$1" env -i PATH=/usr/bin:/bin "$scripts/vorma" "${@:2}"
}

# Whole or absent, and what sshd takes: there is no third.
files_are_sound() {
    for door in clissh netconfssh; do
        [ ! -e "$state/$door.conf" ] || "$SSHD" -t -f "$state/$door.conf" || return
        [ ! -e "$state/$door.conf" ] || [[ "$(tail -n 1 "$state/$door.conf")" == '# sum '* ]] || return
    done
    [ ! -e "$state/state" ] || [[ "$(tail -n 1 "$state/state")" == 'sum '* ]]
}

one_listener_each() { [ "$(processes_of "$state" | wc -l)" -eq "$1" ]; }

@test "killed at any moment of its first unlock, it leaves nothing that keeps the next run from succeeding" {
    spread_kills given clissh unlock port "$port"
    given clissh lock
    rm -rf "$state"
    for after in "${moments[@]}"; do
        run_and_kill_after "$after" clissh unlock port "$port"
        files_are_sound
        given clissh unlock port "$port"
        greets "$port"
        one_listener_each 1
        given clissh lock
        no_process_of "$state"
        rm -rf "$state"
    done
}

@test "killed at any moment of a move, the door is on its old or its new port once the next run has ended" {
    given netconfssh unlock port "$third_port"
    given clissh unlock port "$port"
    spread_kills given clissh unlock port "$other_port"
    given clissh unlock port "$port"
    for after in "${moments[@]}"; do
        run_and_kill_after "$after" clissh unlock port "$other_port"
        files_are_sound
        given netconfssh unlock port "$third_port"
        greets "$port" || greets "$other_port"
        given clissh unlock port "$port"
        greets "$port"
        refuses "$other_port"
        greets "$third_port"
    done
    one_listener_each 2
}

@test "killed at any moment of a lock, the door is open or closed, and the next lock closes it" {
    given clissh unlock port "$port"
    spread_kills given clissh lock
    for after in "${moments[@]}"; do
        given clissh unlock port "$port"
        run_and_kill_after "$after" clissh lock
        files_are_sound
        given clissh lock
        refuses "$port"
        no_process_of "$state"
    done
}

# The listener is stopped meanwhile, so that the run is caught while it waits for it.
@test "killed while one door moves, the other door keeps the settings that were made before" {
    given clissh unlock port "$port"
    given netconfssh unlock port "$third_port"
    given ssh --ciphers aes128-ctr
    local listener
    listener=$(door_pid clissh)
    kill -STOP "$listener"
    setsid env -i PATH=/usr/bin:/bin "$scripts/vorma" clissh unlock port "$other_port" </dev/null >/dev/null 2>&1 3>&- &
    local group=$!
    wait_until [ -e "$state/new/state" ]
    kill -KILL -- "-$group"
    kill -CONT "$listener"
    wait "$group" || true
    given clissh unlock port "$port"
    [ "$(effective clissh ciphers)" = aes128-ctr ]
    [ "$(effective netconfssh ciphers)" = aes128-ctr ]
    greets "$port"
    greets "$third_port"
}

@test "killed at any moment of a batch, both doors have the old settings or both the new ones" {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    given ssh --ciphers aes256-ctr --ipQos 10
    spread_kills given ssh --ciphers aes128-ctr --ipQos 46
    for after in "${moments[@]}"; do
        given ssh --ciphers aes256-ctr --ipQos 10
        run_and_kill_after "$after" ssh --ciphers aes128-ctr --ipQos 46
        files_are_sound
        given ssh --macs hmac-sha2-256
        [ "$(effective clissh ciphers)" = "$(effective netconfssh ciphers)" ]
        [[ "$(effective clissh ciphers)$(effective clissh ipqos)" == @('aes256-ctraf11 af11'|'aes128-ctref ef') ]]
        greets "$port"
        greets "$other_port"
    done
    one_listener_each 2
}

@test "killed at any moment of a run without change, nothing has changed" {
    given clissh unlock port "$port"
    before=$(write_fingerprint)
    spread_kills given clissh unlock port "$port"
    for after in "${moments[@]}"; do
        run_and_kill_after "$after" clissh unlock port "$port"
        [ "$before" = "$(write_fingerprint)" ]
    done
}

@test "control: a writer in place is caught by the same kills" {
    cat >"$BATS_TEST_TMPDIR/in-place" <<'TEXT'
#!/bin/sh
mkdir -p "$STATE"
: >"$STATE/clissh.conf"
for line in "Port $1" "Include $BASE" 'Ciphers aes256-ctr' 'MACs hmac-sha2-256' 'IPQoS 0xb8' 'RekeyLimit default 60' '# end'; do
    echo "$line" | cat >>"$STATE/clissh.conf"
done
TEXT
    writer=(env -i PATH=/usr/bin:/bin STATE="$state" BASE="$base" sh "$BATS_TEST_TMPDIR/in-place" "$port")
    for again in {1..10}; do
        spread_kills setsid -w "${writer[@]}"
        for after in "${moments[@]}"; do
            rm -rf "$state"
            kill_after "$after" "${writer[@]}"
            files_are_sound 2>/dev/null || return 0
        done
    done
    echo 'no kill hit the writer: the kills prove nothing' >&2
    return 1
}
