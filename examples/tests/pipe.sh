#!/usr/bin/env bash
# Runs pipe.sh over a noisy clip: without its noise it takes fewer bytes than encoded as it is, and is nearer to the
# clip that never had any. VIDPROC is the tool. Ends with 77 where ffmpeg is missing.
set -euo pipefail
command -v ffmpeg >/dev/null || { echo "no ffmpeg here"; exit 77; }
examples=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
Scene() { "$VIDPROC" post -q --synthetic --synthetic-size 320x180 --frames 30 "$@"; }
Scene -o noisy.y4m
Scene --synthetic-noise 0 -o clean.y4m
"$examples/pipe.sh" noisy.y4m piped.mp4
ffmpeg -v error -i noisy.y4m -c:v libx264 -crf 23 plain.mp4

# Bytes CLIP and Likeness CLIP: of luma, in hundredths of a dB, of all frames.
Bytes() { wc -c <"$1"; }
Likeness() { ffmpeg -i "$1" -i clean.y4m -lavfi psnr -f null - 2>&1 | sed -n 's/.*PSNR y:\([0-9]*\)\.\(..\).*/\1\2/p'; }
frames=$("$VIDPROC" post -q piped.mp4 -o /dev/null --framemd5 - | grep -c '^0,')
echo "$frames frames, $(Bytes plain.mp4) bytes as they are, $(Bytes piped.mp4) piped," \
  "luma $(Likeness plain.mp4) and $(Likeness piped.mp4)"
((frames == 30 && $(Bytes piped.mp4) * 4 < $(Bytes plain.mp4) * 3 && $(Likeness piped.mp4) > $(Likeness plain.mp4)))
