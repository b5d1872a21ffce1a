// Debug listings of filter banks; hosts compare and parse them, so every space counts.
#include "frame/bank_listing.h"

#include <cstdio>

namespace vidproc {
namespace {

void ListTaps(const std::int16_t* coefficients, int taps) {
  for (int tap = 0; tap < taps; ++tap) std::printf("%5d", coefficients[tap]);
}

template <int kRow>
void ListPhases(const std::int16_t (&bank)[16][kRow], int taps) {
  for (int phase = 0; phase < 16; ++phase) {
    int total = 0;
    for (int tap = 0; tap < taps; ++tap) total += bank[phase][tap];
    std::printf("%3d:", phase);
    ListTaps(bank[phase], taps);
    std::printf("\t total %d \n", total);
  }
}

// kept: 8 and 4 taps even where the banks hold 16 and 8.
void ListScalerBanks(const VideoProcessor& p, const char* owner) {
  std::printf("%sHorizontal filter: up %d down %d\n", owner, p.horizontalUp, p.horizontalDown);
  ListPhases(p.horizontalFilter, 8);
  std::printf("\n%sVertical filter: up %d down %d\n", owner, p.verticalUp, p.verticalDown);
  ListPhases(p.verticalFilter, 4);
  std::printf("\n");
}

}  // namespace

void ListPreProcBanks(const VideoProcessor& processor) { ListScalerBanks(processor, "PreProc "); }

void List16TapBanks(const VideoProcessor& processor) {
  std::printf("PreProc 16 tap Horizontal filter\n");
  ListTaps(processor.horizontalFilter[0], 16);
  std::printf("\n\nPreProc 8 tap Vertical filter\n");
  ListTaps(processor.verticalFilter[0], 8);
  std::printf("\n\n");
}

void ListPostProcBanks(const VideoProcessor& processor) { ListScalerBanks(processor, ""); }

void ListDeblockBanks(const VideoProcessor& processor) {
  std::printf("Deblock Horizontal filter\n");
  ListPhases(processor.deblockHorizontalFilter, 8);
  std::printf("\nDeblock Vertical filter\n");
  ListPhases(processor.deblockVerticalFilter, 8);
  std::printf("\n");
}

}  // namespace vidproc
