// The arithmetic of every vocabulary that this machine runs gives what plain C++ gives for values that no kernel may
// have met yet. Loads, stores and the order of lanes show in every frame.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "simd/vocabulary_probe.h"
#include "support/frame_content.h"
#include "support/kernel_harness.h"

using simd_probe::Vocabulary;

// The build system names the levels: VIDPROC_VOCABULARIES is VIDPROC_VOCABULARY(level) for each of them.
#define VIDPROC_VOCABULARY(level)      \
  namespace vidproc::level {           \
  extern const Vocabulary kVocabulary; \
  }
VIDPROC_VOCABULARIES
#undef VIDPROC_VOCABULARY

namespace {

/// Null where this program was built without the level.
const Vocabulary* VocabularyOf(vidproc::Level level) {
  const std::string name = vidproc::LevelName(level);
#define VIDPROC_VOCABULARY(level) \
  if (name == #level) return &vidproc::level::kVocabulary;
  VIDPROC_VOCABULARIES
#undef VIDPROC_VOCABULARY
  return nullptr;
}

void Fill(std::uint8_t (&bytes)[simd_probe::kBlockBytes], testing_support::Random& random) {
  const bool extreme = random.OneIn(2);
  for (std::uint8_t& byte : bytes) byte = extreme ? random.Pick<std::uint8_t>({0, 1, 127, 128, 255}) : random.Byte();
}

class VocabularyTest : public testing::TestWithParam<vidproc::Level> {};

TEST_P(VocabularyTest, GivesWhatPlainCodeGives) {
  const Vocabulary& plain = vidproc::scalar::kVocabulary;
  const Vocabulary* const tested = VocabularyOf(GetParam());
  ASSERT_NE(tested, nullptr);
  ASSERT_EQ(tested->count, plain.count);
  for (int i = 0; i < plain.count; ++i) {
    testing_support::Random random(static_cast<std::uint32_t>(i));
    for (int round = 0; round < 200; ++round) {
      simd_probe::Blocks expected = {};
      Fill(expected.a, random);
      Fill(expected.b, random);
      simd_probe::Blocks actual = expected;
      plain.operations[i].apply(expected);
      tested->operations[i].apply(actual);
      ASSERT_TRUE(std::equal(std::begin(actual.out), std::end(actual.out), std::begin(expected.out)))
          << plain.operations[i].name << ", round " << round;
    }
  }
}

RUN_AT_EVERY_LEVEL(VocabularyTest);

}  // namespace
