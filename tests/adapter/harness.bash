# A private sshd on loopback for each test, and eyes that look at it from outside.
# TUL_VORMA is the program; that of the preset "dev" when it is not set.

bats_require_minimum_version 1.5.0
TOP=$(cd "$BATS_TEST_DIRNAME/../.." && pwd)
ADAPTER=${TUL_VORMA:-$TOP/build/dev/bin/vorma}
SSHD=/usr/sbin/sshd
export PATH=$PATH:/usr/sbin:/sbin LC_ALL=C

# --- the stage ---

make_keys() {
    ssh-keygen -q -t ed25519 -N '' -f "$BATS_FILE_TMPDIR/host_key"
    ssh-keygen -q -t ed25519 -N '' -f "$BATS_FILE_TMPDIR/client_key"
    chmod 0600 "$BATS_FILE_TMPDIR/client_key.pub"
}

set_stage() {
    [ "$(id -u)" != 0 ] || [ -d /run/sshd ] || { echo "sshd of root needs the directory /run/sshd" >&2; return 1; }
    scripts=$BATS_TEST_TMPDIR/scripts state=$BATS_TEST_TMPDIR/state base=$BATS_TEST_TMPDIR/base_config
    mkdir "$scripts"
    ln -s "$ADAPTER" "$scripts/vorma"
    cat >"$base" <<TEXT
HostKey $BATS_FILE_TMPDIR/host_key
AuthorizedKeysFile $BATS_FILE_TMPDIR/client_key.pub
StrictModes no
UsePAM $([ "$(id -u)" = 0 ] && echo no || echo yes)
PasswordAuthentication no
KbdInteractiveAuthentication no
PermitRootLogin prohibit-password
TEXT
    set_settings "STATE_DIR=$state" "BASE_CONFIG=$base" LISTEN_ADDRESS=127.0.0.1
}

set_settings() { printf '%s\n' "$@" >"$scripts/vorma.conf"; }
add_setting() { printf '%s\n' "$@" >>"$scripts/vorma.conf"; }

# After every test: what the adapter started it can stop, and nothing of the test is left.
clear_stage() {
    end_nuisances
    for pid in $(processes_of "$BATS_TEST_TMPDIR/state"); do kill -TERM "$pid"; done
    wait_until no_process_of "$BATS_TEST_TMPDIR" || { processes_of "$BATS_TEST_TMPDIR" >&2; return 1; }
    no_candidates_left
}

no_candidates_left() {
    [ ! -d "$state/new" ] || [ -n "${candidates_expected-}" ] || [ -z "$(ls -A "$state/new")" ]
}

# By find: bats stops at every command of a loop, and the loop would be one over all processes. Tests have copies of sshd, too.
processes_of() { # DIRECTORY: each sshd that has it in its command line
    local exe words
    while read -r exe; do
        { words=$(tr '\0' ' ' <"${exe%exe}cmdline"); } 2>/dev/null || continue
        [[ $words != *"$1/"* ]] || basename "${exe%/exe}"
    done < <(find /proc/[0-9]*/exe -maxdepth 0 \( -lname "$(readlink -f "$SSHD")*" -o -lname "$BATS_TEST_TMPDIR/sshd*" \) 2>/dev/null)
}
no_process_of() { [ -z "$(processes_of "$1")" ]; }

# --- the adapter ---

# As the node runs it: a minimal environment, nothing to read, a process group of its own.
adapter() {
    env -i PATH=/usr/bin:/bin setsid -w "$scripts/vorma" "$@" </dev/null
}
vorma() { run --separate-stderr adapter "$@"; }

# The caller kills at 30 s; the adapter wants to be through before.
vorma_in_time() {
    run --separate-stderr timeout -s KILL 25 env -i PATH=/usr/bin:/bin setsid -w "$scripts/vorma" "$@" </dev/null
}

given() { adapter "$@" || { echo "given: vorma $* ended with $?" >&2; return 1; }; }

expect_done() { [ "$status" -eq 0 ] || { echo "exit $status: $stderr" >&2; return 1; }; [ -z "$output$stderr" ]; }

# One line that says what was refused.
expect_refused() { # CODE WORDS
    echo "exit $status: $output / $stderr" >&2
    [ "$status" -eq "$1" ] && [ -z "$output" ] && [ "${#stderr_lines[@]}" -eq 1 ] && [[ $stderr == *"$2"* ]]
}

USAGE=2 SETTINGS=3 BUSY=4 STORE=5 REFUSED=6 TAKEN=7 ROLLED_BACK=8 LOST=9

# --- the view from outside ---

wait_until() { # COMMAND...
    local tries=500
    until "$@"; do
        tries=$((tries - 1))
        [ $tries -gt 0 ] || { echo "waited in vain for: $*" >&2; return 1; }
        sleep 0.02
    done
}

greets() { # PORT [ADDRESS]
    local line=''
    { exec 5<>"/dev/tcp/${2:-127.0.0.1}/$1"; } 2>/dev/null || return 1
    IFS= read -r -t 10 line <&5
    exec 5>&-
    [[ $line == SSH-2.0-* ]]
}
# Not the same as a port that accepts and never greets, nor as one that does not answer.
refuses() { # PORT [ADDRESS]
    [[ $({ exec 5<>"/dev/tcp/${2:-127.0.0.1}/$1"; } 2>&1) == *'Connection refused'* ]]
}

# Ten ports for each run of bats, below the range from which outgoing connections take theirs. Between the choice of a port and
# its use another run could choose it too: runs at the same time scatter.
first_port() {
    local sum
    sum=$(cksum <<<"$BATS_RUN_TMPDIR")
    next_port=$((20000 + ${sum%% *} % 1200 * 10))
}

