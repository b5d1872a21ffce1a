// See image.h.
#include "image.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include "errors.h"
#include "frame_converter.h"

namespace vidproc::tool {

drawing::Canvas ToCanvas(const AVFrame& frame) {
  const ColourTags rgb = {.matrix = AVCOL_SPC_RGB, .range = AVCOL_RANGE_JPEG};
  FrameConverter converter("", AV_PIX_FMT_0RGB32, rgb);
  const FramePtr pixels = converter.Convert(FramePtr(OrBadAlloc(av_frame_clone(&frame))));
  drawing::Canvas canvas(frame.width, frame.height);
  av_image_copy_plane(canvas.Pixels(), canvas.RowBytes(), pixels->data[0], pixels->linesize[0], 4 * frame.width,
                      frame.height);
  canvas.PixelsChanged();
  return canvas;
}

void WritePng(OutputFile& file, const drawing::Canvas& picture) {
  std::string bytes;  // Cairo passes no exception on
  const auto append = [](void* closure, const unsigned char* data, unsigned int size) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), size);
    return CAIRO_STATUS_SUCCESS;
  };
  const cairo_status_t status = cairo_surface_write_to_png_stream(picture.Surface(), append, &bytes);
  if (status != CAIRO_STATUS_SUCCESS) {
    throw ToolError(kFailure, std::string("PNG encoding failed: ") + cairo_status_to_string(status));
  }
  file.Write(bytes);
}

}  // namespace vidproc::tool
