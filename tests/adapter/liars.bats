#!/usr/bin/env bats
# Adapters that report success and break a promise, before the conformance test: it must find each of them.

load liars

@test "settings that are never applied are found" {
    for kind in cipher 'key exchange' MAC; do
        expect_found "the $kind that is set gets in through both doors, and no other" '[ "$1" != ssh ] || exit 0'
    done
}

@test "settings that reach only the open door are found" {
    expect_found 'settings that are given while a door is closed hold when it opens' \
        'case $1:$(ls $state) in ssh:*clissh.conf*netconfssh.conf*) ;; ssh:*) exit 0 ;; esac'
}

@test "a locked door that still accepts connections, though it greets nobody, is found" {
    expect_found 'once lock has ended with 0 the door refuses connections' \
        'if [ "$2" = lock ] && [ -s $state/clissh.pid ]; then kill -STOP $(cat $state/clissh.pid); exit 0; fi'
}

@test "a refused batch of which a part was applied is found" {
    expect_found 'a batch with an unknown algorithm or a bad value is refused as a whole' \
        'case "$*" in "ssh --ciphers "*" --macs no-such"*) honestly ssh --ciphers "$3" ;; esac' \
        'case "$*" in "ssh --kex"*" --macs "*" --ciphers no-such"*) honestly ssh --kexAlgorithms "$3" ;; esac' \
        'case "$*" in "ssh --macs "*" --kexAlgorithms no-such"*) honestly ssh --macs "$3" ;; esac'
}

@test "a listener that stays dead is found" {
    expect_found 'a listener that died comes back with the same unlock' '[ "$2" != unlock ] || [ ! -e $state/clissh.conf ] || exit 0'
}
