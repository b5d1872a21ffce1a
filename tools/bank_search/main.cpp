// Searches the numbers of the automatic filter and prints docs/banks.md: bank_search [CLIP.y4m...]
// The search looks at every other frame; the table of results is measured on the frames in between.
#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <utility>

#include "filters/automatic_filter.h"
#include "filters/scaling_bank.h"
#include "measure.h"
#include "swscale.h"

namespace {

using namespace vidproc::filters;

constexpr Ratio kRatios[] = {{1, 2}, {2, 3}, {3, 4}, {1, 3}, {1, 4}};
constexpr TapSet kTapSets[] = {{4, 8}, {8, 16}};
constexpr int kFramesOfClip = 20;
constexpr int kBits = 7;

std::string Name(Ratio ratio) { return std::to_string(ratio.down) + ":" + std::to_string(ratio.up); }
std::string Name(TapSet taps) { return std::to_string(taps.vertical) + " + " + std::to_string(taps.horizontal); }

struct Variant {
  std::string name;
  AutomaticRule rule;
};

BankDesign ByRule(const AutomaticRule& rule) {
  return [rule](int up, int down, int taps, Bank& bank) {
    DesignShapeBank(AutomaticShape(rule, up, down, taps), 0, taps, kBits, bank);
  };
}

BankDesign ByFilter(ScalingKernel kernel) {
  return [kernel](int up, int down, int taps, Bank& bank) {
    DesignScalingBank({kernel, {}, 0}, up, down, taps, kBits, bank);
  };
}

Scaler ScaleBy(const BankDesign& design, TapSet taps, const BankDesign& halving) {
  return [=](const Picture& in, int width, int height) { return Resample(in, width, height, taps, design, halving); };
}

// Over the peer, for each content.
std::vector<double> Gains(const std::vector<Content>& contents, Ratio ratio, const Scaler& scaler) {
  std::vector<double> gains;
  gains.reserve(contents.size());
  for (const Content& content : contents) {
    gains.push_back(MeasurePsnr(content, ratio, scaler, scaler) - content.peerPsnr.at(Name(ratio)));
  }
  return gains;
}

// ---- The page ----

void PrintRow(const std::string& name, const std::vector<double>& gains) {
  std::printf("| %s |", name.c_str());
  for (const double gain : gains) std::printf(" %+.2f |", gain);
  std::printf("\n");
}

void PrintHead(const char* first, const std::vector<std::string>& columns) {
  std::printf("| %s |", first);
  for (const std::string& column : columns) std::printf(" %s |", column.c_str());
  std::printf("\n|---|");
  for (std::size_t i = 0; i < columns.size(); ++i) std::printf("---|");
  std::printf("\n");
}

std::vector<std::string> Names(const std::vector<Content>& contents) {
  std::vector<std::string> names;
  names.reserve(contents.size());
  for (const Content& content : contents) names.push_back(content.name);
  return names;
}

void PrintResults(const std::vector<Content>& contents) {
  std::printf("\n## The automatic filter\n\n");
  PrintHead("taps, ratio down and up again", Names(contents));
  for (const Ratio ratio : kRatios) {
    std::printf("| swscale bicubic, %s, dB |", Name(ratio).c_str());
    for (const Content& content : contents) std::printf(" %.2f |", content.peerPsnr.at(Name(ratio)));
    std::printf("\n");
    for (const TapSet taps : kTapSets) {
      const BankDesign automatic = ByFilter(ScalingKernel::kAutomatic);
      PrintRow(Name(taps) + ", " + Name(ratio), Gains(contents, ratio, ScaleBy(automatic, taps, automatic)));
    }
  }
}

void PrintNamedFilters(const std::vector<Content>& contents) {
  static constexpr std::pair<const char*, ScalingKernel> kNamed[] = {{"bilinear", ScalingKernel::kBilinear},
                                                                     {"Catmull-Rom", ScalingKernel::kCatmullRom},
                                                                     {"Mitchell", ScalingKernel::kMitchell},
                                                                     {"Lanczos", ScalingKernel::kLanczos},
                                                                     {"area", ScalingKernel::kArea}};
  std::printf("\n## The other filters, 2:1\n\n");
  PrintHead("filter, taps", Names(contents));
  for (const auto& [name, kernel] : kNamed) {
    for (const TapSet taps : kTapSets) {
      const Scaler scaler = ScaleBy(ByFilter(kernel), taps, ByFilter(ScalingKernel::kAutomatic));
      PrintRow(std::string(name) + ", " + Name(taps), Gains(contents, {1, 2}, scaler));
    }
  }
}

// ---- The search ----

std::vector<Variant> Variants(const char* name, double AutomaticRule::*field, std::initializer_list<double> values) {
  std::vector<Variant> variants;
  for (const double value : values) {
    Variant variant = {name, kAutomaticRule};
    variant.rule.*field = value;
    char text[32];
    std::snprintf(text, sizeof(text), " %.3g", value);
    variant.name += text;
    if (value == kAutomaticRule.*field) variant.name = "**" + variant.name + "**";
    variants.push_back(variant);
  }
  return variants;
}

void PrintSearch(const std::vector<Content>& contents, TapSet taps, const std::vector<Variant>& variants) {
  std::vector<std::string> columns;
  for (const Ratio ratio : kRatios) columns.push_back(Name(ratio));
  std::printf("\n");
  PrintHead((Name(taps) + " taps").c_str(), columns);
  for (const Variant& variant : variants) {
    std::printf("| %s |", variant.name.c_str());
    const BankDesign design = ByRule(variant.rule);
    for (const Ratio ratio : kRatios) {
      const std::vector<double> gains = Gains(contents, ratio, ScaleBy(design, taps, design));
      double sum = 0;
      for (const double gain : gains) sum += gain;
      std::printf(" %+.2f (%+.2f) |", sum / static_cast<double>(gains.size()), *std::ranges::min_element(gains));
    }
    std::printf("\n");
  }
}

void PrintSearches(const std::vector<Content>& contents) {
  std::printf(R"(
## The search

One number of the rule at a time, the others as chosen; the chosen value is bold. Each cell is the mean gain of all
contents, and in brackets the least of them.
)");
  const std::vector<Variant> ofCubic[] = {
      Variants("cubic's C", &AutomaticRule::cubicC, {0.4, 0.5, 0.6, 0.75, 1}),
      Variants("cubic's stretch", &AutomaticRule::cubicStretch, {0.6, 0.65, 0.7, 0.75, 0.8, 0.85, 0.9, 1})};
  const std::vector<Variant> ofLanczos[] = {
      Variants("lobes", &AutomaticRule::lobes, {2, 3, 4}),
      Variants("Lanczos stretch", &AutomaticRule::lanczosStretch, {0.7, 0.75, 0.8, 0.85, 0.875, 0.9, 0.95, 1})};
  for (const std::vector<Variant>& variants : ofCubic) PrintSearch(contents, {4, 8}, variants);
  for (const TapSet taps : kTapSets) {
    for (const std::vector<Variant>& variants : ofLanczos) PrintSearch(contents, taps, variants);
  }
}

void PrintIntroduction() {
  std::printf(R"(# Scaling banks

Written by `scripts/search_banks`. Each picture is scaled down and by the inverse ratio up again with 7-bit banks,
without a codec; the figures are luma PSNR in dB, tables without a unit its gain over libswscale's bicubic scaler both
ways (accurate_rnd). A vertical axis of 4 taps that shrinks beyond 2:1 is halved first, as the scaler does: by the mean
of two rows, which is fast and at 3:1 and 4:1 leaves text and the zone plate to the 8 + 16 taps.

The automatic filter is one rule (src/filters/automatic_filter.cpp). Axes of 4 taps take a cubic with B = 0 and C = %g,
on downscales stretched by %g times the ratio; axes of 8 and 16 taps take a Lanczos kernel of %g lobes, stretched by
%g times the ratio, at most as far as its first side lobe stays within the taps. No kernel is stretched on upscales.
)",
              kAutomaticRule.cubicC, kAutomaticRule.cubicStretch, kAutomaticRule.lobes, kAutomaticRule.lanczosStretch);
}

