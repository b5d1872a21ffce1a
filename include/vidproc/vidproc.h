// vidproc: prepares camera frames for an encoder (vidproc_pre), decoded frames for the screen (vidproc_post), and tells
// when a camera's exposure drifts (vidproc_exposure). Uncompressed 8-bit video; C99 and later, C++14 and later;
// vidproc.hpp is the same for C++ with owners and exceptions.
//
// In short: create a handle, fill an options struct with its defaults, set the frames' formats and sizes, configure,
// then process frame after frame. Every mistake is refused with a status, a text that names the field, its value and
// what is allowed, and an untouched output frame. Nothing is printed, nothing ends the process, no exception leaves.
//
// Threads: a handle is used by one thread at a time, different handles by different threads freely. They share nothing
// but constants and the instruction set in use (vidproc_cap_level).
//
// Memory: frames belong to the caller and are borrowed for one call. Only _create and _configure take memory; _process
// and _reset take none, nor locks, and make no system call (but for the clock where dither_seed is -1).
//
// Time: _configure designs filters and takes memory, typically a millisecond or a few. _process is proportional to the
// pixels of the frames; its checks take constant time.
//
// The same options give the same bytes on every processor and in every later version, except for what is called
// automatic here and may improve.
#ifndef VIDPROC_VIDPROC_H
#define VIDPROC_VIDPROC_H

#include <stddef.h>
#include <stdint.h>

#include "export.h"

/// Version of this header.
#define VIDPROC_VERSION_MAJOR 1
#define VIDPROC_VERSION_MINOR 0
#define VIDPROC_VERSION_PATCH 0
/// Grows with every version; comparable with vidproc_version_number().
#define VIDPROC_VERSION_NUMBER (VIDPROC_VERSION_MAJOR * 10000 + VIDPROC_VERSION_MINOR * 100 + VIDPROC_VERSION_PATCH)

