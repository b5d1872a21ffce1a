// Cleans a camera's frames and halves them for an encoder.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vidproc/vidproc.h>

int main(void) {
  vidproc_pre_options options;
  vidproc_pre_options_preset(&options, sizeof(options), "webcam");
  options.input = (vidproc_frame_info){VIDPROC_FORMAT_I420, 1280, 720, VIDPROC_SITING_LEFT};
  options.output = (vidproc_frame_info){VIDPROC_FORMAT_NV12, 640, 360, VIDPROC_SITING_LEFT};
  const size_t cameraBytes = vidproc_frame_bytes(&options.input), encoderBytes = vidproc_frame_bytes(&options.output);
  unsigned char *camera = malloc(cameraBytes), *encoder = malloc(encoderBytes);
  vidproc_pre* pre = NULL;
  vidproc_input input;
  vidproc_output output;

  vidproc_status status = vidproc_pre_create(&pre);
  if (status == VIDPROC_OK) status = vidproc_pre_configure(pre, &options);
  if (status == VIDPROC_OK) status = vidproc_input_map(&input, &options.input, camera, cameraBytes);
  if (status == VIDPROC_OK) status = vidproc_output_map(&output, &options.output, encoder, encoderBytes);
  for (int frame = 0; frame < 3 && status == VIDPROC_OK; ++frame) {
    memset(camera, 100 + frame, cameraBytes);  // here the camera delivers
    status = vidproc_pre_process(pre, &input, &output);
  }
  if (status != VIDPROC_OK) fprintf(stderr, "%s: %s\n", vidproc_status_text(status), vidproc_pre_last_error(pre));
  if (status == VIDPROC_OK) printf("a luma sample in the middle: %d\n", encoder[640 * 180 + 320]);
  vidproc_pre_destroy(pre);
  free(encoder);
  free(camera);
  return status == VIDPROC_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}
