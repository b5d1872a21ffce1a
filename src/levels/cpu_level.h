// The instruction set that the kernels run on. All sets give the same bytes; tests, benches and the tool may ask for a
// lower one than the machine has. Not installed: libvidproc.so does not export these functions.
#pragma once

namespace vidproc {

enum class Level { kScalar, kPortable, kSse2, kSse41, kAvx2, kAvx512, kAvx512Vbmi, kNeon, kWasm };

/// The last one available is the best.
inline constexpr Level kAllLevels[] = {Level::kScalar, Level::kPortable,   Level::kSse2, Level::kSse41, Level::kAvx2,
                                       Level::kAvx512, Level::kAvx512Vbmi, Level::kNeon, Level::kWasm};

/// The best level that this machine and this build have.
Level BestLevel();

/// True when the processor has the instructions of `level`, whether this build has its kernels or not.
bool MachineHasLevel(Level level);

/// True when this machine and this build can run `level`.
bool IsLevelAvailable(Level level);

/// The level that kernels run on now.
Level LevelInUse();

/// Makes kernels of every object run on the best available level that is not above `highest`, and returns that level.
/// Not to be called while another thread is inside the library.
Level CapLevel(Level highest);

/// "scalar", "portable", "sse2", "sse41", "avx2", "avx512", "avx512vbmi", "neon", "wasm".
const char* LevelName(Level level);

}  // namespace vidproc