#ifdef __cplusplus
extern "C" {
#endif

// --- Results ---

/// What a function returns. Values never change; later versions may add some.
typedef int32_t vidproc_status;
enum {
  VIDPROC_OK = 0,
  VIDPROC_ERROR_INVALID_ARGUMENT = 1,  ///< a null pointer, or a value outside its range
  VIDPROC_ERROR_UNSUPPORTED = 2,       ///< values that are allowed each, but not together or not in this version
  VIDPROC_ERROR_OUT_OF_MEMORY = 3,     ///< of _create and _configure only
  VIDPROC_ERROR_NOT_CONFIGURED = 4,    ///< _process before the first successful _configure
  VIDPROC_ERROR_FRAME_MISMATCH = 5,    ///< a frame whose format or size is not the configured one
  VIDPROC_ERROR_BUFFER_TOO_SMALL = 6,  ///< rows longer than their stride, or a plane that needs more bytes
  VIDPROC_ERROR_OVERLAP = 7            ///< frames that share bytes without being the very same frame
};

/// A few words on a status, such as "buffer too small"; "unknown status" for any other value. Never null; static.
VIDPROC_API const char* vidproc_status_text(vidproc_status status);

/// Version of the library at run time: VIDPROC_VERSION_NUMBER of its header, and as text, such as "1.0.0".
VIDPROC_API uint32_t vidproc_version_number(void);
VIDPROC_API const char* vidproc_version_string(void);

/// The instruction set in use: "scalar", "portable", "sse2", "sse41", "avx2", "avx512", "avx512vbmi", "neon" or "wasm".
/// Static text.
VIDPROC_API const char* vidproc_level(void);

/// Makes the whole process use the best instruction set of this machine that is not above `name` (null: the best one),
/// for tests and bug reports: results are the same at every level. Handles follow at their next configure at the
/// latest. Not while another thread is inside the library.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT for any other name.
VIDPROC_API vidproc_status vidproc_cap_level(const char* name);

// --- Frames ---

/// How samples lie in memory. Two horizontally neighbouring pixels share a Cb and a Cr sample; in 4:2:0 so do two rows.
/// Chroma planes of odd sizes are rounded up.
typedef int32_t vidproc_format;
enum {
  VIDPROC_FORMAT_UYVY = 1,  ///< 4:2:2, one plane: Cb, Y, Cr, Y for each pair of pixels (2vuy)
  VIDPROC_FORMAT_YUYV = 2,  ///< 4:2:2, one plane: Y, Cb, Y, Cr (YUY2)
  VIDPROC_FORMAT_NV12 = 3,  ///< 4:2:0, two planes: Y; pairs of Cb, Cr
  VIDPROC_FORMAT_I420 = 4,  ///< 4:2:0, three planes: Y, Cb, Cr (exchange the last two for YV12)
  VIDPROC_FORMAT_I422 = 5   ///< 4:2:2, three planes: Y, Cb, Cr
};

/// Where chroma samples lie between luma samples; vertically in 4:2:0 midway between two rows.
typedef int32_t vidproc_siting;
enum {
  VIDPROC_SITING_LEFT = 0,   ///< beside the left pixel of a pair, as MPEG-2, H.264 and most cameras have it
  VIDPROC_SITING_CENTRE = 1  ///< midway between both, as JPEG and MPEG-1 have it
};

/// Format and size of a stream's frames.
typedef struct vidproc_frame_info {
  vidproc_format format;  ///< VIDPROC_FORMAT_*; no default
  int32_t width;          ///< pixels, 2..16384, odd ones too; no default
  int32_t height;         ///< rows, 1..16384, odd ones too; no default
  vidproc_siting siting;  ///< VIDPROC_SITING_*; default left
} vidproc_frame_info;

/// A frame that is only read. Planes are numbered in the order that the format names them; entries of planes that it
/// does not have are ignored. No pointer and no stride needs any alignment.
///
/// A row holds `width` bytes of luma, (width + 1) / 2 samples of each chroma component, and in UYVY and YUYV 2 x width
/// bytes. Of an odd width the last packed pair is whole where the stride has room for it (4 x ((width + 1) / 2) bytes):
/// its Cr is used and written, its second Y is written as a repetition of the first. Else the Cr before it stands in,
/// and no byte beyond 2 x width is touched.
typedef struct vidproc_input {
  vidproc_format format;    ///< VIDPROC_FORMAT_*, the configured one
  int32_t width;            ///< pixels, the configured ones
  int32_t height;           ///< rows, the configured ones
  const uint8_t* plane[3];  ///< first byte of each plane's top row
  ptrdiff_t stride[3];      ///< bytes from a row to the one below, negative in bottom-up frames; at least a row's bytes
  size_t bytes[3];  ///< bytes of each plane, from the start of its lowest row in memory to the end of its highest
} vidproc_input;

/// A frame that is written. As vidproc_input; padding between rows is left alone.
typedef struct vidproc_output {
  /// As in vidproc_input.
  vidproc_format format;
  int32_t width;
  int32_t height;
  uint8_t* plane[3];
  ptrdiff_t stride[3];
  size_t bytes[3];
} vidproc_output;

/// Bytes of a frame whose planes follow one another without padding (packed rows end with a whole pair); 0 where `info`
/// is null or not valid.
VIDPROC_API size_t vidproc_frame_bytes(const vidproc_frame_info* info);

/// Describes such a frame in one block of memory. `memory` stays the caller's and must outlive the use of `frame`.
/// @param bytes  what the block holds: vidproc_frame_bytes(info) or more.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT for null pointers or an info that is not valid,
///         VIDPROC_ERROR_BUFFER_TOO_SMALL for too few bytes; `frame` is then left alone.
VIDPROC_API vidproc_status vidproc_input_map(vidproc_input* frame, const vidproc_frame_info* info, const void* memory,
                                             size_t bytes);
VIDPROC_API vidproc_status vidproc_output_map(vidproc_output* frame, const vidproc_frame_info* info, void* memory,
                                              size_t bytes);

// --- Settings that pre- and post-processor share ---

/// Which input positions the output samples are computed for.
typedef int32_t vidproc_alignment;
enum {
  VIDPROC_ALIGNMENT_CENTRES = 0,  ///< the pictures' areas coincide, as in other scalers
  VIDPROC_ALIGNMENT_CORNERS = 1   ///< the first samples coincide, as in the functions of video_processor.h
};

/// Interpolation kernel. All but the last three are widened on the way down by as much as the taps can hold, and go
/// through halvings first where the ratio is more than the taps can carry.
typedef int32_t vidproc_filter;
enum {
  VIDPROC_FILTER_AUTOMATIC = 0,  ///< designed for ratio and taps; may improve in later versions
  VIDPROC_FILTER_BILINEAR = 1,
  VIDPROC_FILTER_CATMULL_ROM = 2,   ///< cubic, B = 0, C = 1/2
  VIDPROC_FILTER_MITCHELL = 3,      ///< cubic, B = C = 1/3
  VIDPROC_FILTER_LANCZOS = 4,       ///< 3 lobes, 2 where there are 4 taps
  VIDPROC_FILTER_AREA = 5,          ///< mean of what an output sample covers
  VIDPROC_FILTER_GAUSSIAN = 6,      ///< wider with `softening`; always in one step
  VIDPROC_FILTER_HAMMING_SINC = 7,  ///< windowed sinc, wider with `softening`; always in one step
  VIDPROC_FILTER_TWO_SINCS = 8  ///< product of two sincs, wider with `softening`, `lobes` in the second; in one step
};

/// A setting of a processor, for hosts that list settings: a field of its options struct.
typedef struct vidproc_option {
  const char* name;            ///< the field's, such as "denoise_edge"
  const char* text;            ///< what it does, in a few English words without a full stop
  const char* const* choices;  ///< names of the values from 0 to `high`, then null; null where the value is a number
  size_t offset;               ///< of the field, an int32_t, in the struct
  int32_t low;                 ///< allowed are low..high
  int32_t high;
  int32_t also;           ///< and this, such as 0 of deblock_level; one of low..high where nothing else is
  int32_t default_value;  ///< that of _options_init
} vidproc_option;

// --- Pre-processor: denoise, scale, shift luma, dither ---

/// Handle of one stream.
typedef struct vidproc_pre vidproc_pre;

/// Each stage runs only where it is asked for: denoising at the input's size, then scaling (from one format to another
/// too) with sharpening, luma gain and offset, then dither. The defaults do nothing but scale and convert.
typedef struct vidproc_pre_options {
  uint32_t struct_size;         ///< bytes of this struct, written by vidproc_pre_options_init
  vidproc_frame_info input;     ///< format and size of what comes in; must be set
  vidproc_frame_info output;    ///< format and size of what goes out; must be set
  vidproc_alignment alignment;  ///< VIDPROC_ALIGNMENT_*; default centres
  vidproc_filter filter;        ///< VIDPROC_FILTER_*; default automatic
  int32_t taps;                 ///< 8 (and 4 vertical) or 16 (and 8 vertical), which costs about twice; default 8
  int32_t softening;            ///< 0..255 sixteenths of a sample, of the last three filters; default 0; else ignored
  int32_t lobes;                ///< 1..16, of the product of two sincs; default 3; else ignored
  int32_t sharpening;           ///< 0..16, in sixteenths; default 0, none
  int32_t luma_gain;            ///< 1..127, in 64ths; default 64, none. Y becomes (Y - luma_offset) * luma_gain / 64
  int32_t luma_offset;          ///< -255..255; default 0. Gains over 64: (255 - luma_offset) * luma_gain <= 32767
  int32_t dither_level;         ///< 0..12, amplitude of the noise added to luma; default 0, none
  int32_t dither_seed;          ///< 0..255, the same noise in every frame; -1, by the clock; default -1
  /// 0..8; default 0, no averaging of neighbours. A neighbour counts the less the more it differs, and no more from a
  /// difference of 16 / 2^((denoise_edge - 1) / 2) on: 16 at 1, which averages most, 8 at 3, 4 at 5.
  int32_t denoise_edge;
  int32_t denoise_softening;  ///< 0..255, width of the averaging; 0 is none; default 10
  int32_t denoise_taps;       ///< neighbours: 8 (and 4 vertical) or 16 (and 8 vertical), for wide averaging; default 8
  int32_t temporal_strength;  ///< 0..127 128ths, weight of the previous frame at rest; default 0, none
  /// 0..8; default 0. The previous frame counts the less the more it differs, and no more from a difference of
  /// 16 / 2^(temporal_shift / 2) on; at 8 it counts fully again from 16 on.
  int32_t temporal_shift;
  int32_t motion_smoothing;  ///< 0 or 1: average all neighbours fully where the picture moves; default 0
  int32_t denoise_passes;    ///< 1..3: average neighbours again, for noise that one pass leaves; default 1
  /// 0..400 per cent; default 0, the fields above as they are. Else they follow the noise, all but motion_smoothing:
  /// its strength is estimated from frame to frame (vidproc_pre_noise), and denoising is set as for noise of so many
  /// per cent of that. May improve in later versions.
  int32_t denoise_auto;
} vidproc_pre_options;

/// Makes a handle that is not configured yet. *pre is null after a failure.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT for null, VIDPROC_ERROR_OUT_OF_MEMORY.
VIDPROC_API vidproc_status vidproc_pre_create(vidproc_pre** pre);

/// Releases a handle and all that it holds; null is ignored.
VIDPROC_API void vidproc_pre_destroy(vidproc_pre* pre);

/// Writes the defaults. Formats and sizes of input and output have none: they are 0 and must be set.
/// @param size  sizeof(vidproc_pre_options): programs and libraries of different versions understand each other by it.
///              Fields that an older program does not have keep their defaults; fields that an older library does not
///              know must be 0.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT for null or a size below that of version 1.0 or above 4096.
VIDPROC_API vidproc_status vidproc_pre_options_init(vidproc_pre_options* options, size_t size);

/// Writes the options of a preset: the defaults, changed as docs/presets.md says; see vidproc_pre_preset for names.
/// Any field may be changed afterwards, formats and sizes must be set. Presets may improve in later versions; whoever
/// wants the same bytes for ever stores the fields, denoise_auto being 0 and filter not automatic.
/// @param size  as of vidproc_pre_options_init
/// @return VIDPROC_ERROR_INVALID_ARGUMENT for null, an unknown name or a size that is not allowed; `options` is then
///         left alone.
VIDPROC_API vidproc_status vidproc_pre_options_preset(vidproc_pre_options* options, size_t size, const char* name);

/// Names of the presets by number, from 0: "webcam", "low-light", "low-bandwidth", "screen", "none"; null beyond the
/// last. Static text.
VIDPROC_API const char* vidproc_pre_preset(int32_t number);

/// The settings by number, from 0, in the order of the struct, without formats and sizes; null beyond the last. Static.
VIDPROC_API const vidproc_option* vidproc_pre_option(int32_t number);

/// Takes new settings, sizes and formats, at any time. The history of temporal_strength, motion_smoothing and
/// denoise_auto continues while these stay on and neither input size nor chroma sampling (4:2:2 or 4:2:0) change. After
/// any failure the handle is exactly as it was, and works on with its former settings.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT, VIDPROC_ERROR_UNSUPPORTED, VIDPROC_ERROR_OUT_OF_MEMORY.
VIDPROC_API vidproc_status vidproc_pre_configure(vidproc_pre* pre, const vidproc_pre_options* options);

/// Processes one frame. Output and input are the very same frame (equal formats, sizes, pointers and strides) or share
/// no byte. After any failure neither the output nor the history has changed.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT, VIDPROC_ERROR_NOT_CONFIGURED, VIDPROC_ERROR_FRAME_MISMATCH,
///         VIDPROC_ERROR_BUFFER_TOO_SMALL, VIDPROC_ERROR_OVERLAP.
VIDPROC_API vidproc_status vidproc_pre_process(vidproc_pre* pre, const vidproc_input* input,
                                               const vidproc_output* output);

/// Forgets the history: the next frame is treated as the first one. For cuts and jumps in the stream.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT for null.
VIDPROC_API vidproc_status vidproc_pre_reset(vidproc_pre* pre);

/// The noise of the input as denoise_auto estimates it, after the last frame: its standard deviation in hundredths of a
/// luma level (420 is 4.2); 0 where denoise_auto is 0, before the first frame, and in pictures below some 64 x 16.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT for null, VIDPROC_ERROR_NOT_CONFIGURED.
VIDPROC_API vidproc_status vidproc_pre_noise(vidproc_pre* pre, int32_t* noise);

/// *passes is 1 where every frame comes out as it went in, because format, size and siting are equal and no stage has
/// anything to do, so that a host may keep its frame and leave the call out; else 0.
/// @return VIDPROC_ERROR_INVALID_ARGUMENT for null, VIDPROC_ERROR_NOT_CONFIGURED.
VIDPROC_API vidproc_status vidproc_pre_passes_through(vidproc_pre* pre, int32_t* passes);

/// What the last call on this handle found wrong, such as "output.width is 1, allowed 2 to 16384"; empty after success.
/// Never null; valid until the next call on the handle. For a null handle it says so.
VIDPROC_API const char* vidproc_pre_last_error(const vidproc_pre* pre);

// --- Post-processor: deblock, scale, shift luma, dither ---

/// Handle of one stream.
typedef struct vidproc_post vidproc_post;

/// Each stage runs only where it is asked for: deblocking at the input's size, then scaling (from one format to another
/// too) with sharpening, luma gain and offset, then dither. The defaults do nothing but scale and convert. Fields are
/// those of vidproc_pre_options; deblock_level is this side's own.
typedef struct vidproc_post_options {
  /// As in vidproc_pre_options.
  uint32_t struct_size;
  vidproc_frame_info input;
  vidproc_frame_info output;
  vidproc_alignment alignment;
  vidproc_filter filter;
  int32_t taps;
  int32_t softening;
  int32_t lobes;
  int32_t sharpening;
  int32_t luma_gain;
  int32_t luma_offset;
  int32_t dither_level;
  int32_t dither_seed;
  int32_t deblock_level;  ///< 0 none, or 21..255, how far across the borders of 8 x 8 blocks it smooths; default 0
} vidproc_post_options;

/// As the functions of the same names of the pre-processor. A post-processor has no history: there is nothing that
/// vidproc_post_reset would have to forget.
VIDPROC_API vidproc_status vidproc_post_create(vidproc_post** post);
VIDPROC_API void vidproc_post_destroy(vidproc_post* post);
VIDPROC_API vidproc_status vidproc_post_options_init(vidproc_post_options* options, size_t size);
VIDPROC_API vidproc_status vidproc_post_options_preset(vidproc_post_options* options, size_t size, const char* name);
VIDPROC_API const char* vidproc_post_preset(int32_t number);  ///< "camera", "screen-share", "none"
VIDPROC_API const vidproc_option* vidproc_post_option(int32_t number);
VIDPROC_API vidproc_status vidproc_post_configure(vidproc_post* post, const vidproc_post_options* options);
VIDPROC_API vidproc_status vidproc_post_process(vidproc_post* post, const vidproc_input* input,
                                                const vidproc_output* output);
VIDPROC_API vidproc_status vidproc_post_reset(vidproc_post* post);
VIDPROC_API vidproc_status vidproc_post_passes_through(vidproc_post* post, int32_t* passes);
VIDPROC_API const char* vidproc_post_last_error(const vidproc_post* post);

// --- Exposure watcher ---

/// Handle of one camera's watcher. It compares the brightness of frames block by block with that of a reference, so
/// that moving objects do not count.
typedef struct vidproc_exposure vidproc_exposure;

/// What a frame has shown.
typedef int32_t vidproc_exposure_event;
enum {
  VIDPROC_EXPOSURE_NONE = 0,     ///< nothing new
  VIDPROC_EXPOSURE_DRIFTED = 1,  ///< brightness has left the level at which it had settled, for several frames
  VIDPROC_EXPOSURE_SETTLED = 2   ///< brightness has come to rest; not before the 29th frame
};

/// What an exposure watcher looks at.
typedef struct vidproc_exposure_options {
  uint32_t struct_size;      ///< bytes of this struct, written by vidproc_exposure_options_init
  vidproc_frame_info input;  ///< format and size; 16..16384 in both directions, at most 32896 whole blocks of 16 x 16
} vidproc_exposure_options;

/// As the functions of the same names of the pre-processor. Configuring takes some 7 bytes a pixel and starts afresh,
/// and so does a reset. Only luma is looked at.
VIDPROC_API vidproc_status vidproc_exposure_create(vidproc_exposure** exposure);
VIDPROC_API void vidproc_exposure_destroy(vidproc_exposure* exposure);
VIDPROC_API vidproc_status vidproc_exposure_options_init(vidproc_exposure_options* options, size_t size);
VIDPROC_API vidproc_status vidproc_exposure_configure(vidproc_exposure* exposure,
                                                      const vidproc_exposure_options* options);
/// Looks at the next frame. *event is VIDPROC_EXPOSURE_*; it is left alone after a failure.
VIDPROC_API vidproc_status vidproc_exposure_process(vidproc_exposure* exposure, const vidproc_input* input,
                                                    vidproc_exposure_event* event);
VIDPROC_API vidproc_status vidproc_exposure_reset(vidproc_exposure* exposure);
VIDPROC_API const char* vidproc_exposure_last_error(const vidproc_exposure* exposure);

#ifdef __cplusplus
}  // extern "C"
#endif

#endif  // VIDPROC_VIDPROC_H
