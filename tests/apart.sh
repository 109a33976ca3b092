#!/bin/sh
# apart.sh PROGRAM ARGS...: runs a test where it sees no processes and no named objects but its own,
# so that tests that start copies of the program, of which one runs for a user, may run at the same
# time. Where the system does not allow that they wait for each other.
inside='mount -t tmpfs -o mode=1777 tmpfs /dev/shm &&'
space='--mount --pid --fork --kill-child --mount-proc'
if [ "$(id -u)" != 0 ]; then  # root of a space of its own, in there the user again
  space="--user --map-root-user $space"
  inside="$inside unshare --user --map-user=$(id -u) --map-group=$(id -g)"
fi
if unshare $space sh -c "$inside true" 2>/dev/null; then
  exec unshare $space sh -c "$inside"' "$@"; exit $?' sh "$@"
fi
exec flock "${TMPDIR:-/tmp}/kestrun-tests-$(id -u).lock" "$@"
