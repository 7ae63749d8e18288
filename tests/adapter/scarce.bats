#!/usr/bin/env bats
# Where the disk is full or cannot be written, and where there are no descriptors or processes left: no door is lost, and the code tells
# the truth.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; free_port third_port; }
teardown() {
    clear_stage
    ! mountpoint -q "$state" || umount "$state"
}

needs_root() { [ "$(id -u)" = 0 ] || skip "only root can $1"; }

# A store on a disk of its own, with some hundred blocks.
put_store_on_small_disk() {
    needs_root mount
    [ -n "${VORMA_OWN_MOUNTS-}" ] || skip 'no mounts of its own: use tests/adapter/run'
    local image=$BATS_TEST_TMPDIR/image
    mkdir "$state"
    truncate -s 1M "$image"
    # In a container there may be no loop devices.
    { mkfs.ext4 -q -F -m 0 -b 1024 -N 64 -O ^has_journal "$image" && mount -o loop "$image" "$state"; } 2>/dev/null ||
        mount -t tmpfs -o size=128k tmpfs "$state"
    chmod 700 "$state"
}

fill_disk() { nuisance fill "$state/filler"; }
make_room() { end_nuisances; rm "$state/filler"; }

open_both() {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    given ssh --ipQos 10
}

# --- a full disk, and a writer that takes every block that becomes free ---

@test "on a full disk settings and moves are refused, both doors are untouched, and with room again the same succeeds" {
    put_store_on_small_disk
    open_both
    fill_disk
    before=$(fingerprint)
    for command in 'ssh --ipQos 46' "clissh unlock port $third_port" "netconfssh unlock port $third_port"; do
        # shellcheck disable=SC2086
        vorma $command
        expect_refused $STORE 'No space left on device; nothing was changed, the old state is in force'
        [ "$before" = "$(fingerprint)" ]
        both_greet
    done
    make_room
    given ssh --ipQos 46
    given clissh unlock port "$third_port"
    greets "$third_port"
    [ "$(effective netconfssh ipqos)" = 'ef ef' ]
}

@test "on a full disk a lock and an unlock are refused or done, and nothing between" {
    put_store_on_small_disk
    open_both
    given clissh lock
    fill_disk
    vorma clissh unlock port "$port"
    expect_refused $STORE 'No space left on device'
    refuses "$port"
    before=$(fingerprint)
    vorma netconfssh lock
    [ "$status" -eq 0 ] || [ "$before" = "$(fingerprint)" ]
    if [ "$status" -eq 0 ]; then refuses "$other_port"; else expect_refused $STORE 'No space left on device' && greets "$other_port"; fi
    make_room
    given netconfssh lock
    given clissh unlock port "$port"
    refuses "$other_port"
    greets "$port"
}

@test "on a full disk what is in force already needs no room" {
    put_store_on_small_disk
    open_both
    fill_disk
    before=$(write_fingerprint)
    given clissh unlock port "$port"
    given ssh --ipQos 10
    [ "$before" = "$(write_fingerprint)" ]
}

@test "on a full disk a listener that died is started again by the next run, whatever that wants" {
    put_store_on_small_disk
    open_both
    fill_disk
    kill -KILL "$(door_pid clissh)"
    wait_until refuses "$port"
    vorma netconfssh unlock port "$third_port"
    expect_refused $STORE 'No space left on device'
    both_greet
    make_room
    given netconfssh unlock port "$third_port"
    greets "$port"
    greets "$third_port"
}

@test "on a disk that fills up a run that was cut short is undone by the next run" {
    put_store_on_small_disk
    open_both
    hold_reload clissh CLISSH_CONFIG
    kill_when "refuses $port" clissh unlock port "$third_port"
    fill_disk
    grep -q "^Port $third_port" "$state/clissh.conf"
    release_reload
    vorma netconfssh unlock port "$third_port"
    expect_refused $STORE 'No space left on device'
    both_greet
    refuses "$third_port"
    grep -q "^Port $port" "$state/clissh.conf"
    make_room
    given clissh unlock port "$third_port"
    greets "$third_port"
}

fill_after_question() { # COMMAND: and then
    spoil_after_question clissh "until [ -s '$state/new/state' ]; do sleep 0.01; done
        '$BATS_TEST_DIRNAME/nuisance' fill '$state/filler' </dev/null >'$BATS_TEST_TMPDIR/filled' 2>&1 & echo \$! >'$BATS_TEST_TMPDIR/filler.started'
        until [ -s '$BATS_TEST_TMPDIR/filled' ]; do sleep 0.01; done; $1"
}
stop_filling() {
    kill -KILL "$(cat "$BATS_TEST_TMPDIR/filler.started")"
    wait_until rm "$state/filler"
    restore_sshd
}

