// The checked interface.
#include <memory>

#include "contest.h"
#include "vidproc/vidproc.hpp"

namespace bench {
namespace {

vidproc_frame_info Info(Format format, Size size) {
  const vidproc_format formats[] = {VIDPROC_FORMAT_UYVY, VIDPROC_FORMAT_NV12, VIDPROC_FORMAT_I420};
  return {formats[static_cast<int>(format)], size.width, size.height, VIDPROC_SITING_LEFT};
}

/// Pre or Post with its options.
template <typename Processor, typename Options>
void EnterInterface(const Contest& contest, Options options) {
  options.input = Info(contest.format, contest.in);
  options.output = Info(contest.format, contest.out);
  EnterLevels(contest, [=] {
    const auto processor = std::make_shared<Processor>(options);
    return [=](const std::uint8_t* source, std::uint8_t* destination) {
      processor->Process(vidproc::InputOver(options.input, {source, FrameBytes(contest.format, contest.in)}),
                         vidproc::OutputOver(options.output, {destination, FrameBytes(contest.format, contest.out)}));
    };
  });
}

vidproc::PreOptions Denoiser(int taps) {
  vidproc::PreOptions options;
  options.denoise_edge = 1;
  options.denoise_taps = taps;
  options.denoise_softening = taps == 16 ? 100 : 10;
  options.temporal_strength = 100;
  return options;
}

const bool kEntered = [] {
  for (const int taps : {8, 16}) {
    for (const Contest& contest : AutomaticContests(taps)) {
      vidproc::PreOptions options;
      options.taps = taps;
      EnterInterface<vidproc::Pre>(contest, options);
    }
    EnterInterface<vidproc::Pre>(DenoiseContest(taps), Denoiser(taps));
  }
  EnterInterface<vidproc::Pre>(AutomaticNv12Contest(), vidproc::PreOptions());
  EnterInterface<vidproc::Pre>(DenoiseAndScaleContest(), Denoiser(8));
  EnterInterface<vidproc::Post>(PostAutomaticContest(), vidproc::PostOptions());
  return true;
}();

}  // namespace
}  // namespace bench
