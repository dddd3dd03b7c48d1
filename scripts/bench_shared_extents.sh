#!/bin/bash
# Runs benchmarks with their files on a file system that shares blocks between files: one in a file of its own,
# which is mounted for this run alone.
#   scripts/bench_shared_extents.sh [xfs|btrfs] [BENCHMARK_ARGS...]
# Needs root, 12 GB of room in the folder of temporary files and the release build of `make bench`.
set -euo pipefail
cd "$(dirname "$0")/.."

kind=xfs
if (($#)) && [[ $1 == xfs || $1 == btrfs ]]; then
  kind=$1
  shift
fi
(($#)) || set -- --benchmark_filter=SavePhotosAgain

if ((EUID != 0)); then
  echo "Only root may mount file systems." >&2
  exit 1
fi
# Mounts of a namespace of its own go with the process.
if [[ -z ${ORVANEL_UNSHARED-} ]]; then
  ORVANEL_UNSHARED=1 exec unshare --mount --propagation private "$0" "$kind" "$@"
fi

folder=$(mktemp -d)
cleanUp() {
  ! mountpoint -q "$folder/mounted" || umount "$folder/mounted"
  rm -rf --one-file-system "$folder"
}
trap cleanUp EXIT
mkdir "$folder/mounted"
truncate -s 12G "$folder/image"
PATH=$PATH:/usr/sbin:/sbin
case $kind in
  xfs) mkfs.xfs -q -m reflink=1 "$folder/image" ;;
  btrfs) mkfs.btrfs -q "$folder/image" ;;
esac
mount -o loop "$folder/image" "$folder/mounted"
TMPDIR=$folder/mounted build/release/bench/orvanel_bench "$@"
