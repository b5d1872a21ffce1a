#include "pipeline/pipeline.h"

namespace vidproc {

struct Pipeline::Stages {};

Pipeline::Pipeline(const PipelineSettings& /*settings*/, const Pipeline* /*replaced*/)
    : stages(std::make_unique<Stages>()) {}
Pipeline::~Pipeline() = default;
void Pipeline::TakeHistory(Pipeline& /*replaced*/) noexcept {}
void Pipeline::ForgetHistory() noexcept {}
void Pipeline::Process(const InputPlanes& /*input*/, const OutputPlanes& /*output*/) noexcept {}

const char* UnsupportedReason(const PipelineSettings& /*settings*/) { return "frames are not processed yet"; }

}  // namespace vidproc
