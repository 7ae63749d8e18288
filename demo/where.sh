# shellcheck shell=bash
# shellcheck disable=SC2034 # read by those who source this
# Where things are in the tree. Sourced by a script of this folder, of whose arguments it takes the first, the build
# folder; the installed edition, which the build makes of where.sh.in, takes none.

top=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
node=${1:?the build folder}/bin/tul-node
component=$1/lib/libtul_sshd_manager.so
gate=$1/bin/dscp-gate
adapter=$1/bin/vorma
places=$top/build # the folder of the private places
shift
