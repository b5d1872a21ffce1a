// Planes that lie apart, with padded rows, as decoders and capture interfaces hand them out.
#include <stdio.h>
#include <vidproc/vidproc.h>

enum { kWidth = 640, kHeight = 360, kStride = 704 };

static uint8_t luma[kStride * kHeight], chroma[kStride * kHeight / 2];

static uint8_t screen[2 * kWidth * kHeight];

// Shows an NV12 frame in a bottom-up UYVY window of the same size.
static vidproc_status Show(vidproc_post* post) {
  vidproc_input decoded = {VIDPROC_FORMAT_NV12, kWidth, kHeight, {0}, {0}, {0}};
  decoded.plane[0] = luma;
  decoded.stride[0] = kStride;
  decoded.bytes[0] = sizeof(luma);
  decoded.plane[1] = chroma;  // Cb and Cr in turn
  decoded.stride[1] = kStride;
  decoded.bytes[1] = sizeof(chroma);

  vidproc_output window = {VIDPROC_FORMAT_UYVY, kWidth, kHeight, {0}, {0}, {0}};
  window.plane[0] = screen + 2 * kWidth * (kHeight - 1);  // the top row is the last one in memory
  window.stride[0] = -2 * kWidth;
  window.bytes[0] = sizeof(screen);

  return vidproc_post_process(post, &decoded, &window);
}

int main(void) {
  vidproc_post_options options;
  vidproc_post* post = NULL;
  vidproc_post_options_preset(&options, sizeof(options), "camera");
  options.input = (vidproc_frame_info){VIDPROC_FORMAT_NV12, kWidth, kHeight, VIDPROC_SITING_LEFT};
  options.output = (vidproc_frame_info){VIDPROC_FORMAT_UYVY, kWidth, kHeight, VIDPROC_SITING_LEFT};
  luma[0] = 200;

  vidproc_status status = vidproc_post_create(&post);
  if (status == VIDPROC_OK) status = vidproc_post_configure(post, &options);
  if (status == VIDPROC_OK) status = Show(post);
  if (status != VIDPROC_OK) fprintf(stderr, "%s: %s\n", vidproc_status_text(status), vidproc_post_last_error(post));
  const int shown = screen[2 * kWidth * (kHeight - 1) + 1];
  if (status == VIDPROC_OK) printf("a luma sample in the middle: %d; in the upper left corner: %d\n", screen[1], shown);
  vidproc_post_destroy(post);
  return status == VIDPROC_OK && shown == 200 ? 0 : 1;
}
