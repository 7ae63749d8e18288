#!/usr/bin/env bats
# What the command lines do to the doors, seen from outside.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; }
teardown() { clear_stage; }

@test "unlock opens the door on the port" {
    vorma clissh unlock port "$port"
    expect_done
    greets "$port"
    [ "$(login "$port" echo hello)" = hello ]
}

@test "unlock on another port moves the door" {
    given clissh unlock port "$port"
    vorma clissh unlock port "$other_port"
    expect_done
    greets "$other_port"
    refuses "$port"
}

@test "lock closes the door whatever port it has" {
    given clissh unlock port "$port"
    vorma clissh lock
    expect_done
    refuses "$port"
    [ ! -e "$state/clissh.conf" ]
    [ ! -e "$state/clissh.pid" ]
}

@test "a lock and a move leave established sessions alone" {
    given clissh unlock port "$port"
    mkfifo "$BATS_TEST_TMPDIR/say" "$BATS_TEST_TMPDIR/hear"
    "${ssh_client[@]}" -i "$BATS_FILE_TMPDIR/client_key" -p "$port" "$(id -un)@127.0.0.1" cat <"$BATS_TEST_TMPDIR/say" >"$BATS_TEST_TMPDIR/hear" 2>/dev/null 3>&- &
    exec 6>"$BATS_TEST_TMPDIR/say" 7<"$BATS_TEST_TMPDIR/hear"
    echo before >&6 && read -r -t 10 line <&7 && [ "$line" = before ]
    given clissh unlock port "$other_port"
    given clissh lock
    echo after >&6 && read -r -t 10 line <&7 && [ "$line" = after ]
    exec 6>&- 7<&-
    wait $!
}

@test "one door is not touched by what is done to the other" {
    given clissh unlock port "$port"
    before="$(door_pid clissh) $(stat -c '%i %y' "$state/clissh.conf" "$state/clissh.pid")"
    given netconfssh unlock port "$other_port"
    given netconfssh lock
    [ "$before" = "$(door_pid clissh) $(stat -c '%i %y' "$state/clissh.conf" "$state/clissh.pid")" ]
    greets "$port"
}

@test "both doors are open at once" {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    greets "$port"
    greets "$other_port"
}

@test "the same again writes nothing and signals nobody" {
    given clissh unlock port "$port"
    given ssh --ciphers aes256-ctr --ipQos 46 --renegotiationTime 3600
    before=$(write_fingerprint)
    for again in "clissh unlock port $port" "ssh --ciphers aes256-ctr" "ssh --ipQos 46 --renegotiationTime 3600" "netconfssh lock"; do
        # shellcheck disable=SC2086
        vorma $again
        expect_done
    done
    [ "$before" = "$(write_fingerprint)" ]
}

@test "locking a door that was never open is no error and leaves no listener" {
    vorma netconfssh lock
    expect_done
    no_process_of "$state"
}

@test "a listener that died is started again by the same unlock" {
    given clissh unlock port "$port"
    kill -KILL "$(door_pid clissh)"
    wait_until refuses "$port"
    vorma clissh unlock port "$port"
    expect_done
    greets "$port"
}

@test "a listener that died is started again by a change of settings" {
    given clissh unlock port "$port"
    kill -KILL "$(door_pid clissh)"
    wait_until refuses "$port"
    given ssh --ipQos 10
    greets "$port"
}

@test "a reload keeps the listener's process" {
    given clissh unlock port "$port"
    before=$(door_pid clissh)
    started=$(start_time "$before")
    given ssh --ciphers aes256-ctr
    [ "$before $started" = "$(door_pid clissh) $(start_time "$(door_pid clissh)")" ]
}

@test "the adapter's output ends with the adapter, and the listener holds none of its descriptors" {
    exec 7>"$BATS_TEST_TMPDIR/inherited"
    output=$(adapter clissh unlock port "$port" 2>&1)
    exec 7>&-
    [ -z "$output" ]
    run ls -l "/proc/$(door_pid clissh)/fd"
    [[ $output != *pipe:* && $output != *inherited* && $output != */lock* ]]
}

