// filters: the resampling banks for a change of size, as numbers and as curves.
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "file_io.h"
#include "image.h"
#include "plot.h"
#include "processor_handle.h"

namespace vidproc::tool {
namespace {

constexpr int kPhases = 16;

struct Bank {
  std::string direction;
  const std::int16_t (&phases)[16][16];
  int taps;
  int up;
  int down;
  std::array<bool, kPhases> used{};

  /// The phases that output samples fall on.
  void MarkUsed(int samples) {
    for (std::int64_t i = 0; i < samples; ++i) {
      const std::int64_t position = i * down;
      const std::int64_t index = position / up;
      used[static_cast<std::size_t>(static_cast<double>(position * 16) / up - static_cast<double>(index * 16))] = true;
    }
  }
  bool Used(int phase) const { return used[static_cast<std::size_t>(phase)]; }
  int Sum(int phase) const {
    int sum = 0;
    for (int tap = 0; tap < taps; ++tap) sum += phases[phase][tap];
    return sum;
  }
  double Weight(int phase, int tap) const { return static_cast<double>(phases[phase][tap]) / std::max(1, Sum(phase)); }
};

void PrintBank(const Bank& bank) {
  std::printf("%s: up %d, down %d, %d taps\n", bank.direction.c_str(), bank.up, bank.down, bank.taps);
  for (int phase = 0; phase < kPhases; ++phase) {
    std::printf("%c%3d:", bank.Used(phase) ? '*' : ' ', phase);
    for (int tap = 0; tap < bank.taps; ++tap) std::printf(" %4d", bank.phases[phase][tap]);
    std::printf("  total %d\n", bank.Sum(phase));
  }
}

double Decibels(const Bank& bank, int phase, double cyclesPerSample) {
  std::complex<double> sum = 0;
  for (int tap = 0; tap < bank.taps; ++tap) {
    sum += bank.Weight(phase, tap) * std::polar(1.0, -2 * std::numbers::pi * cyclesPerSample * tap);
  }
  return 20 * std::log10(std::max(std::abs(sum), 1e-6));
}

void PlotTaps(cairo_t* context, const Bank& bank, drawing::Point corner, Size size) {
  double low = -0.1, high = 1;
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = 0; tap < bank.taps; ++tap) {
      const double value = bank.Weight(phase, tap);
      low = std::min(low, std::floor(value * 5) / 5);
      high = std::max(high, std::ceil(value * 5) / 5);
    }
  }
  const int reach = bank.taps / 2;
  const Axis x{static_cast<double>(-reach), static_cast<double>(reach), bank.taps > 8 ? 2.0 : 1.0, 0,
               "distance in source samples"};
  const Axis y{low, high, high - low > 2.5 ? 0.5 : 0.2, 1, "weight"};
  Chart chart(context, corner, size, bank.direction + " taps", x, y);
  for (const bool used : {false, true}) {
    for (int phase = 0; phase < kPhases; ++phase) {
      if (bank.Used(phase) != used) continue;
      for (int tap = 0; tap < bank.taps; ++tap) {
        const double at = tap - (reach - 1) - phase / 16.0;
        chart.Dot({at, bank.Weight(phase, tap)}, used ? 4 : 2, used ? RampColour(phase / 15.0) : kFaint);
      }
    }
  }
}

void PlotResponse(cairo_t* context, const Bank& bank, drawing::Point corner, Size size) {
  const Axis x{0, 0.5, 0.1, 1, "cycles per source sample"};
  const Axis y{-48, 12, 12, 0, "dB"};
  Chart chart(context, corner, size, bank.direction + " response", x, y);
  if (bank.up < bank.down) {
    chart.VerticalLine(0.5 * bank.up / bank.down, kGreen);
    chart.Label(0.5 * bank.up / bank.down, kGreen, "half the output rate");
  }
  for (const bool used : {false, true}) {
    for (int phase = 0; phase < kPhases; ++phase) {
      if (bank.Used(phase) != used) continue;
      std::vector<drawing::Point> curve;
      for (int i = 0; i <= 200; ++i) curve.push_back({i / 400.0, Decibels(bank, phase, i / 400.0)});
      chart.Curve(curve, used ? RampColour(phase / 15.0) : kFaint, used ? 2 : 1);
    }
  }
}

drawing::Canvas PlotBanks(const Bank& horizontal, const Bank& vertical, const std::string& title) {
  const Size chart{640, 400};
  constexpr int kTitle = 72;
  drawing::Canvas picture(2 * chart.width, kTitle + 2 * chart.height);
  cairo_t* context = picture.Context();
  drawing::SetColour(context, kPaper);
  cairo_paint(context);
  drawing::SetColour(context, kInk);
  drawing::SetFont(context, 22, true);
  drawing::Text(context, {24, 32}, title);
  drawing::SetFont(context, 14);
  drawing::Text(context, {24, 58}, "Phases in use from 0 (blue) to 15 (red); grey: not used at this ratio");
  double top = kTitle;
  for (const Bank* bank : {&horizontal, &vertical}) {
    PlotTaps(context, *bank, {0, top}, chart);
    PlotResponse(context, *bank, {0.0 + chart.width, top}, chart);
    top += chart.height;
  }
  return picture;
}

}  // namespace

void RunFilters(const Options& options) {
  const FiltersOptions& filters = options.filters;
  std::optional<OutputFile> plot;
  if (!options.plotPath.empty()) plot.emplace(options.plotPath);
  ProcessorHandle handle(filters.post ? PostProcCleanup : PreProcCleanup);
  SetUp(filters.post ? PostProcInit : PreProcInit, handle, filters.from, filters.to, options.scaler);
  if (options.pre.taps16) UseLongTaps(handle, options.scaler.enhance);
  const bool longTaps = options.pre.taps16;
  Bank horizontal{"Horizontal", handle->horizontalFilter, longTaps ? 16 : 8, handle->horizontalUp,
                  handle->horizontalDown};
  Bank vertical{"Vertical", handle->verticalFilter, longTaps ? 8 : 4, handle->verticalUp, handle->verticalDown};
  horizontal.MarkUsed(filters.to.width);
  vertical.MarkUsed(filters.to.height);
  const std::string title = std::string(filters.post ? "Post" : "Pre") + "-processor, " + ToString(filters.from) +
                            " to " + ToString(filters.to);
  std::printf("%s (* phase in use)\n", title.c_str());
  PrintBank(horizontal);
  PrintBank(vertical);
  FlushStandardOutput();
  if (!plot) return;
  WritePng(*plot, PlotBanks(horizontal, vertical, title));
  plot->Commit();
}

}  // namespace vidproc::tool
