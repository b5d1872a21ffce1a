// Where rows come from: a plane of the caller's frame, and the luma and the pairs of a packed one.
#pragma once

#include "kernels/kernel_table.h"
#include "pipeline/stage.h"

namespace vidproc {

/// A plane, given out as it lies in memory; or row by row as held copies, where rows are shorter than kernels may read
/// or the output overwrites them.
class PlaneSource : public Stage {
 public:
  explicit PlaneSource(const PlaneShape& shape) : Stage(shape) {}

  /// The next frame's plane. With `copies` every row is copied when it is first asked for.
  void Attach(const std::uint8_t* firstRow, std::ptrdiff_t rowStride, bool copies);
  void WriteRow(std::int32_t y, std::uint8_t* out) override;

 protected:
  void MakeRow(std::int32_t y, std::uint8_t* out) override;
  virtual bool MustCopy() const;
  const std::uint8_t* SourceRow(std::int32_t y) const { return rows + y * stride; }
  std::ptrdiff_t SourceStride() const { return stride; }

 private:
  const std::uint8_t* rows = nullptr;
  std::ptrdiff_t stride = 0;
};

enum class PackedOrder { kChromaFirst, kLumaFirst };

/// A packed plane of whole pairs: what an odd width lacks of its last pair is made up. A row that ends after the last
/// luma sample takes over the Cr before; luma is repeated.
class PackedSource : public PlaneSource {
 public:
  PackedSource(std::int32_t width, std::int32_t height, PackedOrder order);

 protected:
  void MakeRow(std::int32_t y, std::uint8_t* out) override;
  bool MustCopy() const override { return width % 2 != 0 || PlaneSource::MustCopy(); }

 private:
  const std::int32_t width;
  const PackedOrder order;
};

/// Luma, or pairs, of packed rows. Both are taken out of a row at once: the other one's finds its row held.
class SplitStage : public Stage {
 public:
  enum class Part { kLuma, kPairs };
  /// @param shape  of the part; of an odd width, the packed rows hold one luma sample more
  /// @param lead   rows by which the part that is asked for first may be ahead of the other one
  SplitStage(Part part, const PlaneShape& shape, Stage& packed, PackedOrder order, std::int32_t lead,
             const KernelTable& kernels);

  /// Sets the stage that takes the other part of the same rows.
  void Join(SplitStage& otherPart) { other = &otherPart; }
  void Hold(std::int32_t rows) override { Stage::Hold(rows + lead); }
  void WriteRow(std::int32_t y, std::uint8_t* out) override;

 protected:
  void MakeRow(std::int32_t y, std::uint8_t* out) override;

 private:
  const Part part;
  Stage& packed;
  const PackedOrder order;
  const std::int32_t lead;
  const KernelTable& kernels;
  SplitStage* other = nullptr;
};

}  // namespace vidproc
