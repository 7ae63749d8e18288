#!/usr/bin/env bats
# What is refused before anything is touched.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; }
teardown() { clear_stage; }

expect_each_refused() { # WORDS, then command lines, a line each, words separated by |
    local words=$1 line
    shift
    for line; do
        IFS='|' read -r -d '' -a arguments < <(printf '%s|\0' "$line") || true
        vorma "${arguments[@]}"
        expect_refused $USAGE "$words" || { echo "for: $line" >&2; return 1; }
    done
    [ ! -e "$state" ]
}

@test "a port is a plain number from 1 to 65535" {
    expect_each_refused 'must be 1 to 65535' 'clissh|unlock|port|0' 'clissh|unlock|port|65536' 'clissh|unlock|port|4294967295' \
        'clissh|unlock|port|-1' 'clissh|unlock|port|+22' 'clissh|unlock|port|abc' 'clissh|unlock|port|ssh' 'clissh|unlock|port|022' \
        'clissh|unlock|port|0x16' 'clissh|unlock|port| 22' 'clissh|unlock|port|22 ' 'clissh|unlock|port|2 2' 'clissh|unlock|port|$(id)' \
        'clissh|unlock|port|*' $'clissh|unlock|port|22\nPort 23' 'clissh|unlock|port|99999999999999999999'
}

@test "an empty port is refused" {
    vorma clissh unlock port ''
    expect_refused $USAGE 'must be 1 to 65535'
}

@test "only the two doors are known, and only their words" {
    expect_each_refused 'see vorma --help' 'telnet|lock' 'CLISSH|lock' 'clissh' 'clissh|open' 'clissh|unlock' 'clissh|unlock|port' \
        'clissh|unlock|22' 'clissh|unlock|Port|22' 'clissh|unlock|port|22|23' 'clissh|lock|22' 'spi-revision|now' 'status|clissh' \
        'clissh||lock' '-v' '../clissh|lock' 'clissh:2|lock' 'ssh:2|--ipQos|46' 'status:1'
}

@test "no argument at all is refused, and an empty one" {
    vorma
    expect_refused $USAGE 'a command is missing'
    vorma ''
    expect_refused $USAGE 'is no command'
}

@test "an unknown command is refused as such also where there are no settings" {
    rm "$scripts/vorma.conf"
    vorma help
    expect_refused $USAGE "'help' is no command; see vorma --help"
}

@test "algorithm names are plain, none is empty, none comes twice" {
    for option in --ciphers --kexAlgorithms --macs; do
        expect_each_refused 'must be names' "ssh|$option|,aes256-ctr" "ssh|$option|aes256-ctr," "ssh|$option|aes256-ctr,,aes128-ctr" \
            "ssh|$option|," "ssh|$option|+aes256-ctr" "ssh|$option|-*" "ssh|$option|^aes256-ctr" "ssh|$option|aes*" "ssh|$option|a?b" \
            "ssh|$option|aes256-ctr,-aes128-ctr" "ssh|$option|aes256-ctr, aes128-ctr" "ssh|$option|aes256-ctr,aes256-ctr" \
            "ssh|$option|\"aes256-ctr\"" "ssh|$option|a;b" "ssh|$option|\$(id)" "ssh|$option|ä" $'ssh|'$option$'|aes256-ctr\nPort 23'
    done
}

@test "an empty list, a name and a list of excessive length are refused" {
    vorma ssh --ciphers ''
    expect_refused $USAGE 'must be names'
    vorma ssh --ciphers "$(printf 'a%.0s' $(seq 65))"
    expect_refused $USAGE 'must be names'
    vorma ssh --ciphers "$(seq -s, 1000)"
    expect_refused $USAGE 'must be names'
}

@test "a DSCP is a plain number from 0 to 63" {
    expect_each_refused 'must be 0 to 63' 'ssh|--ipQos|64' 'ssh|--ipQos|-1' 'ssh|--ipQos|ef' 'ssh|--ipQos|0xb8' 'ssh|--ipQos|046' \
        'ssh|--ipQos|4 6' 'ssh|--ipQos|256'
}

@test "a renegotiation time is a plain number of seconds from 1, or none" {
    expect_each_refused 'must be 1 to 2147483647' 'ssh|--renegotiationTime|0' 'ssh|--renegotiationTime|1h' 'ssh|--renegotiationTime|-5' \
        'ssh|--renegotiationTime|None' 'ssh|--renegotiationTime|2147483648' 'ssh|--renegotiationTime|4294967295'
}

@test "sshd itself takes no longer renegotiation time" {
    "$SSHD" -T -f "$base" -o 'RekeyLimit default 2147483647'
    run ! "$SSHD" -T -f "$base" -o 'RekeyLimit default 2147483648'
}

@test "an option needs its value, a batch needs an option, and no other option is known" {
    expect_each_refused 'see vorma --help' 'ssh' 'ssh|--ciphers' 'ssh|--ipQos|46|--macs' 'ssh|--port|22' 'ssh|--ciphers=aes256-ctr' \
        'ssh|aes256-ctr' 'ssh|--removeIpQoS|46' 'ssh|--ipQoS|46' 'ssh|--CIPHERS|aes256-ctr' 'ssh|-c|aes256-ctr'
}

@test "a bad option anywhere keeps the good ones from being applied" {
    given clissh unlock port "$port"
    before=$(write_fingerprint)
    vorma ssh --ipQos 46 --ciphers aes256-ctr --ipQos 64
    expect_refused $USAGE 'must be 0 to 63'
    [ "$before" = "$(write_fingerprint)" ]
}

