// The steps that a component's rows pass through. A stage makes rows on demand and asks its input for the rows that it
// needs for them, so that only a few rows of each stage live at a time, in the cache.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "pipeline/row_store.h"

namespace vidproc {

/// The samples of a component, or Cb Cr pairs as they lie in rows of pairs.
struct PlaneShape {
  std::int32_t width;  ///< samples or pairs
  std::int32_t height;
  std::int32_t sampleBytes;  ///< 1, or 2 for pairs
  std::int32_t RowBytes() const { return width * sampleBytes; }
};

class Stage {
 public:
  explicit Stage(const PlaneShape& shape) : shape(shape) {}
  virtual ~Stage() = default;
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  const PlaneShape& Shape() const { return shape; }

  /// Makes room for the neighbouring rows that a reader works on; its set-up calls it. @throws std::bad_alloc
  virtual void Hold(std::int32_t count);

  /// Row y, to be asked for in ascending order, but for steps back within the held rows. It stays until a row is asked
  /// for that lies as many rows further as are held.
  const std::uint8_t* Row(std::int32_t y) { return GivesRows() ? GivenRow(y) : HeldRow(y); }

  /// Whether rows are given out where they lie in the caller's frame, from where they may have to be fetched.
  bool GivesRows() const { return givenRows != nullptr; }
  const std::uint8_t* GivenRow(std::int32_t y) const { return givenRows + y * givenStride; }

  /// The same as Row in held memory, whose margins are the reader's to write to.
  std::uint8_t* HeldRow(std::int32_t y) {
    if (passedOn != nullptr) return passedOn->HeldRow(y);
    std::int32_t& heldRow = rowInSlot[Slot(y)];
    std::uint8_t* const row = rows.Row(y & slotMask);
    if (heldRow != y) {
      MakeRow(y, row);
      heldRow = y;
    }
    return row;
  }

  /// Writes row y to where nothing but its bytes may be written.
  virtual void WriteRow(std::int32_t y, std::uint8_t* out) { MakeRow(y, out); }

  /// Before a frame's first row and after its last.
  virtual void StartFrame() { std::fill(rowInSlot.begin(), rowInSlot.end(), -1); }
  virtual void EndFrame() {}

 protected:
  /// Writes row y to a held row, or to where WriteRow has found that it may.
  virtual void MakeRow(std::int32_t y, std::uint8_t* out) = 0;

  bool Holds(std::int32_t y) const { return rowInSlot[Slot(y)] == y; }
  /// Where row y is to be held, made by the caller.
  std::uint8_t* PlaceFor(std::int32_t y) {
    rowInSlot[Slot(y)] = y;
    return rows.Row(y & slotMask);
  }
  /// Makes Row give out rows that exist already; null: those held.
  void GiveRows(const std::uint8_t* rows, std::ptrdiff_t stride) {
    givenRows = rows;
    givenStride = stride;
  }

  /// Makes Row and HeldRow pass on the rows of a stage that holds as many; null: its own.
  void PassOn(Stage* stage) { passedOn = stage; }

  RowStore& HeldRows() { return rows; }

 private:
  std::size_t Slot(std::int32_t y) const { return static_cast<std::size_t>(y & slotMask); }

  const PlaneShape shape;
  RowStore rows;
  Stage* passedOn = nullptr;
  const std::uint8_t* givenRows = nullptr;
  std::ptrdiff_t givenStride = 0;
  std::int32_t slotMask = 0;
  std::vector<std::int32_t> rowInSlot;
};

}  // namespace vidproc
