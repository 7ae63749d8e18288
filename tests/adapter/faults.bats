#!/usr/bin/env bats
# What may go wrong around the adapter, and what must hold all the same.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; free_port third_port; other=''; }
teardown() {
    [ -z "$other" ] || { kill "$other" 2>/dev/null; wait "$other" || true; }
    clear_stage
}

# --- ports ---

@test "a taken port is refused and nothing is left" {
    occupy "$port"
    vorma clissh unlock port "$port"
    expect_refused $TAKEN "clissh: port $port is taken"
    [ ! -e "$state/clissh.conf" ]
    given clissh unlock port "$other_port"
    greets "$other_port"
}

@test "a taken port is refused on all addresses too" {
    occupy "$port"
    set_settings "STATE_DIR=$state" "BASE_CONFIG=$base"
    vorma clissh unlock port "$port"
    expect_refused $TAKEN "clissh: port $port is taken"
}

@test "a door is not moved to a taken port, and its listener is not disturbed" {
    given clissh unlock port "$port"
    occupy "$other_port"
    before=$(fingerprint)
    vorma clissh unlock port "$other_port"
    expect_refused $TAKEN 'nothing was changed'
    [ "$before" = "$(fingerprint)" ]
    greets "$port"
}

@test "the other door's port is taken" {
    given clissh unlock port "$port"
    vorma netconfssh unlock port "$port"
    expect_refused $TAKEN "netconfssh: port $port is the other door's"
}

@test "a port that was taken while the listener was down is told, and that the old state is not in force" {
    given clissh unlock port "$port"
    kill -KILL "$(door_pid clissh)"
    wait_until refuses "$port"
    occupy "$port"
    vorma clissh unlock port "$port"
    expect_refused $LOST "port $port is taken; nothing was changed, but the old state is not in force either"
    for again in 1 2; do
        vorma clissh lock
        expect_refused $LOST "is not its listener's"
    done
    kill -0 "$other"
    given clissh unlock port "$other_port"
}

# --- a reload that fails after all checks have passed ---

# The new file includes one more, which sshd takes when it is asked and no longer when it reloads.
include_trap() { # DOOR KEY
    : >"$BATS_TEST_TMPDIR/trap"
    spoil_after_question "$1" "echo NoSuchKeyword >>'$BATS_TEST_TMPDIR/trap'"
    add_setting "$2=$BATS_TEST_TMPDIR/trap"
}

expect_as_before() { # FILE...
    for file; do cmp "$state/$file" "$BATS_TEST_TMPDIR/before/$file" || return; done
}

@test "when the reloaded listener dies the old file and the old port are back" {
    given clissh unlock port "$port"
    cp -r "$state" "$BATS_TEST_TMPDIR/before"
    include_trap clissh CLISSH_CONFIG
    for command in 'ssh --ipQos 46' "clissh unlock port $other_port"; do
        : >"$BATS_TEST_TMPDIR/trap"
        # shellcheck disable=SC2086
        vorma $command
        expect_refused $ROLLED_BACK 'the old state is back in force'
        expect_as_before clissh.conf state
        greets "$port"
        refuses "$other_port"
    done
    vorma status
    [[ $output == *"clissh.failure clissh: its listener did not come up"* ]]
}

@test "when the second door fails the first gets its old settings back" {
    given ssh --ipQos 10
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    cp -r "$state" "$BATS_TEST_TMPDIR/before"
    include_trap netconfssh NETCONFSSH_CONFIG
    vorma ssh --ipQos 46
    expect_refused $ROLLED_BACK 'netconfssh: its listener did not come up'
    expect_as_before clissh.conf netconfssh.conf state
    greets "$port"
    greets "$other_port"
}

