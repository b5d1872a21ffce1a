// filters: the resampling banks for a change of size, as numbers and as curves.
#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdio>
#include <numbers>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "commands.h"
#include "file_io.h"
#include "pipeline/axis_pass.h"
#include "plot.h"

namespace vidproc::tool {
namespace {

using filters::kPhases;

/// One pass along one axis of luma.
struct Bank {
  std::string name;
  const AxisPass& pass;
  int up;
  int down;
  std::array<bool, kPhases> used{};

  Bank(std::string name, const AxisPass& pass, int up, int down)
      : name(std::move(name)), pass(pass), up(up), down(down) {
    for (const PhasePosition& position : pass.positions) used[static_cast<std::size_t>(position.phase)] = true;
  }
  bool Used(int phase) const { return used[static_cast<std::size_t>(phase)]; }
  int Tap(int phase, int tap) const { return pass.bank[phase][tap]; }
  int Sum(int phase) const { return std::accumulate(pass.bank[phase], pass.bank[phase] + pass.taps, 0); }
  double Weight(int phase, int tap) const { return static_cast<double>(Tap(phase, tap)) / std::max(1, Sum(phase)); }
};

void PrintBank(const Bank& bank) {
  std::printf("%s: up %d, down %d, %d taps\n", bank.name.c_str(), bank.up, bank.down, bank.pass.taps);
  for (int phase = 0; phase < kPhases; ++phase) {
    std::printf("%c%3d:", bank.Used(phase) ? '*' : ' ', phase);
    for (int tap = 0; tap < bank.pass.taps; ++tap) std::printf(" %4d", bank.Tap(phase, tap));
    std::printf("  total %d\n", bank.Sum(phase));
  }
}

double Decibels(const Bank& bank, int phase, double cyclesPerSample) {
  std::complex<double> sum = 0;
  for (int tap = 0; tap < bank.pass.taps; ++tap) {
    sum += bank.Weight(phase, tap) * std::polar(1.0, -2 * std::numbers::pi * cyclesPerSample * tap);
  }
  return 20 * std::log10(std::max(std::abs(sum), 1e-6));
}

void PlotTaps(cairo_t* context, const Bank& bank, drawing::Point corner, Size size) {
  double low = -0.1, high = 1;
  for (int phase = 0; phase < kPhases; ++phase) {
    for (int tap = 0; tap < bank.pass.taps; ++tap) {
      const double value = bank.Weight(phase, tap);
      low = std::min(low, std::floor(value * 5) / 5);
      high = std::max(high, std::ceil(value * 5) / 5);
    }
  }
  const int reach = bank.pass.taps / 2;
  const Axis x{static_cast<double>(-reach), static_cast<double>(reach), bank.pass.taps > 8 ? 2.0 : 1.0, 0,
               "distance in source samples"};
  const Axis y{low, high, high - low > 2.5 ? 0.5 : 0.2, 1, "weight"};
  Chart chart(context, corner, size, bank.name + " taps", x, y);
  for (const bool used : {false, true}) {
    for (int phase = 0; phase < kPhases; ++phase) {
      if (bank.Used(phase) != used) continue;
      for (int tap = 0; tap < bank.pass.taps; ++tap) {
        const double at = tap - (reach - 1) - phase / 16.0;
        chart.Dot({at, bank.Weight(phase, tap)}, used ? 4 : 2, used ? RampColour(phase / 15.0) : kFaint);
      }
    }
  }
}

void PlotResponse(cairo_t* context, const Bank& bank, drawing::Point corner, Size size) {
  const Axis x{0, 0.5, 0.1, 1, "cycles per source sample"};
  const Axis y{-48, 12, 12, 0, "dB"};
  Chart chart(context, corner, size, bank.name + " response", x, y);
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

drawing::Canvas PlotBanks(const std::vector<Bank>& banks, const std::string& title) {
  const Size chart{640, 400};
  constexpr int kTitle = 72;
  drawing::Canvas picture(2 * chart.width, kTitle + static_cast<int>(banks.size()) * chart.height);
  cairo_t* context = picture.Context();
  drawing::SetColour(context, kPaper);
  cairo_paint(context);
  drawing::SetColour(context, kInk);
  drawing::SetFont(context, 22, true);
  drawing::Text(context, {24, 32}, title);
  drawing::SetFont(context, 14);
  drawing::Text(context, {24, 58}, "Phases in use from 0 (blue) to 15 (red); grey: not used at this ratio");
  double top = kTitle;
  for (const Bank& bank : banks) {
    PlotTaps(context, bank, {0, top}, chart);
    PlotResponse(context, bank, {0.0 + chart.width, top}, chart);
    top += chart.height;
  }
  return picture;
}

ScalingSettings SettingsOf(const vidproc_pre_options& options) {
  return {static_cast<Alignment>(options.alignment),
          static_cast<ScalingFilter>(options.filter),
          options.taps,
          options.softening,
          options.lobes,
          options.sharpening};
}

/// The passes that luma takes along one axis.
std::vector<AxisPass> PlanAxis(const ScalingSettings& settings, int from, int to, int taps) {
  const AxisRequest axis{from, to, from, to, kLumaGrid, kLumaGrid, false, false, taps};
  std::vector<AxisPass> passes;
  const int last = HalvingsOf(settings, axis);
  for (int number = 0; number <= last; ++number) {
    AxisPass pass{};
    if (PlanAxisPass(settings, Role::kPreProcessor, axis, number, pass)) passes.push_back(std::move(pass));
  }
  return passes;
}

void AddBanks(const std::string& name, const std::vector<AxisPass>& passes, int from, int to,
              std::vector<Bank>& banks) {
  for (const AxisPass& pass : passes) {
    const int size = static_cast<int>(pass.positions.size());
    const bool isLast = size == to && &pass == &passes.back();
    const int divisor = std::gcd(from, to);
    banks.emplace_back(passes.size() > 1 ? name + (isLast ? " step" : " halving") : name, pass,
                       isLast ? to / divisor : 1, isLast ? from / divisor : 2);
    if (!isLast) from = size;
  }
}

}  // namespace

void RunFilters(const Options& options) {
  std::optional<OutputFile> plot;
  if (!options.plotPath.empty()) plot.emplace(options.plotPath);
  const ScalingSettings settings = SettingsOf(options.pre);
  const std::vector<AxisPass> rows = PlanAxis(settings, options.from.width, options.to.width, settings.taps);
  const std::vector<AxisPass> columns = PlanAxis(settings, options.from.height, options.to.height, settings.taps / 2);
  std::vector<Bank> banks;
  AddBanks("Horizontal", rows, options.from.width, options.to.width, banks);
  AddBanks("Vertical", columns, options.from.height, options.to.height, banks);
  const std::string title = "Luma, " + ToString(options.from) + " to " + ToString(options.to);
  std::printf("%s (* phase in use)\n", title.c_str());
  for (const Bank& bank : banks) PrintBank(bank);
  if (banks.empty()) std::puts("no filter: samples stay as they are");
  FlushStandardOutput();
  if (!plot) return;
  plot->Write(drawing::Png(PlotBanks(banks, title)));
  plot->Commit();
}

}  // namespace vidproc::tool
