// The record of one exposure watcher, behind the handle of VidProcAdjustAutoExposureInit. Everything that it owns comes
// from malloc, about five bytes a pixel. Frames and blocks are not touched before the first frame.
#pragma once

#include <cstdint>

#include "kernels/block_statistics.h"

namespace vidproc {

/// 16.16 fixed point: 65536 is 1. The tables have an entry for each whole block of 16 x 16 pixels: [by][bx] for the one
/// at row 16 * by and column 16 * bx.
struct AutoExposureState {
  std::int32_t frameCount = 0;
  std::int32_t settling = 1;                  ///< 1 waiting for the brightness to settle, 0 watching for drift
  std::int32_t candidateLevel = 0;            ///< brightness against which settling is measured
  std::int32_t currentLevel = 0;              ///< brightness of the last measured frame
  std::int32_t stableFrames = 0;              ///< consecutive settling frames near candidateLevel
  std::int32_t driftFrames = 0;               ///< frames far from settledLevel, less those near it
  std::uint8_t* referenceFrame = nullptr;     ///< kept: written, never read
  std::uint8_t* spareFrame = nullptr;         ///< kept: allocated, never used
  std::int32_t settledLevel = 0;              ///< sum of the brightness while settling, then its mean
  std::int32_t** blockCorrelation = nullptr;  ///< of frame and reference
  std::uint32_t** blockMeanRatio = nullptr;   ///< reference to frame
  std::int32_t** blockFlat = nullptr;         ///< 1 if the block has little texture in both
  std::int32_t unusedWord = 0;                ///< kept: always 0
  std::int32_t sceneChangeFrames = 0;         ///< frames in which few blocks match, less the others
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t initParam = 0;  ///< kept: stored, never read
  /// Of the reference frame's whole blocks, row by row: their luma, each block's in one piece, and its figures.
  std::uint8_t* referenceLuma = nullptr;
  ReferenceBlock* referenceBlocks = nullptr;
};

/// Forgets all frames: the next one is the first, and warm-up begins anew.
void RestartExposure(AutoExposureState& state);

}  // namespace vidproc