@test "when the old state cannot be put back either, this is said, and a later run of any command mends it" {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    mv "$BATS_TEST_TMPDIR/base_config" "$BATS_TEST_TMPDIR/kept"
    cp "$BATS_TEST_TMPDIR/kept" "$base"
    spoil_after_question clissh "echo NoSuchKeyword >>'$base'"
    vorma clissh unlock port "$third_port"
    candidates_expected=yes
    expect_refused $LOST 'could not be put back'
    [[ $stderr == *"netconfssh is open on 127.0.0.1:$other_port"* ]]
    mv "$BATS_TEST_TMPDIR/kept" "$base"
    given netconfssh unlock port "$other_port"
    greets "$port"
    refuses "$third_port"
    candidates_expected=''
}

# --- the operator's files ---

@test "odd spellings, CRLF and a missing line end in the base file change nothing" {
    printf 'ciphers=aes128-ctr\r\n  IPQOS "cs1"\r\nrekeylimit\tdefault 5\r\nLogLevel ERROR' >>"$base"
    given clissh unlock port "$port"
    given ssh --ciphers aes256-ctr --ipQos 46 --renegotiationTime 60
    [ "$(effective clissh ciphers)" = aes256-ctr ]
    [ "$(effective clissh ipqos)" = 'ef ef' ]
    [ "$(effective clissh rekeylimit)" = '0 60' ]
    [ "$(effective clissh loglevel)" = ERROR ]
}

@test "an included file and a Match block of the base file do not change what was asked for" {
    printf 'Ciphers aes128-ctr\nX11Forwarding yes\n' >"$BATS_TEST_TMPDIR/included"
    printf 'Include %s\nMatch User somebody\nX11Forwarding no' "$BATS_TEST_TMPDIR/included" >>"$base"
    given clissh unlock port "$port"
    given ssh --ciphers aes256-ctr
    login "$port" -c aes256-ctr true
    run ! login "$port" -c aes128-ctr true
}

@test "a Match block that would win over a setting is refused" {
    printf 'Match Address 127.0.0.0/8\nRekeyLimit default 5\n' >>"$base"
    given clissh unlock port "$port"
    vorma ssh --renegotiationTime 60
    expect_refused $REFUSED "sshd would use rekeylimit '0 5' instead of '0 60'"
}

@test "ports and addresses of the base file are refused, since sshd would add them up" {
    cp "$base" "$BATS_TEST_TMPDIR/plain"
    for line in 'Port 22' 'port=22' "Port $port" 'ListenAddress 127.0.0.2' "ListenAddress 127.0.0.1:$other_port"; do
        (cat "$BATS_TEST_TMPDIR/plain"; echo "$line") >"$base"
        vorma clissh unlock port "$port"
        expect_refused $REFUSED 'the old state is in force'
    done
    no_process_of "$state"
}

@test "a base file that sshd does not take is refused with sshd's words" {
    given clissh unlock port "$port"
    echo 'NoSuchKeyword yes' >>"$base"
    before=$(fingerprint)
    vorma ssh --ipQos 46
    expect_refused $REFUSED 'sshd refuses: '
    [ "$before" = "$(fingerprint)" ]
    greets "$port"
}

@test "without a host key no listener is touched" {
    given clissh unlock port "$port"
    sed -i '/^HostKey/d' "$base"
    echo "HostKey $BATS_TEST_TMPDIR/absent" >>"$base"
    vorma clissh unlock port "$other_port"
    expect_refused $REFUSED 'no hostkeys available'
    greets "$port"
}

# --- damaged files ---

damages() { # FILE: one damage after the other, for $damage
    case $damage in
    missing) rm "$1" ;;
    empty) : >"$1" ;;
    truncated) truncate -s 40 "$1" ;;
    binary) head -c 300 /dev/urandom >"$1" ;;
    NUL) sed -i 's/ /\x00/' "$1" ;;
    doubled) cat "$1" "$1" >"$1.two" && mv "$1.two" "$1" ;;
    esac
}
DAMAGES='missing empty truncated binary NUL doubled'

@test "a damaged state is restored from its copy" {
    given ssh --ciphers aes256-ctr
    given clissh unlock port "$port"
    for damage in $DAMAGES; do
        cp "$state/state" "$BATS_TEST_TMPDIR/before"
        damages "$state/state"
        given ssh --ciphers aes256-ctr
        cmp "$state/state" "$BATS_TEST_TMPDIR/before"
    done
    greets "$port"
}

