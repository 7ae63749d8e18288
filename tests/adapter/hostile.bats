#!/usr/bin/env bats
# Listeners that are stopped or lost, ports that are stolen, clients without end, and folders of others.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; free_port third_port; }
teardown() { clear_stage; }

is_stopped() { [[ $(cat "/proc/$1/stat") == *') T '* ]]; }
halt() { kill -STOP "$1" && wait_until is_stopped "$1"; }

# --- listeners ---

@test "a listener that was stopped serves again after the next run, whatever that wants" {
    open_both
    for command in "clissh unlock port $port" 'ssh --ipQos 46' "netconfssh unlock port $other_port" settle; do
        halt "$(door_pid clissh)"
        vorma status
        grep -qx 'clissh.differs its listener is stopped' <<<"$output"
        # shellcheck disable=SC2086
        vorma_in_time $command
        expect_done
        both_greet
        [ "$(processes_of "$state" | wc -l)" -eq 2 ]
    done
}
@test "a listener that was stopped is closed by a lock" {
    open_both
    halt "$(door_pid clissh)"
    vorma_in_time clissh lock
    expect_done
    refuses "$port"
    greets "$other_port"
}

@test "a listener that was stopped while clients filled its queue serves again" {
    open_both
    halt "$(door_pid clissh)"
    nuisance clients "$port" 129
    vorma_in_time clissh unlock port "$port"
    expect_done
    end_nuisances
    wait_until greets "$port"
    vorma_in_time settle
    expect_done
}

@test "listeners that were killed come back with the next run, whatever that wants" {
    open_both
    for command in "clissh unlock port $port" 'ssh --macs hmac-sha2-256' settle "clissh unlock port $third_port"; do
        kill -KILL "$(door_pid clissh)" "$(door_pid netconfssh)"
        wait_until refuses "$port"
        # shellcheck disable=SC2086
        vorma $command
        expect_done
        greets "$other_port"
    done
    greets "$third_port"
}

@test "sshd is known also after it was upgraded and its pid file was lost" {
    cp "$SSHD" "$BATS_TEST_TMPDIR/sshd"
    add_setting "SSHD=$BATS_TEST_TMPDIR/sshd"
    open_both
    local before
    before=$(door_pid clissh)
    cp "$SSHD" "$BATS_TEST_TMPDIR/sshd.new" && mv "$BATS_TEST_TMPDIR/sshd.new" "$BATS_TEST_TMPDIR/sshd"
    rm "$state/clissh.pid"
    given ssh --ipQos 46
    both_greet
    [ "$before" = "$(door_pid clissh)" ]
    rm "$state/clissh.pid"
    given clissh lock
    refuses "$port"
}

@test "when the store is removed under running listeners a lock still closes the port, and an unlock takes the listener over" {
    open_both
    local before
    before=$(door_pid netconfssh)
    rm -r "$state"
    given clissh lock
    refuses "$port"
    greets "$other_port"
    given netconfssh unlock port "$other_port"
    greets "$other_port"
    [ "$before" = "$(door_pid netconfssh)" ]
    given netconfssh lock
    refuses "$other_port"
}

@test "when the store is removed under running listeners what serves is adopted, and each door can be locked" {
    open_both
    rm -r "$state"
    given netconfssh lock
    refuses "$other_port"
    greets "$port"
    given clissh lock
    refuses "$port"
    open_both
    rm -r "$state"
    given settle
    both_greet
    vorma status
    grep -qx "clissh.wanted $port" <<<"$output"
}

@test "what only reads the file of a door is not its listener" {
    open_both
    setpriv --pdeathsig KILL tail -f "$state/clissh.conf" >/dev/null 2>&1 3>&- &
    local reader=$!
    given clissh unlock port "$third_port"
    given clissh lock
    kill "$reader"
}

# --- ports ---

