// Frames into a file by libavformat and an encoder: containers, Y4M, raw frames, pictures, checksums, nothing at all.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "ffmpeg_handles.h"
#include "frame_converter.h"
#include "muxer_files.h"
#include "options.h"
#include "output_format.h"
#include "picture.h"

namespace vidproc::tool {

class FrameWriter {
 public:
  /// `stream` describes the frames to be written, which are of its format, and the sound beside them. Throws ToolError.
  FrameWriter(const OutputOptions& options, const OutputFormat& format, StreamInfo stream);

  void Write(const AVFrame& frame);
  /// A packet of one of the container's streams of sound.
  void WriteSound(AVPacket& sound);
  /// Writes what is still held back and closes the files; whatever can go wrong has gone wrong by then.
  void Finish();
  /// Gives the finished files their names.
  void Commit() { files.Commit(); }

 private:
  struct Sound {
    int index;  ///< of the output's stream
    AVRational timeBase;
  };

  void Check(int result) const;
  void OpenCodec(const OutputOptions& options, const AVCodec& codec);
  void AddSound();
  FramePtr ForCodec(const AVFrame& frame);
  void Drain();
  void NoteVaryingRate() const;

  StreamInfo info;
  std::string name;
  AVPixelFormat pixelFormat;
  std::optional<FrameConverter> converter;
  MuxerFiles files;
  FormatPtr muxer;
  CodecPtr encoder;
  PacketPtr packet;
  AVStream* video = nullptr;
  std::map<int, Sound> sounds;  ///< by the container's stream
  std::int64_t frames = 0;
  double worstDelay = 0;  ///< of a time stamp against a constant rate, in frames
  double lastSecond = 0;  ///< end of the last frame by its time stamp
};

}  // namespace vidproc::tool
