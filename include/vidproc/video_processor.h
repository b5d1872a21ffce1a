// Public interface of the vidproc library: the per-stream processor object, the exported functions and the constant
// tables. Frames are uncompressed 8-bit `2vuy` unless a declaration says otherwise: interleaved 4:2:2, two bytes a
// pixel, bytes in the order Cb, Y0, Cr, Y1 for each pair of pixels. Widths and heights are in pixels, strides in bytes
// from one row to the next.
//
// Threads: nothing here locks. An object, or the handle that owns one, is used by one thread at a time; separate
// objects share nothing but constants. Frames belong to the caller and are borrowed for the length of one call; no
// pointer needs any alignment.
//
// Refused frames: no call that processes a frame says whether it did. A frame is refused, and its destination left
// untouched, when a pointer is null, a side is below 2 x 1 pixels, a stride is below the row's bytes, the frames do not
// fit the buffers that the first set-up of the object made, ratios written by hand reach past the source, or memory is
// out. No set-up checks for this beyond sizes of 0. The functions of vidproc.h return a status instead.
//
// Overlap: the source may overlap the destination in any way. The result is that of reading the whole source first;
// only the temporal filter, when both are one packed frame, filters in place, so that each segment is filtered beside
// neighbours that have been filtered already.
//
// Edges: nothing is read past the last byte of the source's last row or written past the last byte of the destination's
// last row. Between rows only the pass-through's dither noise writes (see PostProcExecute). A row of odd width ends
// with a Cb and a luma sample; where their Cr is asked for, the Cr before it stands in.
//
// "kept:" marks behaviour that may surprise and stays, because hosts have been built on it.
#pragma once

#include <cstdint>

#include "export.h"

namespace vidproc {
struct Workspace;
}  // namespace vidproc

/// Shape of the 3x3 enhancement kernel that is folded into the resampling banks; s is the strength.
enum EnhanceFilterTypes : std::uint32_t {
  EnhanceLaplacian4 = 0,        ///< 0 -s 0 / -s 4s+16 -s / 0 -s 0
  EnhanceLaplacian8 = 1,        ///< -s -s -s / -s 8s+16 -s / -s -s -s
  EnhanceSecondDifference = 2,  ///< s -2s s / -2s 4s+16 -2s / s -2s s
};