# Somebody takes the port when all is checked and nothing begun.
steal_after_question() { # DOOR PORT
    spoil_after_question "$1" "'$BATS_TEST_DIRNAME/nuisance' listen 127.0.0.1 $2 </dev/null >'$BATS_TEST_TMPDIR/stolen' 2>/dev/null & echo \$! >'$BATS_TEST_TMPDIR/thief.started'
        until [ -s '$BATS_TEST_TMPDIR/stolen' ]; do sleep 0.01; done"
}
give_back() {
    kill -KILL "$(cat "$BATS_TEST_TMPDIR/thief.started")"
    wait_until refuses "$third_port"
    restore_sshd
}

@test "a port that is stolen between check and start leaves the door closed, and is told" {
    given netconfssh unlock port "$other_port"
    steal_after_question clissh "$third_port"
    vorma_in_time clissh unlock port "$third_port"
    expect_refused $TAKEN "port $third_port is taken"
    [ ! -e "$state/clissh.conf" ]
    greets "$other_port"
    give_back
    refuses "$third_port"
    given clissh unlock port "$third_port"
    greets "$third_port"
}

@test "a port that is stolen between check and move leaves the door where it was, and is told" {
    open_both
    cp -r "$state" "$BATS_TEST_TMPDIR/before"
    steal_after_question clissh "$third_port"
    local before
    before=$(door_pid netconfssh)
    vorma_in_time clissh unlock port "$third_port"
    expect_refused $TAKEN "port $third_port is taken"
    both_greet
    cmp "$state/clissh.conf" "$BATS_TEST_TMPDIR/before/clissh.conf"
    cmp "$state/state" "$BATS_TEST_TMPDIR/before/state"
    [ "$before" = "$(door_pid netconfssh)" ]
    give_back
    given clissh unlock port "$third_port"
    greets "$third_port"
}

@test "a port that only an outgoing connection has is seen before anything is stopped" {
    open_both
    nuisance connect 127.0.0.1 "$third_port" "$other_port"
    expect_untouched_by_move
}

@test "a port that somebody has on another address alone is seen before anything is stopped" {
    set_settings "STATE_DIR=$state" "BASE_CONFIG=$base"
    open_both
    nuisance listen 127.0.0.2 "$third_port"
    expect_untouched_by_move
}

expect_untouched_by_move() {
    local before
    before="$(fingerprint) $(sockets_of clissh)"
    vorma clissh unlock port "$third_port"
    expect_refused $TAKEN "port $third_port is taken; nothing was changed"
    [ "$before" = "$(fingerprint) $(sockets_of clissh)" ]
    end_nuisances
    given clissh unlock port "$third_port"
    greets "$third_port"
}
sockets_of() { find "/proc/$(door_pid "$1")/fd" -lname 'socket:*' -printf '%l\n' | sort; }

@test "a move back to a port at which sessions live on is no theft" {
    open_both
    mkfifo "$BATS_TEST_TMPDIR/silence"
    "${ssh_client[@]}" -i "$BATS_FILE_TMPDIR/client_key" -p "$port" "$(id -un)@127.0.0.1" 'echo there; exec cat' <>"$BATS_TEST_TMPDIR/silence" \
        >"$BATS_TEST_TMPDIR/session" 2>/dev/null 3>&- &
    nuisances+=($!)
    wait_until [ -s "$BATS_TEST_TMPDIR/session" ]
    given clissh unlock port "$third_port"
    given clissh unlock port "$port"
    both_greet
    kill -0 "${nuisances[0]}"
}

# --- many ---

