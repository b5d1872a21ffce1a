#!/usr/bin/env bash
# Runs virtual_camera.sh in a PipeWire session of its own, a clip in the camera's place: the frames that another program
# reads have the bytes that the tool, $VIDPROC, makes of the clip. Ends with 77 where PipeWire or the plugin is missing.
set -euo pipefail
if [[ ${1-} != session ]]; then
  for program in dbus-run-session pipewire pw-cli wireplumber gst-launch-1.0; do
    command -v "$program" >/dev/null || { echo "no $program here"; exit 77; }
  done
  for element in pipewiresink vidprocpre; do gst-inspect-1.0 "$element" >/dev/null || exit 77; done
  exec dbus-run-session -- "$0" session
fi

work=$(mktemp -d)
trap 'kill $(jobs -p); wait || true; rm -rf "$work"' EXIT
export XDG_RUNTIME_DIR=$work
"$VIDPROC" post -q --synthetic --synthetic-size 320x180 --frames 600 --crf 0 --encoder-preset ultrafast \
  -o "$work/clip.mkv"
"$VIDPROC" pre -q "$work/clip.mkv" --size 160x90 --output-csp yuyv -o /dev/null --framemd5 "$work/expected"

pipewire 2>"$work/log" &
wireplumber 2>>"$work/log" &
"$(dirname "$0")/../virtual_camera.sh" pipewire 160 filesrc location="$work/clip.mkv" 2>>"$work/log" &
for ((i = 0; i < 100; ++i)); do
  [[ $(pw-cli list-objects Node 2>/dev/null) != *'node.name = "vidproc"'* ]] || break
  sleep 0.1
done
timeout 60 gst-launch-1.0 -q pipewiresrc target-object=vidproc num-buffers=10 always-copy=true ! \
  video/x-raw,format=YUY2,width=160,height=90 ! filesink location="$work/seen" || { cat "$work/log"; exit 1; }

split -b $((160 * 90 * 2)) "$work/seen" "$work/frame."
md5sum "$work"/frame.* | cut -c -32 | sort -u >"$work/sums"
(($(wc -l <"$work/sums") > 1)) || { echo "the picture stands still"; exit 1; }
grep -vf <(grep -o '[^ ]*$' "$work/expected") "$work/sums" && { echo "frames that the tool does not make"; exit 1; }
echo "$(wc -l <"$work/sums") frames of the virtual camera are those of the tool"