@test "what is said about a bad argument is one line of plain text" {
    vorma ssh --ciphers $'\033[31m\a\nred\r'
    expect_refused $USAGE '--ciphers'
    [[ ! $stderr =~ [^\ -~] ]]
    vorma ssh --ciphers "$(head -c 100000 /dev/zero | tr '\0' a)"
    [ ${#stderr} -le 600 ]
}

# --- the settings file ---

expect_setting_refused() { # LINE WORDS
    set_settings "# a comment" "" "STATE_DIR=$state" "$1"
    vorma clissh lock
    expect_refused $SETTINGS "$2" && [[ $stderr == *"$scripts/vorma.conf line 4:"* ]]
}

@test "a setting that is not known or has a bad value is refused by file, line, key, value and what is allowed" {
    expect_setting_refused 'PORT=22' "'PORT' is no setting; allowed are STATE_DIR"
    expect_setting_refused 'just words' "'just words' is no setting"
    expect_setting_refused ' SSHD=/x' "' SSHD' is no setting"
    expect_setting_refused 'STATE_DIR=relative' "STATE_DIR='relative' must be an absolute path"
    expect_setting_refused 'BASE_CONFIG=/a b' "BASE_CONFIG='/a b' must be an absolute path"
    expect_setting_refused 'CLISSH_CONFIG=/*' "CLISSH_CONFIG='/*' must be"
    expect_setting_refused 'NETCONFSSH_CONFIG="/x"' "must be an absolute path"
    expect_setting_refused 'SSHD=sshd' "SSHD='sshd' must be an absolute path"
    expect_setting_refused 'LISTEN_ADDRESS=localhost' "LISTEN_ADDRESS='localhost' must be one IP address"
    expect_setting_refused 'LISTEN_ADDRESS=' "must be one IP address"
    expect_setting_refused 'SPI_REVISION=1.8' "SPI_REVISION='1.8' must be three numbers"
    expect_setting_refused 'SPI_REVISION=a.b.c' 'must be three numbers'
    expect_setting_refused $'SSHD=/usr/sbin/sshd\r' 'must be an absolute path'
}

@test "the example of the settings file is taken, with each of its lines in force, and leaves no setting out" {
    vorma_example=${TOP}/adapter/vorma.conf.example
    for edit in '' 's/^#\([A-Z_]*=\)/\1/'; do
        sed "$edit" "$vorma_example" >"$scripts/vorma.conf"
        vorma spi-revision
        [ "$status" -eq 0 ]
    done
    set_settings none=1
    vorma spi-revision
    for key in ${stderr#*allowed are }; do grep -qE "^#?$key=" "$vorma_example"; done
}

@test "settings are read, never run" {
    set_settings "STATE_DIR=$state" "SSHD=/\$(touch $BATS_TEST_TMPDIR/ran)"
    vorma clissh lock
    expect_refused $SETTINGS 'SSHD='
    [ ! -e "$BATS_TEST_TMPDIR/ran" ]
}

@test "STATE_DIR is required, and the settings file itself" {
    set_settings '# nothing'
    vorma clissh lock
    expect_refused $SETTINGS 'STATE_DIR is not set'
    rm "$scripts/vorma.conf"
    vorma spi-revision
    expect_refused $SETTINGS 'cannot be read'
}

@test "the last line of the settings file needs no line end" {
    printf 'BASE_CONFIG=%s\nLISTEN_ADDRESS=127.0.0.1\nSTATE_DIR=%s' "$base" "$state" >"$scripts/vorma.conf"
    given clissh unlock port "$port"
    greets "$port"
}

@test "files that the settings name must be there" {
    add_setting "CLISSH_CONFIG=$BATS_TEST_TMPDIR/absent"
    vorma clissh unlock port "$port"
    expect_refused $SETTINGS "$BATS_TEST_TMPDIR/absent cannot be read"
    set_settings "STATE_DIR=$state" "BASE_CONFIG=$base" SSHD=/usr/sbin/absent
    vorma clissh unlock port "$port"
    expect_refused $SETTINGS 'SSHD=/usr/sbin/absent cannot be run'
}

@test "the settings beside the link by which the adapter was called count" {
    mkdir "$BATS_TEST_TMPDIR/elsewhere"
    ln -s "$ADAPTER" "$BATS_TEST_TMPDIR/elsewhere/vorma"
    printf '%s\n' "STATE_DIR=$state" "BASE_CONFIG=$base" SPI_REVISION=1.2.3 >"$BATS_TEST_TMPDIR/elsewhere/vorma.conf"
    run "$BATS_TEST_TMPDIR/elsewhere/vorma" spi-revision
    [ "$output" = 1.2.3 ]
    cd "$BATS_TEST_TMPDIR/elsewhere"
    run ./vorma spi-revision
    [ "$output" = 1.2.3 ]
}

# An empty part of PATH is the folder in which the caller happens to be: whose settings would that be?
@test "called by a name without a path it refuses" {
    cd "$scripts"
    run --separate-stderr env PATH=: vorma spi-revision
    expect_refused $SETTINGS 'without a path'
}

@test "a settings file or a base file that others may write is refused by name" {
    for file in "$scripts/vorma.conf" "$base"; do
        for mode in 664 646; do
            chmod $mode "$file"
            vorma clissh unlock port "$port"
            expect_refused $SETTINGS "$file may be written by others"
        done
        chmod 644 "$file"
    done
    chmod 777 "$scripts"
    vorma clissh unlock port "$port"
    expect_refused $SETTINGS "$scripts may be written by others"
    chmod 755 "$scripts"
    [ ! -e "$state" ]
}

@test "BASE_CONFIG is required" {
    set_settings "STATE_DIR=$state"
    vorma clissh unlock port "$port"
    expect_refused $SETTINGS 'BASE_CONFIG is not set'
    [ ! -e "$state" ]
}