@test "fifty runs at once are done or refused as busy, and leave one consistent state" {
    local commands=("clissh unlock port $port" "clissh unlock port $third_port" 'clissh lock' "netconfssh unlock port $other_port" 'ssh --ipQos 46')
    local pids=() ends=()
    for i in {0..49}; do
        # shellcheck disable=SC2086
        adapter ${commands[i % 5]} >/dev/null 2>&1 3>&- &
        pids+=($!)
    done
    for pid in "${pids[@]}"; do
        wait "$pid" && ends+=(0) || ends+=($?)
    done
    [[ ${ends[*]} =~ ^[04\ ]+$ ]] || { echo "${ends[*]}" >&2; return 1; }
    [[ " ${ends[*]} " == *' 0 '* ]]
    vorma status
    for door in clissh netconfssh; do
        grep -qx "$door.differs no" <<<"$output"
        grep -qx "$door.failure none" <<<"$output"
        [ "$(sed -n "s/^$door.wanted //p" <<<"$output")" = "$(sed -n "s/^$door.effective //p" <<<"$output")" ]
    done
    [ "$(processes_of "$state" | wc -l)" -eq "$(find "$state" -maxdepth 1 -name '*.conf' | wc -l)" ]
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    both_greet
}

@test "clients that hold all places of a listener keep no change from being made" {
    echo 'MaxStartups 3:100:5' >>"$base"
    open_both
    nuisance clients "$port" 10
    given ssh --ipQos 46
    given clissh unlock port "$third_port"
    nuisance clients "$third_port" 10
    given settle
    given clissh unlock port "$port"
    end_nuisances
    [ "$(effective clissh ipqos)" = 'ef ef' ]
    wait_until greets "$port"
}

@test "a base file of 7500 lines is taken" {
    for i in {1..2500}; do printf 'Match User somebody%d\n    X11Forwarding no\n    AllowTcpForwarding no\n' "$i"; done >>"$base"
    open_both
    given ssh --ciphers aes256-ctr --ipQos 46
    given clissh unlock port "$third_port"
    [ "$(login "$third_port" -c aes256-ctr echo hello)" = hello ]
    [ "$(effective netconfssh ipqos)" = 'ef ef' ]
}

# --- folders ---

@test "a folder on the way to the store that others may write is refused" {
    mkdir -p "$BATS_TEST_TMPDIR/one/two"
    set_settings "STATE_DIR=$BATS_TEST_TMPDIR/one/two/store" "BASE_CONFIG=$base" LISTEN_ADDRESS=127.0.0.1
    for folder in one one/two; do
        for mode in 777 775; do
            chmod $mode "$BATS_TEST_TMPDIR/$folder"
            vorma clissh unlock port "$port"
            expect_refused $STORE "$BATS_TEST_TMPDIR/$folder may be written by others"
        done
        chmod 755 "$BATS_TEST_TMPDIR/$folder"
    done
    [ ! -e "$BATS_TEST_TMPDIR/one/two/store" ]
}

@test "a folder or a link on the way to the store that belongs to somebody else is refused" {
    [ "$(id -u)" = 0 ] || skip 'only root can give a folder away'
    mkdir -p "$BATS_TEST_TMPDIR/one/two"
    set_settings "STATE_DIR=$BATS_TEST_TMPDIR/one/two/store" "BASE_CONFIG=$base" LISTEN_ADDRESS=127.0.0.1
    chown nobody "$BATS_TEST_TMPDIR/one"
    vorma clissh unlock port "$port"
    expect_refused $STORE "$BATS_TEST_TMPDIR/one belongs to user"
    mv "$BATS_TEST_TMPDIR/one" "$BATS_TEST_TMPDIR/real"
    chown root "$BATS_TEST_TMPDIR/real"
    ln -s real "$BATS_TEST_TMPDIR/one"
    chown -h nobody "$BATS_TEST_TMPDIR/one"
    vorma clissh unlock port "$port"
    expect_refused $STORE "$BATS_TEST_TMPDIR/one belongs to user"
    [ ! -e "$BATS_TEST_TMPDIR/real/two/store" ]
}

@test "a folder of the store that is swapped for a link meanwhile leads nothing astray" {
    open_both
    mkdir "$BATS_TEST_TMPDIR/outside"
    spoil_after_question clissh "mv '$state/new' '$state/moved'; ln -s '$BATS_TEST_TMPDIR/outside' '$state/new'"
    vorma clissh unlock port "$third_port"
    echo "exit $status: $stderr" >&2
    if [ "$status" -eq 0 ]; then greets "$third_port"; else greets "$port"; fi
    greets "$other_port"
    [ -z "$(ls -A "$BATS_TEST_TMPDIR/outside")" ]
    restore_sshd
    vorma clissh unlock port "$port"
    expect_refused $STORE "$state/new is a link"
    rm "$state/new"
    mv "$state/moved" "$state/new"
    given clissh unlock port "$port"
    both_greet
}
