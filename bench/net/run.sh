#!/usr/bin/env bash
# Loopback throughput of UniSock (SendData / DataArrival, 64 KB chunks)
# beside socat moving the same bytes in 64 KB blocks, in one run.
# Usage: bench/net/run.sh BUILD_DIR [MEGABYTES]
set -euo pipefail
build=$1
megabytes=${2:-1024}
if ! command -v socat >/dev/null; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get install -y -qq --no-install-recommends socat
fi
ours=$("$build/bin/tarvoke_net_bench" "$megabytes")

port=$(python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
socat -u -b 65536 "TCP-LISTEN:$port,bind=127.0.0.1,reuseaddr" OPEN:/dev/null &
listener=$!
trap 'kill $listener 2>/dev/null || true' EXIT
# socat announces nothing when it listens: wait for the port to be taken.
until ss -ltn "sport = :$port" | grep -q LISTEN; do sleep 0.01; done
begin=$(date +%s%N)
socat -u -b 65536 "OPEN:/dev/zero,readbytes=$((megabytes << 20))" "TCP:127.0.0.1:$port"
wait $listener
end=$(date +%s%N)
theirs=$(( megabytes * 1000000000 / (end - begin) ))
echo "loopback, $megabytes MB in 64 KB chunks: UniSock $ours MB/s (one thread, both ends), socat $theirs MB/s (two processes); ratio $(python3 -c "print(f'{$ours / $theirs:.2f}')")"
