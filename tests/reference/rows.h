// The passes over a single row, written plainly per sample.
#pragma once

#include <cstdint>
#include <vector>

namespace reference {

using Row = std::vector<std::uint8_t>;

/// A sample and sixteenths after it.
struct Place {
  int source;
  int phase;
};

/// Where output k of a scaling by up / down from the corner lies: full sixteenths after a sample.
Place CornerPlace(std::int64_t k, std::int64_t up, std::int64_t down);

/// Where sample k of one grid lies in the other when the pictures' centres meet: coordinates count in luma samples of
/// each picture, sample i at spacing * i + first.
Place CentredPlace(int k, int up, int down, double inSpacing, double inFirst, double outSpacing, double outFirst);

/// One output row: tap t weights rows[t].
Row FilterVertically(const std::vector<const std::uint8_t*>& rows, const std::int16_t* coefficients, int shift,
                     int bytes);

/// A row of samples (step 1) or of pairs (step 2), the outermost of which repeat beyond its ends.
Row ScaleHorizontally(const Row& in, const std::int16_t (*bank)[16], int taps, int shift,
                      const std::vector<Place>& places, int step);

/// Edge-preserving taps (7 bits). Those of a byte that moves against `previous` (null: none does) keep their weight.
Row DenoiseVertically(const std::vector<const std::uint8_t*>& rows, const std::int16_t* coefficients, int edge,
                      const std::uint8_t* previous, int bytes);
Row DenoiseHorizontally(const Row& in, const std::int16_t* coefficients, int taps, int edge,
                        const std::uint8_t* previous, int step);

/// Each byte drawn towards its history.
Row BlendRow(const Row& values, const std::uint8_t* history, int strength, int shift);

}  // namespace reference
