# Puts adapters that report success and break a promise before the conformance test.

load harness
setup_file() { make_keys; }
setup() { set_stage; }
teardown() {
    for pid in $(processes_of "$state"); do kill -KILL "$pid"; done
    clear_stage
}

# An adapter that stands before the reference adapter, which begins anew each time.
conformance() { # TEST SCRIPT: asks this one test; in the script, honestly does what was asked for
    for pid in $(processes_of "$state"); do kill -KILL "$pid"; done
    rm -rf "$state"
    printf '%s\n' '#!/bin/sh' "state=$state" "honestly() { $scripts/vorma \"\$@\"; }" "$2" 'honestly "$@"' >"$BATS_TEST_TMPDIR/liar"
    chmod +x "$BATS_TEST_TMPDIR/liar"
    run env -i TUL_VORMA="$ADAPTER" PATH="${PATH#"$BATS_LIBEXEC:"}" HOME="$HOME" TMPDIR="${TMPDIR:-/tmp}" VORMA="$BATS_TEST_TMPDIR/liar" \
        VORMA_USER="$(id -un)" VORMA_KEY="$BATS_FILE_TMPDIR/client_key" \
        bats --tap -f "^$1\$" "$BATS_TEST_DIRNAME/conformance.bats" 3>&-
    echo "$output" >&2
}

expect_found() { # TEST LIE...
    local lie
    conformance "$1" ''
    { [ "$status" -eq 0 ] && [ "${lines[0]}" = 1..1 ]; } || return
    [[ $output != *'# skip'* ]] || skip "${output##*# skip }"
    for lie in "${@:2}"; do
        conformance "$1" "$lie"
        { [ "$status" -ne 0 ] && [[ ${lines[1]} == 'not ok 1 '* ]]; } || { echo "not found: $lie" >&2; return 1; }
    done
}