// Every other picture of a clip; drawn pictures as they are.
std::vector<Content> Half(const std::vector<Content>& contents, std::size_t first) {
  std::vector<Content> half;
  for (const Content& content : contents) {
    Content& part = half.emplace_back(Content{content.name, {}, {}});
    const bool isDrawn = content.pictures.size() == 1;
    for (std::size_t i = isDrawn ? 0 : first; i < content.pictures.size(); i += 2) {
      part.pictures.push_back(content.pictures[i]);
    }
    for (const Ratio ratio : kRatios) {
      part.peerPsnr[Name(ratio)] = MeasurePsnr(part, ratio, ScaleBySwscale, ScaleBySwscale);
    }
  }
  return half;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    std::vector<Content> contents;
    for (int i = 1; i < argc; ++i) {
      contents.push_back({std::filesystem::path(argv[i]).stem().string(), ReadClip(argv[i], kFramesOfClip), {}});
    }
    contents.push_back({"zone plate", {DrawZonePlate(480)}, {}});
    contents.push_back({"discs", {DrawDiscs(480)}, {}});
    const std::vector<Content> searched = Half(contents, 0);
    const std::vector<Content> kept = Half(contents, 1);
    PrintIntroduction();
    PrintResults(kept);
    PrintNamedFilters(kept);
    PrintSearches(searched);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bank_search: %s\n", error.what());
    return 1;
  }
}
