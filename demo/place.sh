# shellcheck shell=bash
# A private place for one run: folders, keys, sshd's own configuration, the adapter's settings, free ports.
# Sourced, with the adapter in `adapter` and the folder to make it in in `places`. make_place sets: place (its folder),
# cli_port, netconf_port; once more, and it makes another one.
# remove_place takes all of it away again.

port_answers() {
    (exec 3<> "/dev/tcp/127.0.0.1/$1") 2> /dev/null
}

# Two runs at once begin their search at different ports: process numbers differ.
free_port() {
    local port=$1
    while port_answers "$port"; do
        port=$((port + 2))
    done
    echo "$port"
}

write_sshd_config() {
    cat > "$place/ssh/sshd_config" <<CONFIG
HostKey "$place/ssh/host_key"
AuthorizedKeysFile "$place/ssh/authorized_keys"
StrictModes no
UsePAM no
PasswordAuthentication no
KbdInteractiveAuthentication no
PermitRootLogin prohibit-password
PrintMotd no
PrintLastLog no
MaxStartups 1000
CONFIG
}

write_client_config() {
    cat > "$place/ssh/config" <<CONFIG
Host *
    User $(id -un)
    IdentityFile "$place/ssh/client_key"
    IdentitiesOnly yes
    BatchMode yes
    ConnectTimeout 10
    StrictHostKeyChecking no
    UserKnownHostsFile "$place/ssh/known_hosts"
    LogLevel INFO
CONFIG
}

write_adapter_settings() {
    cat > "$place/scripts/vorma.conf" <<CONFIG
STATE_DIR=$place/sshd
BASE_CONFIG=$place/ssh/sshd_config
LISTEN_ADDRESS=127.0.0.1
SPI_REVISION=$1
CONFIG
}

make_place() {
    # A daemon that is run by root wants this folder; its service would make it.
    [ "$(id -u)" != 0 ] || [ -d /run/sshd ] || mkdir -m 0755 /run/sshd
    # shellcheck disable=SC2154 # set by those who source this
    mkdir -p "$places"
    place=$(mktemp -d "$places/tul-run.XXXXXX")
    mkdir -m 0700 "$place/ssh" "$place/scripts" "$place/sshd"
    ssh-keygen -q -t ed25519 -N '' -f "$place/ssh/host_key"
    ssh-keygen -q -t ed25519 -N '' -f "$place/ssh/client_key"
    cp "$place/ssh/client_key.pub" "$place/ssh/authorized_keys"
    write_sshd_config
    write_client_config
    # shellcheck disable=SC2154
    ln -s "$adapter" "$place/scripts/vorma"
    write_adapter_settings 1.8.0
    cli_port=$(free_port $((${netconf_port:-$((19999 + $$ * 2 % 10000))} + 1)))
    # shellcheck disable=SC2034 # read by those who source this
    netconf_port=$(free_port $((cli_port + 1)))
}

remove_place() {
    [ -n "${place:-}" ] || return 0
    ln -sfn "$adapter" "$place/scripts/vorma"
    for door in clissh netconfssh; do
        "$place/scripts/vorma" "$door" lock > /dev/null 2>> "$place/cleanup.log" || cat "$place/cleanup.log" >&2
    done
    rm -rf "$place"
}
