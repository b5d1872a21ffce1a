#include "reference/filter_design.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace reference {
namespace {

constexpr double kPi = 3.1415926;
constexpr double kNoLimit = 1e9;

/// Element 8 * taps is the centre; those before 1 are not used.
std::vector<double> SamplePrototype(const ResamplingDesign& design) {
  const double width = 16 + design.softening, lobes = design.lobes, centre = 8 * design.taps - 1;
  std::vector<double> prototype(static_cast<std::size_t>(16 * design.taps));
  for (std::size_t element = 1; element < prototype.size(); ++element) {
    const double i = static_cast<double>(element) - 1, d = i - centre, u = kPi * d, v = u / width;
    switch (design.kind) {
      case 0:
        prototype[element] = (std::sin(v) / u * width * lobes) * (std::sin(v / lobes) / u * width);
        break;
      case 1:
        prototype[element] = std::sin(v) / u * width * (std::cos(i * kPi / centre) * -0.46 + 0.54);
        break;
      default:
        prototype[element] = std::exp(-(d * d / ((design.softening == 0 ? 2 : 8) * width)));
        break;
    }
  }
  prototype[prototype.size() / 2] = 1;
  return prototype;
}

FilterBank ReadPhases(const std::vector<double>& prototype, int taps, int precisionBits, double peakLimit) {
  const int total = 1 << precisionBits;
  const auto used = static_cast<std::size_t>(taps), centre = used / 2 - 1;
  FilterBank bank = {};
  for (std::size_t phase = 0; phase < 16; ++phase) {
    const std::size_t read = phase == 0 ? used - 1 : used;
    auto& row = bank[phase];
    double sum = 0;
    for (std::size_t t = 0; t < read; ++t) sum += prototype[16 * (t + 1) - phase];
    for (std::size_t t = 0; t < read; ++t) {
      const double scaled = total * prototype[16 * (t + 1) - phase] / sum;
      row[t] = std::isnan(scaled) ? 0 : static_cast<int>(scaled + 0.5);
    }
    const int peak = *std::max_element(row.begin(), row.end());
    const bool limited = phase != 0 && peak > peakLimit;
    if (limited) {
      for (int& c : row) c = static_cast<int>(c * (peakLimit / peak));
    }
    const int residue = total - std::accumulate(row.begin(), row.end(), 0);
    if (phase == 0) {
      row[centre] += residue;
    } else if (limited || phase == 8) {
      row[centre] += residue / 2;
      row[centre + 1] += residue / 2;
    } else {
      row[phase < 8 ? used - 1 : 0] += residue;
    }
  }
  return bank;
}

}  // namespace

FilterBank MakeResamplingBank(const ResamplingDesign& design) {
  return ReadPhases(SamplePrototype(design), design.taps, design.precisionBits, 100);
}

FilterBank MakeDeblockingBank(int level, int taps, int precisionBits) {
  std::vector<double> prototype(static_cast<std::size_t>(16 * taps));
  for (int j = 1; j < 16 * taps; ++j) {
    const double d = j - 8 * taps;
    prototype[static_cast<std::size_t>(j)] = j == 8 * taps ? 1 : std::exp(-(d * d / (level * level)));
  }
  return ReadPhases(prototype, taps, precisionBits, kNoLimit);
}

FilterBank Enhance(const FilterBank& bank, const std::array<int, 3>& columnSums, int taps, int total) {
  FilterBank enhanced = {};
  for (std::size_t phase = 0; phase < 16; ++phase) {
    auto& row = enhanced[phase];
    int oldSum = 0, newSum = 0;
    for (int t = 0; t < taps; ++t) {
      int sum = 8;
      for (int j = 0; j < 3; ++j) {
        const auto neighbour = static_cast<std::size_t>(std::clamp(t + j - 1, 0, taps - 1));
        sum += columnSums[static_cast<std::size_t>(j)] * bank[phase][neighbour];
      }
      row[static_cast<std::size_t>(t)] = sum / 16;
      oldSum += sum / 16;
    }
    if (oldSum == 0) continue;
    for (std::size_t t = 0; t < static_cast<std::size_t>(taps); ++t) {
      row[t] = (oldSum / 2 + row[t] * total) / oldSum;
      newSum += row[t];
    }
    int& largest = *std::max_element(row.begin(), row.begin() + taps);
    (largest > 0 ? largest : row[0]) += total - newSum;
  }
  return enhanced;
}

FilterBank MakeScalerBank(const ResamplingDesign& design, int strength, int enhancedPhases) {
  FilterBank bank = MakeResamplingBank(design);
  const FilterBank enhanced =
      Enhance(bank, {-strength, 2 * strength + 16, -strength}, design.taps, 1 << design.precisionBits);
  std::copy_n(enhanced.begin(), enhancedPhases, bank.begin());
  return bank;
}

}  // namespace reference
