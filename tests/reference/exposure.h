// The auto-exposure service, written plainly from its rules.
#pragma once

#include <cstdint>
#include <vector>

namespace reference {

/// 16 x 16 samples of luma against those of the reference frame; 65536 is 1.
struct BlockComparison {
  std::int32_t correlation;
  std::uint32_t meanRatio;
  bool isFlat;

  bool Matches() const;
};
/// Both are packed 2vuy with rows `pitch` bytes apart.
BlockComparison CompareBlocks(const std::uint8_t* now, const std::uint8_t* before, int pitch);

struct ExposureState {
  int frameCount = 0;
  int settling = 1;
  int candidateLevel = 100, currentLevel = 100;
  int settledLevel = 0;
  int stableFrames = 0, driftFrames = 0, sceneChangeFrames = 0;

  bool operator==(const ExposureState&) const = default;
};

class ExposureWatcher {
 public:
  ExposureWatcher(int width, int height) : width(width), height(height) {}

  /// One packed 2vuy frame; 1 a drift was confirmed, 0 the brightness settled, -1 otherwise.
  int Watch(const std::uint8_t* frame);
  const ExposureState& State() const { return state; }

 private:
  struct Measure {
    int matchingBlocks;
    int brightness;
  };

  Measure MeasureFrame(const std::uint8_t* frame) const;
  int Settle(int brightness);
  int WatchDrift(int brightness, const std::uint8_t* frame);
  void CountSceneChange(int matchingBlocks, const std::uint8_t* frame);
  void Remember(const std::uint8_t* frame);

  int width;
  int height;
  ExposureState state;
  std::vector<std::uint8_t> reference;
};

}  // namespace reference
