// libpostproc: its horizontal and vertical deblocking, with the quantiser it assumes when it is told none (1: it finds
// little to do) and with a coarse one.
extern "C" {
#include <libpostproc/postprocess.h>
}

#include <memory>

#include "contest.h"
#include "planar_frame.h"

namespace bench {
namespace {

void Enter(const char* contestant, const char* filters) {
  Contest contest = DeblockContest();
  contest.writes = false;  // it has frames of its own
  Enter(contest, contestant, [=]() -> Run {
    const Size size = contest.in;
    const std::shared_ptr<void> mode(pp_get_mode_by_name_and_quality(filters, PP_QUALITY_MAX), pp_free_mode);
    const std::shared_ptr<void> context(pp_get_context(size.width, size.height, PP_FORMAT_422 | PP_CPU_CAPS_AUTO),
                                        pp_free_context);
    const std::shared_ptr<AVFrame> in = MakePlanarFrame(contest.format, size, 0),
                                   out = MakePlanarFrame(contest.format, size, 0);
    if (mode == nullptr || context == nullptr || in == nullptr || out == nullptr) return {};
    return [=](const std::uint8_t*, std::uint8_t*) {
      const std::uint8_t* sources[3] = {in->data[0], in->data[1], in->data[2]};
      pp_postprocess(sources, in->linesize, out->data, out->linesize, size.width, size.height, nullptr, 0, mode.get(),
                     context.get(), 0);
    };
  });
}

const bool kEntered = [] {
  Enter("postproc-hb+vb", "hb/vb");
  Enter("postproc-hb+vb-coarse", "hb/vb/fq|16");
  return true;
}();

}  // namespace
}  // namespace bench