/// One video stream's settings, filter banks, working buffers and temporal history.
///
/// The exported functions below create, configure and drive it; an embedding program may also hold one directly, set
/// the public fields and call the kernels. A kernel whose frames are null, whose geometry does not fit the buffers
/// that set-up made, or whose ratios reach past the source does nothing and leaves the destination untouched.
class VIDPROC_API VideoProcessor {
 public:
  /// Processor level: 1 SSE4.1 or better (also any processor that is not x86), 0 SSE2 only, -1 neither.
  std::int8_t cpuLevel;
  /// Flag: the motion-smoothing kernel serves the adaptive path. Written by SetUseSpatialMotionSmoothing.
  std::uint8_t spatialMotionSmoothing;
  /// 0..8: how fast the temporal filter lets go of the previous frame as samples differ. kept: at 8 the curve wraps,
  /// and differences of 16 and more get their full weight back.
  std::uint8_t temporalShift;
  /// 0..127: weight of the previous frame at rest, in 128ths.
  std::uint8_t temporalStrength;
  /// Flag: no temporal history yet. Set by construction only; cleared by every run of a kernel with a temporal stage.
  std::uint8_t temporalFirstFrame;
  /// Owned history: packed rows after the temporal filter, transposed columns after the adaptive kernels. Buffers that
  /// are owned come zero-filled from calloc and go to free.
  std::uint8_t* previousFrame;
  /// Deblocking strength 0..255; deblocking runs above 20.
  std::uint8_t deblockLevel;
  /// Flag: 16 horizontal and 8 vertical taps instead of 8 and 4.
  std::uint8_t use16Taps;
  /// 0 off, 1..8 useful: the weight curve's shift is adaptive - 1.
  std::uint8_t adaptive;
  /// Owned working buffers of equal size.
  std::int16_t* scratchA;
  std::int16_t* scratchB;
  /// Owned, present only while motion smoothing is on: previous vertical result (16-bit, transposed), previous input.
  std::uint8_t* smoothingBufferLarge;
  std::uint8_t* smoothingBufferSmall;
  /// Luma gain (64 is unity), 4096 / gain, and luma offset, the same value in every lane. Only a direct call of
  /// PreProcExecute_SSE2 uses them.
  alignas(16) std::int16_t lumaGain[8];
  alignas(16) std::int16_t lumaGainInverse[8];
  alignas(16) std::int16_t lumaOffset[16];
  /// Non-zero: the scaling and deblocking kernels list their banks on standard output, every frame.
  std::uint32_t debugPrint;
  /// 0..: extra low-pass softening of the resampling kernels; applies at the next SetEnhanceFilter. At 0 the Gaussian
  /// of pre-processors is so narrow that phase 0 has one tap left: a 2:1 downscale, which has no other phase, keeps
  /// every second sample and filters nothing, whatever `adaptive` says. 10 is a useful low-pass there.
  std::uint32_t softenLevel;
  /// Amplitude of the dither noise, 0 (none) to 12; kernels write larger values back as 12.
  std::uint32_t ditherLevel;
  /// Twelve 64 x 64 noise tiles of malloc; null (no noise) if it failed. kept: never freed, not even by the destructor.
  signed char* ditherTable;
  /// Resampling banks, [phase][tap]. A phase sums to 1 << precisionBits; kept: to one less or more where an odd residue
  /// was halved between two taps, and to 0 where its enhanced taps cancel out.
  std::int16_t horizontalFilter[16][16];
  std::int16_t verticalFilter[16][16];
  std::int16_t horizontalEnhancedFilter[16][16];
  std::int16_t verticalEnhancedFilter[16][16];
  /// The banks that kernels read: [phase][tap][lane], each coefficient in eight lanes.
  alignas(16) std::int16_t horizontalFilterLanes[16][16][8];
  alignas(16) std::int16_t verticalFilterLanes[16][16][8];
  /// Deblocking banks and their lane copies; only phase 0 filters.
  std::int16_t deblockHorizontalFilter[16][8];
  std::int16_t deblockVerticalFilter[16][8];
  alignas(16) std::int16_t deblockHorizontalFilterLanes[16][8][8];
  alignas(16) std::int16_t deblockVerticalFilterLanes[16][8][8];
  /// Output to input size per axis, reduced.
  std::int32_t horizontalUp;
  std::int32_t horizontalDown;
  std::int32_t verticalUp;
  std::int32_t verticalDown;
  /// Bytes from row to row of the source and of the destination.
  std::uint32_t inStride;
  std::uint32_t outStride;
  /// Set by SetEnhanceFilter once the banks and buffers exist.
  std::uint8_t filtersReady;
  /// Borrowed frames of the next run. Deblocking replaces the source frame's contents.
  std::uint8_t* srcFrame;
  std::uint8_t* dstFrame;
  /// Cleared by the constructor, never used.
  std::uint8_t reservedByte;
  /// Recorded by SetFiles and the char* forms of Go; nothing opens them. Not terminated at 250 characters or more.
  char inFileName[255];
  char outFileName[255];
  /// Recorded by the long char* form of Go; nothing reads them.
  std::uint8_t optionFlag0;
  std::uint8_t optionFlag1;
  /// Flags: fold the enhancement kernel into the bank of that direction at the next SetEnhanceFilter.
  std::uint8_t enhanceHorizontal;
  std::uint8_t enhanceVertical;
  /// Frame sizes in pixels.
  std::uint32_t inWidth;
  std::uint32_t inHeight;
  std::uint32_t outWidth;
  std::uint32_t outHeight;
  /// Resampling kernel: 0 product of two sincs, 1 Hamming-windowed sinc, 2 Gaussian.
  std::uint32_t windowKind;
  /// Lobes of the second sinc of kernel 0.
  std::uint32_t lanczosLobes;
  /// 3x3 enhancement kernel, row by row; its entries add up to 16.
  std::int16_t enhanceKernel[3][3];
  /// Type and strength of the last SetEnhanceFilter.
  std::uint32_t enhanceType;
  std::uint32_t enhanceStrength;
  /// Recorded by the long char* form of Go; nothing reads it.
  std::uint32_t optionValue;
  /// 1 pre-processor (camera side), 0 post-processor (decoder side).
  std::uint8_t isPreProcessor;
  /// Noise seed: -1 (default) takes the low 8 bits of clock() every frame, else the low 8 bits of this value.
  std::int32_t ditherSeed;
  /// 1 (default): deblocking paints its test pattern over the picture first. 0: it deblocks the real picture.
  std::uint8_t deblockTestPattern;

  /// A 640 x 480 processor without banks or buffers; takes no memory.
  /// @param preProcessor  1 pre-processor, 0 post-processor (low byte kept).
  /// @param soften        initial softenLevel.
  VideoProcessor(int preProcessor, int soften);
  /// Releases the working buffers (not ditherTable).
  ~VideoProcessor();
  VideoProcessor(const VideoProcessor&) = delete;
  VideoProcessor& operator=(const VideoProcessor&) = delete;

