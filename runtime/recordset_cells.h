// Cell storage of a recordset, and the conversion of a value to the type of
// the field it is written to.
//
// A cell is a 16-byte tagged value; texts up to 14 bytes live in the cell,
// longer ones in a per-store text arena whose space is reclaimed once half
// of it belongs to overwritten texts. Rows are held in chunks of 1024, so a
// large store never holds more than one partly used chunk.
//
// Internal to runtime/: a CellStore is owned by its Recordset and is
// thread-compatible (one thread at a time). Callers use runtime/recordset.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/value.h"

namespace orvalis::recordset_detail {

// Byte 0 of a cell is its kind. Short texts keep their length in byte 1 and
// their bytes in 2..15; long texts keep their length in bytes 4..7 and their
// arena reference in 8..15; other payloads are in 8..15.
enum class CellKind : unsigned char { Empty, Null, Boolean, Integer, Double, ShortText, LongText, Date };

struct Cell {
  alignas(8) unsigned char b[16] = {static_cast<unsigned char>(CellKind::Null)};
};
static_assert(sizeof(Cell) == 16);

inline CellKind kindOf(const Cell& c) { return static_cast<CellKind>(c.b[0]); }
inline bool isNullish(CellKind k) { return k == CellKind::Null || k == CellKind::Empty; }
inline bool isText(CellKind k) { return k == CellKind::ShortText || k == CellKind::LongText; }

template <typename T>
T load(const Cell& c, size_t offset) {
  T v;
  std::memcpy(&v, c.b + offset, sizeof v);
  return v;
}

template <typename T>
void store(Cell& c, size_t offset, T v) {
  std::memcpy(c.b + offset, &v, sizeof v);
}

inline constexpr size_t kShortText = 14;  // text bytes a cell holds

// Texts longer than a cell holds, in blocks that grow from 1 KiB to 64 KiB;
// a reference is (block << 32) | offset, so blocks never move texts.
class TextArena {
 public:
  uint64_t add(std::string_view s);
  std::string_view get(uint64_t ref, uint32_t length) const {
    return std::string_view(blocks_[ref >> 32]).substr(ref & 0xffffffffu, length);
  }
  void release(size_t length) { garbage_ += length; }
  bool wantsCompaction() const { return garbage_ > 64 * 1024 && garbage_ * 2 > used_; }
  size_t capacity() const;

 private:
  std::vector<std::string> blocks_;
  size_t used_ = 0;
  size_t garbage_ = 0;
};

// The rows of a recordset: width cells a row, in chunks of kChunkRows rows.
// Row numbers are storage order, 0-based; callers check them.
class CellStore {
 public:
  static constexpr long kChunkRows = 1024;

  // Cells a row; set while the store holds no rows.
  void setWidth(size_t width) { width_ = width; }
  size_t width() const { return width_; }
  long rows() const { return rows_; }

  // Room for this many rows in all.
  void reserve(long rows);
  // Appends a row of Null cells and returns its number.
  long addRow();
  // Drops every row (the chunk list keeps its capacity).
  void clear();

  Cell& cell(long row, int index) {
    return chunks_[static_cast<size_t>(row / kChunkRows)]
                  [static_cast<size_t>(row % kChunkRows) * width_ + static_cast<size_t>(index)];
  }
  const Cell& cell(long row, int index) const { return const_cast<CellStore*>(this)->cell(row, index); }

  // The text of a text cell.
  std::string_view textOf(const Cell& c) const;
  Value valueOf(const Cell& c) const;
  // valueOf(c).text(), without building a Value for text cells.
  std::string textOfCell(const Cell& c) const;

  // Stores v (already of the field's type) in a cell; raises overflow (6)
  // for a date or text the cell cannot hold.
  void set(long row, int index, const Value& v);
  // set() of a text value, without building one.
  void setText(long row, int index, std::string_view text);
  // Copies a Null or text cell of another store (the caller checks its kind).
  void copyTextOrNull(long row, int index, const CellStore& from, const Cell& c);

  // Bytes held by the chunks and the arena.
  size_t memoryUsage() const;

 private:
  void put(Cell& c, const Value& v);
  void putText(Cell& c, std::string_view s);
  void compactArenaIfWasteful();

  size_t width_ = 0;
  std::vector<std::vector<Cell>> chunks_;  // kChunkRows rows each, row-major
  TextArena arena_;
  long rows_ = 0;
};

// The value a field of this ADO type holds when v is written to it, as ADO
// converts it; raises "Multiple-step operation generated errors"
// (-2147217887) when it cannot be converted.
Value coerce(Value v, int type);

}  // namespace orvalis::recordset_detail
