// The sending side of a call: one thread captures, one processes, one encodes. Frames go round between them, so that
// nothing is allocated while the call lasts, and a thread that is late holds up the one before it.
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <vidproc/vidproc.h>

enum { kFrames = 3, kCallLength = 30 };

// Holds every frame of one kind; null is the end of the call.
typedef struct {
  pthread_mutex_t mutex;
  pthread_cond_t arrival;
  uint8_t* frames[kFrames + 1];
  int count;
} Queue;

typedef struct {
  vidproc_pre_options options;
  Queue toFill, captured, toEncodeInto, processed;
  long brightness;
} Call;

static void Push(Queue* queue, uint8_t* frame) {
  pthread_mutex_lock(&queue->mutex);
  queue->frames[queue->count++] = frame;
  pthread_cond_signal(&queue->arrival);
  pthread_mutex_unlock(&queue->mutex);
}

static uint8_t* Pop(Queue* queue) {
  pthread_mutex_lock(&queue->mutex);
  while (queue->count == 0) pthread_cond_wait(&queue->arrival, &queue->mutex);
  uint8_t* const frame = queue->frames[0];
  --queue->count;
  memmove(queue->frames, queue->frames + 1, (size_t)queue->count * sizeof(frame));
  pthread_mutex_unlock(&queue->mutex);
  return frame;
}

static void Open(Queue* queue) {
  pthread_mutex_init(&queue->mutex, NULL);
  pthread_cond_init(&queue->arrival, NULL);
  queue->count = 0;
}

static void Fill(Queue* queue, uint8_t* block, size_t frameBytes) {
  for (int i = 0; i < kFrames; ++i) Push(queue, block + (size_t)i * frameBytes);
}

static void* Capture(void* argument) {
  Call* const call = argument;
  const size_t bytes = vidproc_frame_bytes(&call->options.input);
  for (int number = 0; number < kCallLength; ++number) {
    uint8_t* const frame = Pop(&call->toFill);
    memset(frame, 100 + number, bytes);  // here the camera delivers
    Push(&call->captured, frame);
  }
  Push(&call->captured, NULL);
  return NULL;
}

static void* Encode(void* argument) {
  Call* const call = argument;
  uint8_t* frame = NULL;
  while ((frame = Pop(&call->processed)) != NULL) {
    call->brightness = frame[640 * 180 + 320];  // here the encoder takes the frame
    Push(&call->toEncodeInto, frame);
  }
  return NULL;
}

static vidproc_status Process(Call* call, vidproc_pre* pre, const uint8_t* in, uint8_t* out) {
  vidproc_input input;
  vidproc_output output;
  const vidproc_pre_options* const options = &call->options;
  vidproc_status status = vidproc_input_map(&input, &options->input, in, vidproc_frame_bytes(&options->input));
  if (status == VIDPROC_OK) {
    status = vidproc_output_map(&output, &options->output, out, vidproc_frame_bytes(&options->output));
  }
  return status == VIDPROC_OK ? vidproc_pre_process(pre, &input, &output) : status;
}

// A frame that is refused is left out; the call goes on.
static vidproc_status ProcessAll(Call* call, vidproc_pre* pre) {
  vidproc_status result = VIDPROC_OK;
  uint8_t* in = NULL;
  while ((in = Pop(&call->captured)) != NULL) {
    uint8_t* const out = Pop(&call->toEncodeInto);
    const vidproc_status status = Process(call, pre, in, out);
    if (status != VIDPROC_OK) result = status;
    Push(status == VIDPROC_OK ? &call->processed : &call->toEncodeInto, out);
    Push(&call->toFill, in);
  }
  Push(&call->processed, NULL);
  return result;
}

int main(void) {
  static Call call;
  vidproc_pre_options* const options = &call.options;
  vidproc_pre_options_preset(options, sizeof(*options), "webcam");
  options->input = (vidproc_frame_info){VIDPROC_FORMAT_YUYV, 1280, 720, VIDPROC_SITING_LEFT};
  options->output = (vidproc_frame_info){VIDPROC_FORMAT_NV12, 640, 360, VIDPROC_SITING_LEFT};
  vidproc_pre* pre = NULL;
  vidproc_status status = vidproc_pre_create(&pre);
  if (status == VIDPROC_OK) status = vidproc_pre_configure(pre, options);
  const size_t inBytes = vidproc_frame_bytes(&options->input), outBytes = vidproc_frame_bytes(&options->output);
  uint8_t *const in = malloc(kFrames * inBytes), *const out = malloc(kFrames * outBytes);
  if (status == VIDPROC_OK && (in == NULL || out == NULL)) status = VIDPROC_ERROR_OUT_OF_MEMORY;

  pthread_t camera, encoder;
  if (status == VIDPROC_OK) {
    Queue* const queues[] = {&call.toFill, &call.captured, &call.toEncodeInto, &call.processed};
    for (int i = 0; i < 4; ++i) Open(queues[i]);
    Fill(&call.toFill, in, inBytes);
    Fill(&call.toEncodeInto, out, outBytes);
    if (pthread_create(&camera, NULL, Capture, &call) != 0 || pthread_create(&encoder, NULL, Encode, &call) != 0) {
      fprintf(stderr, "no thread\n");
      return EXIT_FAILURE;
    }
    status = ProcessAll(&call, pre);
    pthread_join(camera, NULL);
    pthread_join(encoder, NULL);
  }
  if (status != VIDPROC_OK) fprintf(stderr, "%s: %s\n", vidproc_status_text(status), vidproc_pre_last_error(pre));
  if (status == VIDPROC_OK) printf("a luma sample in the middle: %ld\n", call.brightness);
  vidproc_pre_destroy(pre);
  free(out);
  free(in);
  return status == VIDPROC_OK ? EXIT_SUCCESS : EXIT_FAILURE;
}