# Into a variable, since a subshell would forget what it gave.
free_port() { # VARIABLE
    [ -n "${next_port-}" ] || first_port
    until refuses $next_port "${VORMA_ADDRESS:-127.0.0.1}"; do next_port=$((next_port + 1)); done
    printf -v "$1" %s "$next_port"
    next_port=$((next_port + 1))
}

ssh_client=(ssh -F none -o BatchMode=yes -o StrictHostKeyChecking=no -o UserKnownHostsFile=/dev/null -o UpdateHostKeys=no
    -o IdentitiesOnly=yes -o ConnectTimeout=10)

login() { # PORT [OPTION...] COMMAND
    local port=$1
    shift
    "${ssh_client[@]}" -n -o LogLevel=ERROR -i "$BATS_FILE_TMPDIR/client_key" -p "$port" "$(id -un)@127.0.0.1" "$@"
}

# Both doors, on the ports that the test has picked.
open_both() {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
}
both_greet() { greets "$port" && greets "$other_port"; }

door_pid() { cat "$state/$1.pid"; }
start_time() { cut -d' ' -f22 "/proc/$1/stat"; }

effective() { # DOOR KEYWORD: what sshd itself reads in the door's file
    "$SSHD" -T -f "$state/$1.conf" | sed -n "s/^$2 //p"
}

# Everything that must not move: files, and the processes behind the doors.
fingerprint() {
    stat -c '%n %i %y %a' "$state"/*.* "$state/state" | grep -v '\.failure ' || true
    for door in clissh netconfssh; do
        [ ! -e "$state/$door.pid" ] || echo "$door $(door_pid $door) $(start_time "$(door_pid $door)")"
    done
}

# Also when there was nothing to do at all.
write_fingerprint() { stat -c '%i %y' "$state" "$state/new"; fingerprint; }

# Somebody else's listener that greets nobody.
occupy() { # PORT
    "$SSHD" -D -f "$base" -o "Port $1" -o ListenAddress=127.0.0.1 -o "PidFile $BATS_TEST_TMPDIR/other.pid" </dev/null >/dev/null 2>&1 3>&- &
    other=$!
    wait_until greets "$1"
}

# An sshd that is the real one, but for what happens right after it was asked about the file of a door.
spoil_after_question() { # DOOR COMMAND
    replace_sshd "case \" \$* \" in *\" -T \"*/new/$1.conf*) \"$SSHD\" \"\$@\"; result=\$?; $2; exit \$result ;; esac"
}

# A script in place of sshd, which ends by becoming the real one. In place of another such script, which may be running.
replace_sshd() { # SCRIPT
    printf '%s\n' '#!/bin/sh' "$1" "exec \"$SSHD\" \"\$@\"" >"$BATS_TEST_TMPDIR/sshd.new"
    chmod 755 "$BATS_TEST_TMPDIR/sshd.new"
    mv "$BATS_TEST_TMPDIR/sshd.new" "$BATS_TEST_TMPDIR/sshd"
    grep -qx "SSHD=$BATS_TEST_TMPDIR/sshd" "$scripts/vorma.conf" || add_setting "SSHD=$BATS_TEST_TMPDIR/sshd"
}
restore_sshd() { replace_sshd :; }

# --- what gets in the way ---

# The program "nuisance" tells what there is.
nuisance() { # WORDS...
    local said=$BATS_TEST_TMPDIR/nuisance.${#nuisances[@]}
    "$BATS_TEST_DIRNAME/nuisance" "$@" </dev/null >"$said" 3>&- &
    nuisances+=($!)
    wait_until [ -s "$said" ]
}
nuisances=()

# Also what a script in place of sshd has started: it writes the number to a file.
end_nuisances() {
    local pid
    while read -r pid; do
        ! grep -qsE 'nuisance|600' "/proc/$pid/cmdline" || kill -KILL "$pid"
    done < <(cat "$BATS_TEST_TMPDIR"/*.started 2>/dev/null)
    for pid in "${nuisances[@]}"; do
        kill -KILL "$pid" 2>/dev/null || true
        wait "$pid" 2>/dev/null || true
    done
    nuisances=()
}

# The new file of the door includes one more, of which sshd never sees the end when it reads it again: so the adapter is caught while it
# waits for a listener that has its new file and no port any more.
hold_reload() { # DOOR KEY
    : >"$BATS_TEST_TMPDIR/held"
    echo "Include $BATS_TEST_TMPDIR/held" >"$BATS_TEST_TMPDIR/holding"
    add_setting "$2=$BATS_TEST_TMPDIR/holding"
    spoil_after_question "$1" "rm '$BATS_TEST_TMPDIR/held'; mkfifo '$BATS_TEST_TMPDIR/held'"
}
release_reload() {
    rm "$BATS_TEST_TMPDIR/held"
    : >"$BATS_TEST_TMPDIR/held"
    restore_sshd
}

# A run that is killed with its whole group once the condition holds.
kill_when() { # CONDITION VORMA-WORDS...
    setsid env -i PATH=/usr/bin:/bin "$scripts/vorma" "${@:2}" </dev/null >/dev/null 2>&1 3>&- &
    local group=$!
    wait_until eval "$1"
    kill -KILL -- "-$group"
    wait "$group" || true
}

# What a script in place of sshd has started, and written down.
none_of_started_left() {
    [ -s "$BATS_TEST_TMPDIR/hanging.started" ] || return
    local pid
    while read -r pid; do ! kill -0 "$pid" 2>/dev/null || return; done <"$BATS_TEST_TMPDIR/hanging.started"
}
