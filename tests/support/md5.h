// MD5 as md5sum prints it: sums that other programs can make too. Written out because the tests of results build where
// no library but the standard's is at hand.
#pragma once

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

namespace testing_support {

class Md5 {
 public:
  void Add(const std::uint8_t* bytes, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) AddByte(bytes[i]);
  }

  /// Of all bytes so far; more may follow. 32 hexadecimal digits.
  std::string Sum() const {
    Md5 padded = *this;
    padded.AddByte(0x80);
    while (padded.length % kBlockBytes != kBlockBytes - 8) padded.AddByte(0);
    for (int shift = 0; shift < 64; shift += 8) padded.AddByte(static_cast<std::uint8_t>(8 * length >> shift));
    std::string text;
    for (const std::uint32_t word : padded.state) {
      for (const int shift : {4, 0, 12, 8, 20, 16, 28, 24}) text += "0123456789abcdef"[word >> shift & 15];
    }
    return text;
  }

 private:
  static constexpr std::size_t kBlockBytes = 64;

  void AddByte(std::uint8_t byte) {
    block[length++ % kBlockBytes] = byte;
    if (length % kBlockBytes == 0) AddBlock();
  }

  std::uint32_t Word(std::size_t index) const {
    const std::uint8_t* const bytes = &block[4 * index];
    return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 | std::uint32_t{bytes[3]} << 24;
  }

  void AddBlock() {
    static constexpr int kTurns[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    static constexpr std::size_t kSteps[4] = {1, 5, 3, 7}, kStarts[4] = {0, 1, 5, 0};
    static const std::array<std::uint32_t, 64> kSines = Sines();
    auto [a, b, c, d] = state;
    for (std::size_t i = 0; i < kSines.size(); ++i) {
      const std::size_t round = i / 16;
      const std::uint32_t mixed = round == 0   ? (b & c) | (~b & d)
                                  : round == 1 ? (d & b) | (~d & c)
                                  : round == 2 ? b ^ c ^ d
                                               : c ^ (b | ~d);
      const std::uint32_t sum = a + mixed + kSines[i] + Word((kSteps[round] * i + kStarts[round]) % 16);
      a = d;
      d = c;
      c = b;
      const int turns = kTurns[round][i % 4];
      b += sum << turns | sum >> (32 - turns);
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
  }

  static std::array<std::uint32_t, 64> Sines() {
    std::array<std::uint32_t, 64> sines;
    for (std::size_t i = 0; i < sines.size(); ++i) {
      sines[i] = static_cast<std::uint32_t>(std::abs(std::sin(static_cast<double>(i + 1))) * 4294967296.0);
    }
    return sines;
  }

  std::array<std::uint32_t, 4> state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  std::array<std::uint8_t, kBlockBytes> block = {};
  std::uint64_t length = 0;
};

}  // namespace testing_support
