#!/usr/bin/env bats
# What the options of ssh make of both doors.

load harness
setup_file() { make_keys; }
setup() { set_stage; free_port port; free_port other_port; }
teardown() { clear_stage; }

@test "ciphers, key exchanges and MACs hold on both doors" {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    vorma ssh --ciphers aes256-ctr,aes128-ctr --kexAlgorithms curve25519-sha256 --macs hmac-sha2-256
    expect_done
    for door in clissh netconfssh; do
        [ "$(effective $door ciphers)" = aes256-ctr,aes128-ctr ]
        [ "$(effective $door kexalgorithms)" = curve25519-sha256 ]
        [ "$(effective $door macs)" = hmac-sha2-256 ]
    done
    login "$port" -c aes128-ctr true
    run ! login "$port" -c aes192-ctr true
}

@test "the DSCP reaches sshd as the upper six bits of the byte" {
    given clissh unlock port "$port"
    for pair in 0:cs0 5:0x14 10:af11 46:ef 63:0xfc; do
        given ssh --ipQos "${pair%:*}"
        [ "$(effective clissh ipqos)" = "${pair#*:} ${pair#*:}" ]
    done
    grep -qx 'IPQoS 0xfc' "$state/clissh.conf"
}

@test "every DSCP is taken and is what sshd then uses" {
    given clissh unlock port "$port"
    # sshd says these by name, the others as a byte.
    names=([0]=cs0 le throughput [4]=lowdelay [8]=cs1 [10]=af11 [12]=af12 [14]=af13 [16]=cs2 [18]=af21 [20]=af22 [22]=af23 [24]=cs3 [26]=af31
        [28]=af32 [30]=af33 [32]=cs4 [34]=af41 [36]=af42 [38]=af43 [40]=cs5 [46]=ef [48]=cs6 [56]=cs7)
    for dscp in {0..63}; do
        given ssh --ipQos "$dscp"
        printf -v byte '0x%02x' $((dscp * 4))
        wanted=${names[dscp]-$byte}
        [ "$(effective clissh ipqos)" = "$wanted $wanted" ] || { echo "DSCP $dscp" >&2; return 1; }
    done
}

@test "removing the DSCP gives sshd its own choice back" {
    given clissh unlock port "$port"
    before=$(effective clissh ipqos)
    given ssh --ipQos 46
    given ssh --removeIpQoS
    [ "$(effective clissh ipqos)" = "$before" ]
}

@test "renegotiation is by time, or not at all" {
    given clissh unlock port "$port"
    given ssh --renegotiationTime 3600
    [ "$(effective clissh rekeylimit)" = '0 3600' ]
    given ssh --renegotiationTime 2147483647
    [ "$(effective clissh rekeylimit)" = '0 2147483647' ]
    given ssh --renegotiationTime none
    [ "$(effective clissh rekeylimit)" = '0 0' ]
}

@test "of repeated options the last one counts" {
    given clissh unlock port "$port"
    given ssh --ipQos 46 --ciphers aes128-ctr --removeIpQoS --ipQos 10 --ciphers aes256-ctr
    [ "$(effective clissh ipqos)" = 'af11 af11' ]
    [ "$(effective clissh ciphers)" = aes256-ctr ]
    given ssh --ipQos 46 --removeIpQoS
    run ! grep -q IPQoS "$state/clissh.conf"
}

@test "what is not named keeps its value" {
    given clissh unlock port "$port"
    given ssh --ciphers aes256-ctr --ipQos 46
    given ssh --macs hmac-sha2-256
    [ "$(effective clissh ciphers)" = aes256-ctr ]
    [ "$(effective clissh ipqos)" = 'ef ef' ]
}

@test "settings given while all doors are closed hold when one opens" {
    given ssh --ciphers aes256-ctr --renegotiationTime 60
    no_process_of "$state"
    given netconfssh unlock port "$port"
    [ "$(effective netconfssh ciphers)" = aes256-ctr ]
    [ "$(effective netconfssh rekeylimit)" = '0 60' ]
}

@test "settings survive lock and unlock" {
    given clissh unlock port "$port"
    given ssh --ipQos 46
    given clissh lock
    given clissh unlock port "$other_port"
    [ "$(effective clissh ipqos)" = 'ef ef' ]
}

@test "an unknown algorithm anywhere in a batch leaves all of it and both doors as they were" {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    before=$(fingerprint)
    for bad in '--ciphers bogus' '--kexAlgorithms bogus' '--macs aes256-ctr' '--ciphers aes256-ctr,bogus'; do
        # shellcheck disable=SC2086
        vorma ssh --ipQos 46 $bad --renegotiationTime 60
        expect_refused $REFUSED 'the old state is in force'
    done
    [ "$before" = "$(fingerprint)" ]
    greets "$port"
    greets "$other_port"
}

@test "an unknown algorithm is refused also while all doors are closed" {
    vorma ssh --ciphers bogus
    expect_refused $REFUSED "'bogus'"
    given ssh --ipQos 10
}

@test "when one door cannot take a batch the other does not get it either" {
    given clissh unlock port "$port"
    given netconfssh unlock port "$other_port"
    printf 'Match all\nIPQoS cs1\n' >"$BATS_TEST_TMPDIR/clash"
    add_setting "NETCONFSSH_CONFIG=$BATS_TEST_TMPDIR/clash"
    before=$(fingerprint)
    vorma ssh --ipQos 46
    expect_refused $REFUSED "netconfssh: sshd would use ipqos 'cs1 cs1'"
    [ "$before" = "$(fingerprint)" ]
}

@test "an older revision does not know the newer options" {
    add_setting SPI_REVISION=1.7.3
    vorma spi-revision
    [ "$output" = 1.7.3 ]
    vorma ssh --ipQos 46 --ciphers aes256-ctr
    expect_done
    vorma ssh --renegotiationTime 60
    expect_refused $USAGE "'--renegotiationTime' is not known in revision 1.7.3"
    set_settings "STATE_DIR=$state" "BASE_CONFIG=$base" SPI_REVISION=1.6.9
    for option in '--ciphers aes256-ctr' '--kexAlgorithms curve25519-sha256' '--macs hmac-sha2-256' '--ipQos 1' --removeIpQoS; do
        # shellcheck disable=SC2086
        vorma ssh $option
        expect_refused $USAGE 'is not known in revision 1.6.9'
    done
}

@test "a revision is compared by its numbers" {
    add_setting SPI_REVISION=1.10.0
    vorma ssh --renegotiationTime 60
    expect_done
}