@test "when state and copy are damaged the doors are left as they are" {
    given clissh unlock port "$port"
    for damage in $DAMAGES; do
        damages "$state/state"
        damages "$state/state.copy"
        vorma clissh unlock port "$other_port"
        expect_refused $STORE 'damaged or lost'
        greets "$port"
        adapter clissh lock 2>/dev/null && return 1
        printf 'x' | tee "$state/state" >"$state/state.copy"
    done
}

@test "a damaged file of a door is rendered again, and never opens port 22" {
    given clissh unlock port "$port"
    cp "$state/clissh.conf" "$BATS_TEST_TMPDIR/before"
    for damage in $DAMAGES; do
        damages "$state/clissh.conf"
        given clissh unlock port "$port"
        cmp "$state/clissh.conf" "$BATS_TEST_TMPDIR/before"
        greets "$port"
    done
}

# --- links, owners, permissions ---

@test "a link in place of any file is refused and nothing is written where it leads" {
    given clissh unlock port "$port"
    mkdir "$BATS_TEST_TMPDIR/outside"
    for name in lock state state.copy clissh.conf clissh.pid clissh.failure new; do
        echo precious >"$BATS_TEST_TMPDIR/outside/$name"
        mv "$state/$name" "$BATS_TEST_TMPDIR/kept" 2>/dev/null || true
        ln -s "$BATS_TEST_TMPDIR/outside/$name" "$state/$name"
        vorma ssh --ipQos 46
        expect_refused $STORE "$state/$name is a link"
        [ "$(cat "$BATS_TEST_TMPDIR/outside/$name")" = precious ]
        rm "$state/$name"
        [ ! -e "$BATS_TEST_TMPDIR/kept" ] || mv "$BATS_TEST_TMPDIR/kept" "$state/$name"
    done
    given ssh --ipQos 46
}

@test "links at the names of candidates are cleared, not followed" {
    given clissh unlock port "$port"
    echo precious >"$BATS_TEST_TMPDIR/outside"
    ln -s "$BATS_TEST_TMPDIR/outside" "$state/new/clissh.conf"
    ln -s "$BATS_TEST_TMPDIR/outside" "$state/new/netconfssh.conf"
    given ssh --ipQos 46
    [ "$(cat "$BATS_TEST_TMPDIR/outside")" = precious ]
}

@test "a store that others may write, or that is a link or a file, is refused" {
    given clissh lock
    for mode in 770 720 702 777; do
        chmod "$mode" "$state"
        vorma clissh unlock port "$port"
        expect_refused $STORE 'may be written by others'
    done
    chmod 700 "$state"
    mv "$state" "$state.real" && ln -s "$state.real" "$state"
    vorma clissh unlock port "$port"
    expect_refused $STORE 'no link'
    rm "$state" && echo >"$state"
    vorma clissh unlock port "$port"
    expect_refused $STORE "$state"
    rm "$state"
}

@test "another user's store is refused" {
    [ "$(id -u)" = 0 ] || skip 'only root can give a directory away'
    mkdir -m 700 "$state" && chown nobody "$state"
    vorma clissh unlock port "$port"
    expect_refused $STORE 'must be a directory of the user'
}

@test "the store is made when its parent is there, and only then" {
    set_settings "STATE_DIR=$state/deep/store" "BASE_CONFIG=$base"
    vorma clissh unlock port "$port"
    expect_refused $STORE 'cannot be made'
}

# --- processes ---

@test "a stale pid file that names another process harms nobody" {
    given clissh unlock port "$port"
    given clissh lock
    sleep 60 3>&- &
    other=$!
    for command in 'clissh lock' "clissh unlock port $port" "clissh lock"; do
        [ -s "$state/clissh.pid" ] || echo $other >"$state/clissh.pid"
        # shellcheck disable=SC2086
        given $command
        kill -0 $other
    done
    given clissh unlock port "$port"
    kill -KILL "$(door_pid clissh)"
    echo $other >"$state/clissh.pid"
    given ssh --ipQos 46
    kill -0 $other
    greets "$port"
}

