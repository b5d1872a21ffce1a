// The instruction set that the kernels run on. All sets give the same bytes; tests, benches and bug reports may ask for
// a lower one than the machine has.
#pragma once

namespace vidproc {

enum class Level { kScalar, kSse2, kSse41, kAvx2, kAvx512, kAvx512Vbmi, kNeon };

/// The best level that this machine and this build have.
Level BestLevel();

/// True when this machine and this build can run `level`.
bool IsLevelAvailable(Level level);

/// The level that kernels run on now.
Level LevelInUse();

/// Makes kernels of every object run on the best available level that is not above `highest`, and returns that level.
/// Not to be called while another thread is inside the library.
Level CapLevel(Level highest);

/// Makes kernels use only the forms that are exact for every bank, for tests that hold the faster ones against them.
/// Results are the same either way. The same caution as for CapLevel.
void UseGeneralFormsOnly(bool only);
bool GeneralFormsOnly();

/// "scalar", "sse2", "sse41", "avx2", "avx512", "avx512vbmi", "neon".
const char* LevelName(Level level);

}  // namespace vidproc
