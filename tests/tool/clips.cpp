#include "tool/clips.h"

#include <algorithm>
#include <stdexcept>

namespace testing_support {
namespace {

/// Big-endian.
std::string Number(std::uint64_t value, int bytes) {
  std::string text;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) text += static_cast<char>(value >> shift & 255);
  return text;
}

std::string Element(std::uint32_t id, const std::string& content) {
  const int idBytes = id > 0xffffff ? 4 : id > 0xffff ? 3 : id > 0xff ? 2 : 1;
  return Number(id, idBytes) + '\x01' + Number(content.size(), 7) + content;
}

std::string Track(char number, char type, const std::string& codec, const std::string& settings) {
  return Element(0xae, Element(0xd7, {number}) + Element(0x73c5, {number}) + Element(0x83, {type}) +
                           Element(0x86, codec) + settings);
}

std::string Block(int track, std::int64_t millisecond, const std::string& bytes) {
  return Element(0xa3, Number(0x80U | static_cast<unsigned>(track), 1) +
                           Number(static_cast<std::uint64_t>(millisecond), 2) + Number(0x80, 1) + bytes);
}

}  // namespace

std::string MatroskaClip(const std::vector<std::int64_t>& milliseconds, const std::vector<std::string>& frames,
                         int soundPackets, const std::string& soundCodec) {
  const std::string size = Element(0xb0, Number(64, 1)) + Element(0xba, Number(48, 1));
  const std::string rate = Element(0xb5, Number(0x45fa0000, 4));  // 8000 as a float
  std::string tracks = Track(1, 1, "V_UNCOMPRESSED", Element(0xe0, size + Element(0x2eb524, "I420")));
  if (soundPackets > 0) tracks += Track(2, 2, soundCodec, Element(0xe1, rate + Element(0x6264, Number(16, 1))));
  std::string cluster = Element(0xe7, Number(0, 1));
  for (std::size_t i = 0; i < milliseconds.size(); ++i) {
    cluster += Block(1, milliseconds[i], frames[i % frames.size()]);
  }
  for (int i = 0; i < soundPackets; ++i) cluster += Block(2, 20 * i, std::string(320, static_cast<char>(i)));
  return Element(0x1a45dfa3, Element(0x4282, "matroska")) +
         Element(0x18538067, Element(0x1549a966, Element(0x2ad7b1, Number(1000000, 4))) + Element(0x1654ae6b, tracks) +
                                 Element(0x1f43b675, cluster));
}

ClipFacts Examine(const std::string& path) {
  ClipFacts facts;
  AVFormatContext* context = nullptr;
  if (avformat_open_input(&context, path.c_str(), nullptr, nullptr) < 0) throw std::runtime_error(path);
  facts.file.reset(context);
  avformat_find_stream_info(context, nullptr);
  const int index = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
  if (index < 0) throw std::runtime_error(path + ": no video");
  facts.video = context->streams[index];
  const vidproc::tool::PacketPtr packet(av_packet_alloc());
  while (av_read_frame(context, packet.get()) >= 0) {
    if (packet->stream_index == index) {
      facts.milliseconds.push_back(av_rescale_q(packet->pts, facts.video->time_base, {1, 1000}));
    } else {
      facts.sound.append(reinterpret_cast<const char*>(packet->data), static_cast<std::size_t>(packet->size));
    }
    av_packet_unref(packet.get());
  }
  std::sort(facts.milliseconds.begin(), facts.milliseconds.end());
  return facts;
}

}  // namespace testing_support