  // --- Settings. All return 0 unless stated; out-of-range values are clamped, never refused. ---

  /// The processor level as probed now: 1, 0 or 255 (that is, -1). Reads no field.
  unsigned char IsCompatibleProcessor();
  /// 1 if any argument differs from the field of its name, else 0.
  int NeedsInit(unsigned int newInWidth, unsigned int newInHeight, unsigned int newInStride, unsigned int newOutWidth,
                unsigned int newOutHeight, unsigned int newOutStride, unsigned int newEnhanceStrength,
                unsigned int newSoftenLevel);
  int SetAdaptive(unsigned char level);
  /// Strengths above 127 become 127, shifts above 8 become 8.
  int SetTemporalFilter(unsigned char strength, unsigned char shift);
  /// Stores use16Taps; the banks follow at the next SetEnhanceFilter.
  int SetTaps(unsigned char use16);
  unsigned char GetTaps();
  /// Non-zero allocates the two smoothing buffers where missing, zero releases them.
  /// @throws std::bad_alloc
  int SetUseSpatialMotionSmoothing(unsigned char enable);
  /// Stores lumaGain, its inverse and lumaOffset. Gain is clamped to [-127, 127] with 0 taken as 1, offset to
  /// [-255, 255].
  int InitLuminanceShiftTables(short gain, short offset);
  /// Stores deblockTestPattern.
  int SetDeblockTestPattern(unsigned char enable);
  /// Stores debugPrint.
  int PrintFilters(unsigned int enable);
  /// Present for callers that expect it; does nothing.
  int AddCustomFilter(unsigned int** filters, unsigned int count);
  /// Present for callers that expect it; does nothing.
  int SharpScale(unsigned char* source, unsigned char* destination);
  /// Records at most 250 characters of each name, padded with zero bytes; a null name leaves the old one. Opens
  /// nothing.
  int SetFiles(char* inName, char* outName);

  // --- Filter design (set-up work). ---

  /// Rebuilds ratios, banks, lane copies and luminance vectors from the fields, and allocates the buffers and the
  /// dither table where they are still missing. precisionBits is 7 for a pre-processor, 6 for a post-processor.
  /// Memory: about 10 x height x stride bytes, of the larger height and stride of the two sides; motion smoothing takes
  /// 20 x height x stride more. Buffers that exist are kept as they are, also when later frames are larger.
  /// @throws std::bad_alloc, also for buffers of 2^31 bytes and more
  int SetEnhanceFilter(EnhanceFilterTypes type, unsigned int strength, unsigned int precisionBits, short gain,
                       short offset);
  /// Divides both sizes by their greatest common divisor; two sizes without one give up and down 0.
  void FindUpAndDown(int inSize, int outSize, int* up, int* down);
  /// Fills bank[phase 0..15][tap 0..taps-1] with the kernel chosen by windowKind, lanczosLobes and softenLevel.
  /// taps is even, 2..16, and precisionBits 0..14; other values leave the bank untouched. up, down and filterType are
  /// not used. An unknown windowKind prints "Wrong filter type!" and ends the process with status 0.
  void GetFilter(int up, int down, short (*bank)[16], int taps, int precisionBits, int filterType);
  /// Stores the level and rebuilds the four deblocking tables.
  int InitDeblocker(unsigned char level);
  /// Fills bank[phase 0..15][tap 0..taps-1] with a Gaussian as wide as deblockLevel sixteenths of a pixel.
  /// taps is even, 2..8, and precisionBits 0..14; other values leave the bank untouched. filterType is not used.
  void GetFilterDeblock(short (*bank)[8], int taps, int precisionBits, int filterType);

  // --- Frames. All return 0. ---

  /// Runs the one kernel that role, geometry, switches and processor level select on srcFrame and dstFrame; with a
  /// non-zero plainScaler the plain scaler, whatever the role and the switches.
  int Go(unsigned char plainScaler);
  /// Stores both frames, then runs the form above.
  int Go(unsigned char* source, unsigned char* destination, unsigned char plainScaler);
  /// 4:2:0 frames as a luma plane of width x height bytes and a plane of interleaved Cb, Cr pairs: (height + 1) / 2
  /// rows, also of width bytes. An odd width's last Cb has no Cr in a source; in a destination it gets one if the
  /// chroma stride has room for it. kept: that is the first byte of the frame's next row, and in the last row the Cr
  /// before. Every chroma row serves two luma rows; of the two chroma rows made for them the second stays. Widths and
  /// heights in pixels, strides in bytes; the sizes must be those of the set-up. Destination planes are written after
  /// the whole source has been read.
  int Go(unsigned char* sourceLuma, unsigned char* sourceChroma, unsigned char* destinationLuma,
         unsigned char* destinationChroma, unsigned int sourceWidth, unsigned int sourceHeight,
         unsigned int sourceLumaStride, unsigned int sourceChromaStride, unsigned int destinationWidth,
         unsigned int destinationHeight, unsigned int destinationLumaStride, unsigned int destinationChromaStride,
         unsigned char plainScaler);
  /// Records the names, then processes the frames that the pointers last held.
  int Go(char* inName, char* outName);
  /// The same, and stores the option flags, enhanceHorizontal, enhanceVertical and optionValue for the next set-up.
  int Go(char* inName, char* outName, unsigned char flag0, unsigned char flag1, unsigned char foldHorizontal,
         unsigned char foldVertical, unsigned int value);