@test "the listener outlives the adapter's process group" {
    given clissh unlock port "$port"
    pid=$(door_pid clissh)
    [ "$(cut -d' ' -f6 "/proc/$pid/stat")" = "$pid" ]
}

@test "sessions get the usual umask and no ignored signals" {
    given clissh unlock port "$port"
    [ "$(login "$port" umask)" = 0022 ] || [ "$(login "$port" umask)" = 022 ]
    [ "$(login "$port" grep SigIgn: /proc/self/status | tr -d '[:space:]')" = SigIgn:0000000000000000 ]
}

@test "everything in the store is the user's alone" {
    given clissh unlock port "$port"
    [ "$(stat -c %a "$state")" = 700 ]
    [ "$(stat -c %a "$state/state" "$state/clissh.conf" "$state/state.copy" | sort -u)" = 600 ]
}

@test "without LISTEN_ADDRESS the door is open on all addresses" {
    set_settings "STATE_DIR=$state" "BASE_CONFIG=$base"
    given clissh unlock port "$port"
    greets "$port" 127.0.0.1
    greets "$port" 127.0.0.2
    ! grep -q 00000001 /proc/net/if_inet6 2>/dev/null || greets "$port" ::1
}

@test "a door's own file says what only this door serves" {
    echo 'ForceCommand echo only-this' >"$BATS_TEST_TMPDIR/netconf_config"
    add_setting "NETCONFSSH_CONFIG=$BATS_TEST_TMPDIR/netconf_config"
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    [ "$(login "$port" echo any)" = any ]
    [ "$(login "$other_port" echo any)" = only-this ]
}

@test "status tells state, port, process and effective values of each door" {
    given clissh unlock port "$port"
    given ssh --ciphers aes256-ctr --ipQos 46
    vorma status
    [ "$status" -eq 0 ]
    for line in "clissh.wanted $port" "clissh.effective $port" "clissh.pid $(door_pid clissh)" "clissh.listenaddress 127.0.0.1:$port" \
        'clissh.differs no' 'clissh.failure none' 'clissh.ciphers aes256-ctr' 'clissh.ipqos ef ef' 'clissh.rekeylimit 0 0' \
        'netconfssh.wanted closed' 'netconfssh.effective closed' 'netconfssh.pid none' 'netconfssh.differs no' \
        'settings.dscp 46' 'settings.renegotiationtime default' 'state sound' 'change none'; do
        grep -qxF "$line" <<<"$output" || { echo "no line: $line" >&2; return 1; }
    done
    grep -qE '^clissh.since 20[0-9-]+T[0-9:]+Z$' <<<"$output"
    facts=$output
    vorma status --json
    # The same facts, for programs.
    [ "$(jq -r 'to_entries[] | .key as $group | if .value | type == "object" then .value | to_entries[] | "\($group).\(.key) \(.value)"
        else "\($group) \(.value)" end' <<<"$output")" = "$facts" ]
}

@test "status tells that a listener is down" {
    given clissh unlock port "$port"
    kill -KILL "$(door_pid clissh)"
    wait_until refuses "$port"
    vorma status
    grep -qx 'clissh.effective closed' <<<"$output"
    grep -qx 'clissh.differs its listener is gone' <<<"$output"
    given clissh lock
}

@test "the revision is printed without waiting for the lock" {
    given clissh lock
    exec 8>>"$state/lock"
    flock 8
    vorma spi-revision
    exec 8>&-
    [ "$status" -eq 0 ]
    [ "$output" = 1.8.0 ]
}

@test "--help tells the command lines" {
    vorma --help
    [ "$status" -eq 0 ]
    [[ $output == *'unlock port N'* ]]
}