@test "on a disk that fills up once all is checked the change still comes through" {
    put_store_on_small_disk
    open_both
    fill_after_question true
    vorma clissh unlock port "$third_port"
    expect_done
    greets "$third_port"
    greets "$other_port"
    refuses "$port"
    stop_filling
    given clissh unlock port "$third_port"
    cmp "$state/state" "$state/state.copy"
}

@test "on a disk that fills up once all is checked the way back needs no room" {
    put_store_on_small_disk
    open_both
    echo '# nothing' >"$BATS_TEST_TMPDIR/trap"
    fill_after_question "echo NoSuchKeyword >'$BATS_TEST_TMPDIR/trap'"
    add_setting "CLISSH_CONFIG=$BATS_TEST_TMPDIR/trap"
    cp -r "$state" "$BATS_TEST_TMPDIR/before"
    before=$(door_pid netconfssh)
    vorma clissh unlock port "$third_port"
    expect_refused $ROLLED_BACK 'the old state is back in force'
    both_greet
    [ "$before" = "$(door_pid netconfssh)" ]
    cmp "$state/clissh.conf" "$BATS_TEST_TMPDIR/before/clissh.conf"
    cmp "$state/state" "$BATS_TEST_TMPDIR/before/state"
    stop_filling
    echo '# nothing' >"$BATS_TEST_TMPDIR/trap"
    given clissh unlock port "$third_port"
}

# --- a disk that cannot be written ---

@test "on a store that cannot be written changes are refused, nobody is touched, and status still tells" {
    put_store_on_small_disk
    open_both
    before=$(fingerprint)
    mount -o remount,ro "$state"
    for command in 'ssh --ipQos 46' "clissh unlock port $third_port" 'clissh lock' settle; do
        # shellcheck disable=SC2086
        vorma $command
        expect_refused $STORE 'Read-only file system'
    done
    [ "$before" = "$(fingerprint)" ]
    both_greet
    vorma status
    grep -qx "clissh.effective $port" <<<"$output"
    mount -o remount,rw "$state"
    given clissh unlock port "$third_port"
    greets "$third_port"
}

# --- no descriptors, no processes ---

# Done, or as before; there is no third. The port that the door had is $port.
expect_truth() { # BEFORE PORT
    if [ "$status" -eq 0 ]; then
        greets "$2"
        return
    fi
    echo "exit $status: $stderr" >&2
    [ "${#stderr_lines[@]}" -eq 1 ] && refuses "$2" && greets "$port" || return
    # What was put back may be another process.
    [ "$status" -eq $ROLLED_BACK ] || { [ "$status" -ge 2 ] && [ "$status" -le $TAKEN ] && [ "$1" = "$(fingerprint)" ]; }
}

@test "without descriptors it refuses and touches nobody, however few there are" {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    # Root would raise the limit again.
    limited=(setpriv)
    [ "$(id -u)" != 0 ] || limited+=(--bounding-set=-sys_resource)
    local refusals=0
    for descriptors in {3..24}; do
        before=$(fingerprint)
        run --separate-stderr setsid -w "${limited[@]}" prlimit --nofile="$descriptors:$descriptors" "$scripts/vorma" clissh unlock port "$third_port" </dev/null
        echo "with $descriptors: $status $stderr" >&2
        expect_truth "$before" "$third_port"
        greets "$other_port"
        [ "$status" -eq 0 ] || refusals=$((refusals + 1))
        given clissh unlock port "$port"
    done
    [ $refusals -gt 0 ]
}

@test "without processes it refuses and touches nobody, however few there are" {
    needs_root 'become a user without other processes'
    local user=$((61000 + next_port % 1000)) refusals=0
    chmod 755 "$BATS_RUN_TMPDIR" "$BATS_RUN_TMPDIR"/* "$BATS_TEST_TMPDIR"
    # The tree may be where that user cannot go.
    rm "$scripts/vorma" && cp "$ADAPTER" "$scripts/vorma"
    cp "$BATS_FILE_TMPDIR/host_key" "$BATS_TEST_TMPDIR/own_key"
    sed -i "s|^HostKey .*|HostKey $BATS_TEST_TMPDIR/own_key|" "$base"
    mkdir -m 700 "$state"
    chown -R $user "$state" "$BATS_TEST_TMPDIR/own_key"
    as_user() { setsid -w setpriv --reuid=$user --regid=$user --clear-groups "$@" </dev/null; }
    as_user "$scripts/vorma" clissh unlock port "$port"
    as_user "$scripts/vorma" netconfssh unlock port "$other_port"
    for processes in {1..6}; do
        before=$(fingerprint)
        run --separate-stderr as_user prlimit --nproc="$processes:$processes" "$scripts/vorma" clissh unlock port "$third_port"
        echo "with $processes: $status $stderr" >&2
        expect_truth "$before" "$third_port"
        greets "$other_port"
        [ "$status" -eq 0 ] || refusals=$((refusals + 1))
        as_user "$scripts/vorma" clissh unlock port "$port"
    done
    [ $refusals -gt 0 ]
}
