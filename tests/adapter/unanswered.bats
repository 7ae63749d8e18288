#!/usr/bin/env bats
# An sshd that does not answer when it is asked: the adapter is through within 25 s all the same, and leaves nothing of it.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; }
teardown() { clear_stage; }

@test "an sshd that thinks for three seconds is waited for" {
    replace_sshd 'case "$*" in *-T*) sleep 3 ;; esac'
    vorma_in_time clissh unlock port "$port"
    expect_done
    greets "$port"
}

hang_sshd() { # PATTERN: its words
    replace_sshd "case \"\$*\" in $1) echo \$\$ >>'$BATS_TEST_TMPDIR/hanging.started'; exec sleep 600 ;; esac"
}

@test "an sshd that does not answer is given up in time, and nothing is touched" {
    open_both
    hang_sshd '*-T*'
    before=$(fingerprint)
    vorma_in_time ssh --ipQos 46
    expect_refused $REFUSED 'does not end in time; nothing was changed, the old state is in force'
    [ "$before" = "$(fingerprint)" ]
    both_greet
    wait_until none_of_started_left
}

@test "a script in place of sshd that does not answer is given up with the program for which it waits" {
    given clissh unlock port "$port"
    replace_sshd "case \"\$*\" in *-T*) sh -c 'echo \$\$ >>\"\$0\"; exec sleep 600' '$BATS_TEST_TMPDIR/hanging.started' ;; esac"
    vorma_in_time clissh unlock port "$other_port"
    expect_refused $REFUSED 'does not end in time'
    wait_until none_of_started_left
}

@test "an sshd of which nothing works any more is given up in time, and a later run mends what was lost" {
    open_both
    kill -KILL "$(door_pid clissh)" "$(door_pid netconfssh)"
    wait_until refuses "$other_port"
    hang_sshd '*'
    vorma_in_time ssh --ipQos 46
    expect_refused $LOST 'the old state is not in force either'
    wait_until none_of_started_left
    restore_sshd
    given clissh unlock port "$port"
    both_greet
}