@test "a pid file that names another sshd harms nobody" {
    occupy "$other_port"
    given clissh unlock port "$port"
    kill -KILL "$(door_pid clissh)"
    echo "$other" >"$state/clissh.pid"
    given clissh lock
    greets "$other_port"
}

@test "rubbish in the pid file is no process" {
    given clissh unlock port "$port"
    for rubbish in '' abc -1 '1 2' 0 99999999 "$(head -c 100 /dev/zero | tr '\0' 9)"; do
        echo "$rubbish" >"$state/clissh.pid"
        given clissh unlock port "$port"
        greets "$port"
    done
}

@test "a listener whose pid file was lost is found again" {
    given clissh unlock port "$port"
    rm "$state/clissh.pid"
    given clissh unlock port "$port"
    greets "$port"
    rm "$state/clissh.pid"
    given clissh lock
    no_process_of "$state"
}

@test "the listener is known also after sshd was upgraded under it" {
    cp "$SSHD" "$BATS_TEST_TMPDIR/sshd"
    add_setting "SSHD=$BATS_TEST_TMPDIR/sshd"
    given clissh unlock port "$port"
    cp "$SSHD" "$BATS_TEST_TMPDIR/sshd.new" && mv "$BATS_TEST_TMPDIR/sshd.new" "$BATS_TEST_TMPDIR/sshd"
    given ssh --ipQos 46
    greets "$port"
    given clissh lock
    refuses "$port"
}

# --- many at once ---

@test "twenty adapters at once lose nothing" {
    commands=('ssh --ciphers aes256-ctr' 'ssh --macs hmac-sha2-256' 'ssh --kexAlgorithms curve25519-sha256' 'ssh --ipQos 46'
        'ssh --renegotiationTime 60' "clissh unlock port $port" "netconfssh unlock port $other_port")
    pids=()
    for i in $(seq 0 19); do
        # shellcheck disable=SC2086
        adapter ${commands[i % 7]} 3>&- &
        pids+=($!)
    done
    for pid in "${pids[@]}"; do wait "$pid"; done
    for door in clissh netconfssh; do
        [ "$(effective $door ciphers) $(effective $door macs) $(effective $door ipqos) $(effective $door rekeylimit)" = \
            'aes256-ctr hmac-sha2-256 ef ef 0 60' ]
    done
    greets "$port"
    greets "$other_port"
}

@test "a lock that is held too long is reported, and nothing is changed" {
    given clissh lock
    exec 8>>"$state/lock"
    flock 8
    vorma clissh unlock port "$port"
    exec 8>&-
    expect_refused $BUSY 'another vorma holds'
    refuses "$port"
}

@test "the lock of a killed adapter is free at once" {
    given clissh lock
    (exec 8>>"$state/lock"; flock 8; exec sleep 60) 3>&- &
    other=$!
    wait_until held "$state/lock"
    adapter clissh unlock port "$port" 3>&- &
    kill -KILL "$other"
    wait $!
    greets "$port"
}
held() { ! flock -n "$1" true; }

# --- the environment ---

@test "a hostile environment changes nothing" {
    mkdir "$BATS_TEST_TMPDIR/bin"
    printf '#!/bin/sh\nexit 98\n' >"$BATS_TEST_TMPDIR/bin/sshd"
    chmod +x "$BATS_TEST_TMPDIR/bin/sshd"
    run --separate-stderr env -i PATH="$BATS_TEST_TMPDIR/bin" LD_PRELOAD=/nowhere.so LC_ALL=C.UTF-8 MALLOC_CHECK_=3 GLIBC_TUNABLES=x TZ=/nowhere \
        STATE_DIR=/nowhere TMPDIR=/nowhere SSHD=/bin/false "$scripts/vorma" clissh unlock port "$port" </dev/null
    expect_done
    greets "$port"
}
