#!/bin/sh
# Installs the packages of a directory into the system that this runs in, tries them and removes them: for
# scripts/package, which calls it in a bare system of its own. try_packages.sh DIRECTORY

set -eu
cd "$1"
export DEBIAN_FRONTEND=noninteractive
quietly() { "$@" >log 2>&1 </dev/null || { tail -n 30 log >&2; exit 1; }; }

quietly apt-get install -y --no-install-recommends ./libvidproc*.deb gcc libc6-dev pkg-config
gcc -Wall -Werror denoise.c $(pkg-config --cflags --libs vidproc) -o denoise
echo "    denoise.c: $(./denoise)"
ldd denoise | grep -q '/libvidproc\.so\.1 '

quietly apt-get install -y --no-install-recommends ./vidproc-tools*.deb
vidproc info | sed 's/^/    /'
vidproc pre --synthetic --synthetic-size 320x180 --frames 5 --size 160x90 -o clip.mp4 --compare picture.png
test -s clip.mp4 && test -s picture.png
vidproc post clip.mp4 -o clip.y4m
head -n 1 clip.y4m | sed "s/^/    /"

quietly apt-get purge -y vidproc-tools libvidproc-dev libvidproc1
left=$(find /usr /etc /var/lib -name '*vidproc*' ! -path '*/apt/*')
test -z "$left" || { echo "left behind: $left" >&2; exit 1; }
