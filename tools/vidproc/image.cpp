// See image.h.
#include "image.h"

#include "errors.h"
#include "picture_converter.h"

namespace vidproc::tool {

drawing::Canvas ToCanvas(const AVFrame& frame) {
  drawing::Canvas canvas(frame.width, frame.height);
  FramePtr pixels = WrapFrame(AV_PIX_FMT_0RGB32, {frame.width, frame.height}, canvas.Pixels());
  Scaler().Convert(frame, *pixels);
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
