#!/usr/bin/env bats
# Listeners that hang: the adapter is through within 25 s all the same, and leaves nothing of them.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; }
teardown() { clear_stage; }

# In place of a listener: it has its words and its port, accepts, and greets nobody.
mute_listener() { # PORT
    nuisance mute "$1" "$SSHD -D -f $state/clissh.conf"
}

@test "a listener that accepts and greets nobody is replaced by settle and by settings" {
    open_both
    local command
    for command in settle 'ssh --ipQos 46'; do
        kill -KILL "$(door_pid clissh)"
        wait_until refuses "$port"
        mute_listener "$port"
        echo "${nuisances[-1]}" >"$state/clissh.pid"
        # shellcheck disable=SC2086
        vorma_in_time $command
        expect_done
        run ! kill -0 "${nuisances[-1]}"
        both_greet
    done
}

@test "a program that is no listener at all is given up, and nothing is left of it" {
    replace_sshd "case \"\$*\" in *-D*) echo \$\$ >>'$BATS_TEST_TMPDIR/hanging.started'; exec sleep 600 ;; esac"
    vorma_in_time clissh unlock port "$port"
    expect_refused $ROLLED_BACK 'did not come up'
    wait_until none_of_started_left
}

@test "a script in place of sshd that hangs is given up with the program for which it waits" {
    replace_sshd "case \"\$*\" in *-D*) sh -c 'echo \$\$ >>\"\$0\"; exec sleep 600' '$BATS_TEST_TMPDIR/hanging.started' ;; esac"
    vorma_in_time clissh unlock port "$port"
    expect_refused $ROLLED_BACK 'did not come up'
    wait_until none_of_started_left
}

@test "a listener that never begins to listen is given up, and nothing is left of it" {
    given netconfssh unlock port "$other_port"
    replace_sshd "case \"\$*\" in *-D*clissh*) echo \$\$ >>'$BATS_TEST_TMPDIR/hanging.started'; exec bash -c 'exec -a \"\$0\" sleep 600' \"\$0 \$*\" ;; esac"
    vorma_in_time clissh unlock port "$port"
    expect_refused $ROLLED_BACK 'did not come up'
    refuses "$port"
    greets "$other_port"
    [ ! -e "$state/clissh.conf" ]
    wait_until none_of_started_left
}

@test "a listener that accepts and greets nobody opens no door, and nothing is left of it" {
    given netconfssh unlock port "$other_port"
    replace_sshd "case \"\$*\" in *-D*clissh*) echo \$\$ >>'$BATS_TEST_TMPDIR/hanging.started'
        exec '$BATS_TEST_DIRNAME/nuisance' mute $port \"\$0 \$*\" ;; esac"
    vorma_in_time clissh unlock port "$port"
    expect_refused $ROLLED_BACK "its port $port does not answer"
    refuses "$port"
    greets "$other_port"
    [ ! -e "$state/clissh.conf" ]
    wait_until none_of_started_left
}
