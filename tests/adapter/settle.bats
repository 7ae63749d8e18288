#!/usr/bin/env bats
# What status tells of what is wanted and what is, and how settle brings the one in line with the other.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; free_port third_port; }
teardown() { clear_stage; }

open_both() {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    given ssh --ciphers aes256-ctr
}

tells() { # LINE...
    local line
    vorma status
    [ "$status" -eq 0 ] && [ -z "$stderr" ] || return
    for line; do grep -qxE "$line" <<<"$output" || { echo "no line '$line' in: $output" >&2; return 1; }; done
}

@test "settle of what is in line restarts nobody" {
    open_both
    before=$(fingerprint | grep -E '^(clissh|netconfssh) '; cat "$state"/*.conf)
    given settle
    [ "$before" = "$(fingerprint | grep -E '^(clissh|netconfssh) '; cat "$state"/*.conf)" ]
    given ssh --ciphers aes256-ctr
}

@test "settle where nothing was ever opened leaves all closed" {
    given settle
    tells 'clissh.wanted closed' 'clissh.differs no' 'netconfssh.differs no' 'state sound' 'change none'
    no_process_of "$state"
}

@test "a run that was cut short is told by status, and settle undoes it" {
    open_both
    hold_reload clissh CLISSH_CONFIG
    kill_when "refuses $port" clissh unlock port "$third_port"
    tells "clissh.wanted $port" 'clissh.effective closed' 'clissh.differs its listener (does not listen|is gone)' "netconfssh.effective $other_port" \
        'netconfssh.differs no' 'change begun at 20.*, and not ended'
    release_reload
    given settle
    both_greet
    refuses "$third_port"
    tells "clissh.effective $port" 'clissh.differs no' 'change none'
}

@test "a listener that is gone is told by status, and settle brings it back" {
    open_both
    kill -KILL "$(door_pid clissh)" "$(door_pid netconfssh)"
    wait_until refuses "$other_port"
    tells "clissh.wanted $port" 'clissh.effective closed' 'clissh.differs its listener is gone' 'clissh.pid none' 'clissh.ciphers aes256-ctr'
    given settle
    both_greet
    tells 'clissh.differs no' 'netconfssh.differs no'
}

@test "a second listener of a door is told by status, and settle leaves one" {
    open_both
    sed "s/^Port .*/Port $third_port/" "$state/clissh.conf" >"$BATS_TEST_TMPDIR/second"
    cp "$state/clissh.conf" "$BATS_TEST_TMPDIR/kept"
    cp "$BATS_TEST_TMPDIR/second" "$state/clissh.conf"
    "$SSHD" -f "$state/clissh.conf"
    wait_until greets "$third_port"
    cp "$BATS_TEST_TMPDIR/kept" "$state/clissh.conf"
    tells 'clissh.differs it has more than one listener' "clissh.effective $(printf '%s\n' "$port" "$third_port" | sort -n | paste -sd' ')"
    given settle
    both_greet
    refuses "$third_port"
    tells 'clissh.differs no'
}

@test "a listener of a door that is to be closed is told by status, and settle ends it" {
    open_both
    cp "$state/clissh.conf" "$BATS_TEST_TMPDIR/kept"
    given clissh lock
    cp "$BATS_TEST_TMPDIR/kept" "$state/clissh.conf"
    "$SSHD" -f "$state/clissh.conf"
    wait_until greets "$port"
    tells 'clissh.wanted closed' "clissh.effective $port" 'clissh.differs it is to be closed, but a listener is there'
    given settle
    refuses "$port"
    tells 'clissh.differs no'
}

@test "a file that somebody changed is told by status, and settle makes it anew" {
    open_both
    cp "$state/clissh.conf" "$BATS_TEST_TMPDIR/kept"
    echo 'Banner none' >>"$state/clissh.conf"
    tells 'clissh.differs its file is not what state and settings make of it'
    given settle
    cmp "$state/clissh.conf" "$BATS_TEST_TMPDIR/kept"
    both_greet
}

@test "a change that failed is told by status until one succeeds" {
    open_both
    : >"$BATS_TEST_TMPDIR/trap"
    spoil_after_question clissh "echo NoSuchKeyword >>'$BATS_TEST_TMPDIR/trap'"
    add_setting "CLISSH_CONFIG=$BATS_TEST_TMPDIR/trap"
    vorma clissh unlock port "$third_port"
    expect_refused $ROLLED_BACK 'did not come up'
    tells "clissh.wanted $port" "clissh.effective $port" "clissh.failure clissh: its listener did not come up on port $third_port" 'netconfssh.failure none'
    : >"$BATS_TEST_TMPDIR/trap"
    restore_sshd
    given clissh unlock port "$third_port"
    tells "clissh.wanted $third_port" 'clissh.failure none' 'clissh.differs no'
}

@test "a door that could not be put back is told by status with the reason, and settle opens it once the reason is gone" {
    open_both
    kill -KILL "$(door_pid clissh)"
    wait_until refuses "$port"
    occupy "$port"
    given netconfssh unlock port "$third_port"
    tells "clissh.wanted $port" 'clissh.effective closed' 'clissh.differs its listener is gone' "clissh.failure clissh: port $port is taken" \
        'netconfssh.failure none'
    vorma settle
    expect_refused $LOST "port $port is taken"
    greets "$third_port"
    kill "$other"
    wait "$other" || true
    given settle
    greets "$port"
    tells "clissh.effective $port" 'clissh.failure none'
}

@test "a damaged state is told by status, and settle restores it from its copy" {
    open_both
    echo x >"$state/state"
    tells 'state sound' "clissh.wanted $port"
    given settle
    cmp "$state/state" "$state/state.copy"
    echo x | tee "$state/state" >"$state/state.copy"
    tells 'state damaged or lost'
    both_greet
}

@test "status changes nothing and makes nothing" {
    tells 'clissh.wanted closed' 'clissh.differs no' 'state not written yet'
    [ ! -e "$state" ]
    open_both
    before=$(write_fingerprint)
    tells 'clissh.differs no'
    [ "$before" = "$(write_fingerprint)" ]
}

@test "status does not wait for a run that is under way" {
    open_both
    exec 8>>"$state/lock"
    flock 8
    tells 'clissh.differs no'
    exec 8>&-
}
