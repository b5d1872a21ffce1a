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

quietly apt-get install -y --no-install-recommends ./gstreamer1.0-vidproc*.deb ./obs-vidproc*.deb \
  ./python3-vidproc*.deb gstreamer1.0-tools gstreamer1.0-plugins-base
gst-inspect-1.0 vidprocpre | grep -E 'Long-name|Version|License' | sed 's/^ */    /'
gst-launch-1.0 -q videotestsrc num-buffers=5 ! video/x-raw,width=320,height=180 ! vidprocpre ! \
  video/x-raw,width=160 ! filesink location=frames
test -s frames
filter=$(dpkg -L obs-vidproc | grep '/obs-plugins/obs-vidproc\.so$')
if ldd -r "$filter" | grep -E 'not found|undefined'; then exit 1; fi
python3 - <<'END'
import numpy, vidproc
frame = numpy.full(vidproc.frame_bytes("I420", 320, 180), 100, numpy.uint8)
with vidproc.Pre("I420", 320, 180, output_width=160, output_height=90) as pre:
    print("    vidproc", vidproc.__version__, "in Python:", pre.process(frame)[0])
END

quietly apt-get purge -y python3-vidproc obs-vidproc gstreamer1.0-vidproc vidproc-tools libvidproc-dev libvidproc1
left=$(find /usr /etc /var/lib -name '*vidproc*' ! -path '*/apt/*')
test -z "$left" || { echo "left behind: $left" >&2; exit 1; }
