#!/usr/bin/env bash
# Shows a camera, cleaned and scaled, as another one: virtual_camera.sh [VIRTUAL [WIDTH [CAMERA...]]]
#   VIRTUAL  "pipewire" (default), which programs of a PipeWire session see as vidproc, or a device of V4L2 loopback, which
#            all programs see: sudo modprobe v4l2loopback video_nr=10 exclusive_caps=1 makes /dev/video10
#   WIDTH    columns of the virtual camera (default 1280); its rows follow the camera's shape
#   CAMERA   words of gst-launch-1.0 that name the camera (default: v4l2src)
# Needs the plugin for GStreamer (GST_PLUGIN_PATH=build/plugins/gstreamer), and for PipeWire gstreamer1.0-pipewire.
set -euo pipefail
virtual=${1:-pipewire} width=${2:-1280} camera=("${@:3}")
if [[ $virtual == pipewire ]]; then
  # A program that stops reading keeps buffers: none may be the pre-processor's own.
  sink=(identity drop-allocation=true ! pipewiresink mode=provide
    stream-properties="properties,media.class=Video/Source,node.name=vidproc,node.description=vidproc")
else
  [[ -c $virtual ]] || { echo "error: there is no camera $virtual" >&2; exit 1; }
  sink=(v4l2sink device="$virtual")
fi
exec gst-launch-1.0 -q "${camera[@]:-v4l2src}" ! decodebin ! videoconvert ! vidprocpre preset=webcam ! \
  video/x-raw,format=YUY2,width="$width" ! "${sink[@]}"
