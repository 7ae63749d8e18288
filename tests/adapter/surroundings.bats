#!/usr/bin/env bats
# Whatever the caller hands down, the adapter does its work, and none of it gets to the listeners.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; }
teardown() { clear_stage; }

# --- what listeners inherit ---

field_of() { # PID FIELD: of its stat
    local stat
    read -r stat <"/proc/$1/stat"
    # shellcheck disable=SC2086
    set -- "$2" ${stat##*) }
    shift $(($1 - 2))
    echo "$1"
}
status_of() { awk -v name="$2:" '$1 == name { print $2 }' "/proc/$1/status"; }

SESSION=6 NICENESS=19 PROCESSOR_POLICY=41

@test "a listener has niceness, folder, umask, limits, signals and session of a daemon that was started at boot" {
    umask 077
    # What is lowered for good only some may raise again.
    local bound=-S
    ! prlimit --nofile=64:64 prlimit --nofile=65:65 true 2>/dev/null || bound=''
    # shellcheck disable=SC2086
    ulimit $bound -n 64 -t 100 -c 100
    mkdir "$BATS_TEST_TMPDIR/somewhere"
    cd "$BATS_TEST_TMPDIR/somewhere"
    local raised=10
    [ "$(id -u)" = 0 ] || raised=0
    env --block-signal --ignore-signal=HUP --ignore-signal=TERM --ignore-signal=CHLD nice -n $raised \
        setsid -w chrt --batch 0 taskset -c "$(first_processor)" "$scripts/vorma" clissh unlock port "$port" </dev/null
    local pid
    pid=$(door_pid clissh)
    [ "$(field_of "$pid" $NICENESS)" = 0 ]
    [ "$(field_of "$pid" $PROCESSOR_POLICY)" = 0 ]
    [ "$(field_of "$pid" $SESSION)" = "$pid" ]
    [ "$(readlink "/proc/$pid/cwd")" = / ]
    [ "$(status_of "$pid" Umask)" = 0022 ]
    [ "$(status_of "$pid" SigBlk)" = 0000000000000000 ]
    # sshd itself ignores SIGPIPE.
    [ $((0x$(status_of "$pid" SigIgn) & ~0x1000)) -eq 0 ]
    [ "$(status_of "$pid" Cpus_allowed_list)" = "$(status_of 1 Cpus_allowed_list)" ]
    for limit in 'open files:1024' 'core file size:0' 'cpu time:unlimited'; do
        grep -qE "^Max ${limit%:*} +${limit#*:} " "/proc/$pid/limits" || { echo "$limit" >&2; return 1; }
    done
    [[ $(login "$port" umask) == *022 ]]
}
# A listener that another run starts again, for a door which that is not about.
@test "nor does a listener that is only started again get anything of the caller's" {
    given clissh unlock port "$port"
    kill -KILL "$(door_pid clissh)"
    wait_until refuses "$port"
    umask 077
    ulimit -S -n 64
    cd "$BATS_TEST_TMPDIR"
    env --block-signal --ignore-signal=HUP setsid -w chrt --batch 0 "$scripts/vorma" netconfssh lock </dev/null
    local pid
    pid=$(door_pid clissh)
    [ "$(status_of "$pid" Umask)" = 0022 ]
    [ "$(readlink "/proc/$pid/cwd")" = / ]
    [ "$(field_of "$pid" $PROCESSOR_POLICY)" = 0 ]
    [ "$(status_of "$pid" SigBlk)" = 0000000000000000 ]
    grep -qE '^Max open files +1024 ' "/proc/$pid/limits"
}
first_processor() { local list; list=$(status_of $$ Cpus_allowed_list); echo "${list%%[,-]*}"; }

@test "a listener's environment is PATH alone" {
    env -i PATH=/usr/bin:/bin SECRET=1 LD_PRELOAD_OF_CALLER=2 LANG=xx setsid -w "$scripts/vorma" clissh unlock port "$port" </dev/null
    # sshd shows its own words there after it has named itself: a session tells what it got.
    run login "$port" env
    [[ $output != *SECRET* && $output != *OF_CALLER* && $output != *LANG=xx* ]]
}

@test "no listener is ended by the out-of-memory killer before others because of the caller" {
    echo 500 >/proc/self/oom_score_adj
    (echo 500 >"/proc/$BASHPID/oom_score_adj" && exec env -i "$scripts/vorma" clissh unlock port "$port" </dev/null)
    # sshd asks for even less when it may.
    [ "$(cat "/proc/$(door_pid clissh)/oom_score_adj")" -le 0 ]
}

# --- standard streams ---

@test "closed standard streams change nothing, whichever they are" {
    given netconfssh unlock port "$other_port"
    for closed in 0 1 2 '0 1' '0 2' '1 2' '0 1 2' ''; do
        (
            for stream in $closed; do eval "exec $stream>&-"; done
            exec env -i "$scripts/vorma" clissh unlock port "$port" 3>&-
        )
        greets "$port"
        # What is said to a closed stream must not end up in a file that got its number.
        (
            for stream in $closed; do eval "exec $stream>&-"; done
            ! "$scripts/vorma" clissh unlock port "$other_port" 3>&-
        ) 2>/dev/null
        run ! grep -rq 'vorma:' "$state"
        given clissh lock
    done
    given clissh unlock port "$port"
}

@test "an output that is full or that nobody reads is told by the code, and the adapter ends by itself" {
    given clissh unlock port "$port"
    for command in status spi-revision --help; do
        run --separate-stderr eval '"$scripts/vorma" $command >/dev/full'
        expect_refused $STORE 'No space left on device'
        run --separate-stderr "$BATS_TEST_DIRNAME/nuisance" full-pipe "$scripts/vorma" $command
        expect_refused $STORE 'Broken pipe'
    done
}

@test "a complaint that nobody can take leaves the code as it is" {
    run --separate-stderr eval '"$scripts/vorma" clissh unlock port 0 2>/dev/full'
    [ "$status" -eq $USAGE ]
    run --separate-stderr "$BATS_TEST_DIRNAME/nuisance" full-pipe sh -c '"$0" clissh unlock port 0 2>&1' "$scripts/vorma"
    [ "$status" -eq $USAGE ]
}

# --- signals ---

@test "blocked and ignored signals change nothing" {
    given netconfssh unlock port "$other_port"
    for way in --block-signal --ignore-signal; do
        for signal in '' =CHLD =PIPE =ALRM =HUP =TERM =USR1; do
            run --separate-stderr timeout -s KILL 25 env $way$signal setsid -w "$scripts/vorma" clissh unlock port "$port" </dev/null
            expect_done
            greets "$port"
            run --separate-stderr timeout -s KILL 25 env $way$signal setsid -w "$scripts/vorma" clissh lock </dev/null
            expect_done
            refuses "$port"
        done
    done
}

@test "with the alarm ignored and blocked the wait for the lock still ends" {
    given clissh lock
    exec 8>>"$state/lock"
    flock 8
    run --separate-stderr timeout -s KILL 25 env --block-signal=ALRM --ignore-signal=ALRM setsid -w "$scripts/vorma" clissh unlock port "$port" </dev/null 8>&-
    exec 8>&-
    expect_refused $BUSY 'another vorma holds'
    refuses "$port"
}

@test "children that the caller leaves to the adapter are not waited for" {
    # The child that exec leaves to the adapter outlives it.
    sh -c 'sleep 60 >/dev/null 2>&1 3>&- & echo $! >"$1"; exec "$0" clissh unlock port '"$port" "$scripts/vorma" "$BATS_TEST_TMPDIR/child" </dev/null
    greets "$port"
    kill "$(cat "$BATS_TEST_TMPDIR/child")"
}

@test "a folder that is gone is no obstacle" {
    mkdir "$BATS_TEST_TMPDIR/gone"
    (cd "$BATS_TEST_TMPDIR/gone" && rmdir "$BATS_TEST_TMPDIR/gone" && exec env -i "$scripts/vorma" clissh unlock port "$port" </dev/null)
    greets "$port"
}
