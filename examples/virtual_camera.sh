#!/usr/bin/env bash
# Shows a camera, cleaned, as another one that every program can open: virtual_camera.sh [CAMERA [LOOPBACK]]
# Needs the kernel module of V4L2 loopback (sudo modprobe v4l2loopback video_nr=10 exclusive_caps=1) and the GStreamer
# plugin (GST_PLUGIN_PATH=build/plugins/gstreamer). Not among the tests, which have neither the module nor a camera.
set -euo pipefail
camera=${1:-/dev/video0} loopback=${2:-/dev/video10}
for device in "$camera" "$loopback"; do
  [[ -c $device ]] || { echo "error: there is no camera $device" >&2; exit 1; }
done
exec gst-launch-1.0 v4l2src device="$camera" ! decodebin ! videoconvert ! vidprocpre preset=webcam ! \
  video/x-raw,format=YUY2 ! v4l2sink device="$loopback"
