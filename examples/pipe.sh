#!/usr/bin/env bash
# Cleans a clip between two runs of ffmpeg, frame by frame and without a file in between: pipe.sh CLIP RESULT
# VIDPROC names the tool where it is not on the path.
set -euo pipefail
[ $# -eq 2 ] || { echo "usage: $0 CLIP RESULT" >&2; exit 2; }
ffmpeg -v error -i "$1" -map 0:v:0 -pix_fmt yuv420p -f yuv4mpegpipe - |
  "${VIDPROC:-vidproc}" pre - --preset webcam -o - |
  ffmpeg -v error -y -f yuv4mpegpipe -i - -c:v libx264 -crf 23 "$2"