  // --- Kernels, for direct calls on srcFrame and dstFrame. All return 0. ---

  int PreProcExecute();                         ///< plain polyphase scaler, 8 + 4 taps
  int PreProcExecute_SSE2();                    ///< the same with luma gain and offset
  int PreProcAdaptiveExecute();                 ///< edge-preserving taps, temporal blend
  int PreProcAdaptiveMotionSmoothingExecute();  ///< the same, full low-pass where the picture moves
  int PreProcAdaptive16TapTemporalExecute();    ///< edge-preserving 16 + 8 taps, temporal blend
  int PreProcAdaptive16TapExecute();            ///< the same without the blend
  /// Same-size temporal noise filter. It takes the source as one packed frame, whatever inStride says, and works on it
  /// as 2 x width segments of height bytes; kept: of each segment the last height mod 16 bytes are not written.
  int PreProcTemporalExecute();

  int PostProcExecute();       ///< deblocking, post-processor scaler or pass-through, dither
  int PostProcExecute_SSE2();  ///< the same; the resampled frame is never dithered
  int Deblock8x8();            ///< smooths the 8 x 8 grid of the source frame in place

  // --- Dither noise. ---

  /// Frees *table if set and stores a new table of twelve 64 x 64 tiles; -1 and a message when memory is out.
  int PostProcDitherNoiseLUTCreation(signed char** table);
  /// Copies a frame and adds noise of strength 1..12 to its luma; source and destination may be the same. table holds
  /// the twelve tiles; of seed the low 8 bits count. pitch in bytes (kept: the source's rows lie its low 16 bits
  /// apart), width in pixels, height in rows; the frames need room for the width rounded up to 16 pixels. Returns 0, or
  /// -1: with a message for another strength or when memory is out, without one for a null pointer.
  int PostProcDitherNoiseUpon2VUY(unsigned char* source, unsigned char* destination, unsigned int pitch,
                                  unsigned short width, unsigned short height, unsigned int seed, unsigned short unused,
                                  unsigned char strength, signed char* table);

 private:
  /// Working memory and plans of the kernels, and what the owned buffers hold; null before the first set-up.
  vidproc::Workspace* workspace;
};

/// Sets up pre-processing of camera frames; *handle is null (a new processor is made) or from an earlier set-up (the
/// processor is re-configured; its buffers keep their size, so larger frames than those of the first set-up may be
/// refused: clean up and set up anew). A set-up with the arguments of the last one changes the dither level alone.
/// enhanceStrength 0 is none; ditherLevel 0..12; softenLevel 0 filters least, and nothing at 2:1 (see
/// VideoProcessor::softenLevel).
/// @return 1, or 0 with no effect when `handle` is null or any size or stride is 0.
/// @throws std::bad_alloc. The handle may then hold a processor without all of its buffers, on which the same set-up
/// would find nothing to do: clean it up and set up anew. kept: a lack for the object alone gives 1 and a null handle.
VIDPROC_API int PreProcInit(void** handle, unsigned int inWidth, unsigned int inHeight, unsigned int inStride,
                            unsigned int outWidth, unsigned int outHeight, unsigned int outStride,
                            unsigned int enhanceStrength, unsigned int ditherLevel, unsigned int softenLevel);
/// Processes one frame of the set-up's sizes; a null handle is ignored. adaptive 0..8, 0 is the plain scaler;
/// temporalStrength 0..127 and temporalShift 0..8 (larger values are clamped). lumaGain and lumaOffset are stored and
/// used by none of the kernels that this function runs.
/// Equal sizes with softenLevel 0 go to the temporal filter alone, see PreProcTemporalExecute: a height that is no
/// multiple of 16 leaves bytes of the destination unwritten, and kept: the first frame into padded rows is not the
/// source but what the staging buffer holds. Every other route writes every row whole.
/// @throws std::bad_alloc when a switch needs new buffers.
VIDPROC_API void PreProcExecute(void* handle, unsigned char* source, unsigned char* destination, unsigned char adaptive,
                                unsigned char use16Taps, unsigned char motionSmoothing, unsigned char temporalStrength,
                                unsigned char temporalShift, short lumaGain, short lumaOffset);
/// Destroys the processor and nulls the handle; a null handle is left alone.
VIDPROC_API void PreProcCleanup(void** handle);

/// Sets up post-processing of decoded frames; arguments and result as PreProcInit.
VIDPROC_API int PostProcInit(void** handle, unsigned int inWidth, unsigned int inHeight, unsigned int inStride,
                             unsigned int outWidth, unsigned int outHeight, unsigned int outStride,
                             unsigned int enhanceStrength, unsigned int ditherLevel, unsigned int softenLevel);
/// Processes one frame; a null handle is ignored. deblock above 20 turns deblocking on at that level; kept: nothing
/// turns it off again. Deblocking is for frames that keep their size, with packed source rows, and overwrites `source`:
/// with the filtered picture, or by default a filtered test pattern (see deblockTestPattern). lumaGain and lumaOffset
/// are stored and not used.
/// Equal sizes without sharpening and softening pass through: rows are copied, then dithered. kept: the noise counts
/// rows from the frame's first byte by a pitch of its own, the width rounded up to 16 pixels, so with padded rows it
/// falls on padding bytes of the destination too, never past its last row.
VIDPROC_API void PostProcExecute(void* handle, unsigned char* source, unsigned char* destination, unsigned char deblock,
                                 short lumaGain, short lumaOffset);
/// As PreProcCleanup.
VIDPROC_API void PostProcCleanup(void** handle);

/// Sets up pre-processing of 4:2:0 frames (luma plane, plane of interleaved Cb Cr pairs).
/// @return true, or false with no effect when `handle` is null or a size is 0.
/// @throws std::bad_alloc
VIDPROC_API bool VidProc420InterleavedInit(void** handle, unsigned int inWidth, unsigned int inHeight,
                                           unsigned int outWidth, unsigned int outHeight);
/// Processes one 4:2:0 frame with the plain scaler; sizes must be the set-up's. A null handle is ignored. lumaGain and
/// lumaOffset are stored and not used. The layout of odd sizes is that of VideoProcessor::Go for planes.
VIDPROC_API void VidProc420InterleavedExecute(void* handle, unsigned char* sourceLuma, unsigned char* sourceChroma,
                                              unsigned char* destinationLuma, unsigned char* destinationChroma,
                                              unsigned int sourceWidth, unsigned int sourceHeight,
                                              unsigned int sourceLumaStride, unsigned int sourceChromaStride,
                                              unsigned int destinationWidth, unsigned int destinationHeight,
                                              unsigned int destinationLumaStride, unsigned int destinationChromaStride,
                                              short lumaGain, short lumaOffset);
/// As PreProcCleanup.
VIDPROC_API void VidProc420InterleavedCleanup(void** handle);

extern "C" {
/// Makes an exposure watcher for packed 2vuy frames (rows of 2 x width bytes). *handle must be null; a size below 1, a
/// frame beyond 2^31 - 1 bytes or a lack of memory leaves it null. param is stored and never read.
VIDPROC_API void VidProcAdjustAutoExposureInit(void** handle, int width, int height, int param);
/// Watches one frame. @return 1 a drift of exposure was just confirmed, 0 the brightness just settled, -1 otherwise and
/// for null arguments.
VIDPROC_API int VidProcAdjustAutoExposure(void* state, unsigned char* frame);
/// Releases the watcher and nulls the handle.
VIDPROC_API void VidProcAdjustAutoExposureCleanup(void** handle);
}

/// Trial of a separable 7-tap smoothing filter on a plane of rowBytes x rows bytes, rows `pitch` bytes apart: prints
/// three 20 x 20 dumps of its intermediate data on standard output and returns 0; the plane is only read. Does nothing
/// for a null plane or a side below 1.
/// @throws std::bad_alloc
VIDPROC_API int BilatFilter(unsigned char* plane, int rowBytes, int rows, int pitch);

/// Seeds of the noise generator, one per value of the seed's low byte: distinct, non-zero, below 2^31.
extern VIDPROC_API const std::uint32_t LFSR_SEED_TABLE[256];
/// 64 x 64 tile of Gaussian-like noise, row by row; dither strength 8 uses it as it stands.
extern VIDPROC_API const signed char Spherical_Theta2_Guassian_Scaled_2By3[4096];
