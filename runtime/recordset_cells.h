// Cell storage of a recordset, and the conversion of a value to the type of
// the field it is written to.
//
// Each cell is held at the width of its field's type: 8 bytes a text (where
// its bytes are in the text arena and how many), 4 for a Long, Integer or byte, 8 for a big integer, a floating number or a
// currency amount, 8 for a date (days and seconds), 1 for a Boolean, and 16
// for a field of any other type (a tagged cell that holds any value). A bit
// a cell says whether it holds a value of its column's own kind; without it
// the cell is Null, unless it is one of the rare cells that hold a value of
// another kind (a text a date column could not read as a date, a number
// beyond a Long), kept aside by row and column.
//
// Rows are held in chunks of kChunkRows rows, each chunk one block of rows
// (a row's presence bits, then its cells: the cells of a row are read and
// written together, and a row looked up at random is one or two cache
// lines); the first chunk starts small and grows, so a recordset
// of a few rows stays small and a large one never holds more than one partly
// used chunk. Texts are appended to a text arena in blocks that grow from
// 1 KiB to 64 KiB; the space of overwritten texts is reclaimed once it is
// half the arena.
//
// Internal to runtime/: a CellStore is owned by its Recordset and is
// thread-compatible (one thread at a time). Callers use runtime/recordset.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "runtime/value.h"

namespace orvalis::recordset_detail {

enum class CellKind : unsigned char { Empty, Null, Boolean, Integer, Double, Text, Date };

inline bool isNullish(CellKind k) { return k == CellKind::Null || k == CellKind::Empty; }
inline bool isText(CellKind k) { return k == CellKind::Text; }

// A cell as read: its kind and the payload of that kind. A text is a view
// into the store, valid until the store is next written.
struct CellView {
  CellKind kind = CellKind::Null;
  bool boolean = false;
  int64_t integer = 0;
  double number = 0;
  int32_t days = 0;
  int32_t seconds = 0;
  std::string_view text;

  Value value() const;
  DateTime date() const { return DateTime::fromDays(days, seconds); }
};

inline CellKind kindOf(const CellView& c) { return c.kind; }

// How a column holds its cells.
enum class Storage : unsigned char { Text, Int32, Int64, Double, Date, Boolean, Any };

// The storage of a field of this ADO type.
Storage storageFor(int type);

// Texts of a store, in blocks that grow from 1 KiB to 64 KiB; a text longer
// than kOwnBlock gets a block of its own. A reference packs the block (24
// bits), the offset in it (16 bits) and the length (24 bits; all ones for a
// text that has a block of its own and is as long as it), so blocks never
// move texts. Blocks are reference-counted: share() lets a store refer to a
// text of another store's arena without copying it, the block then kept
// alive by both. Only the arena that made a block appends to it, and only
// past the texts already there; a copy of an arena starts a block of its
// own for its next text.
class TextArena {
 public:
  static constexpr size_t kOwnBlock = 4096;

  TextArena() = default;
  TextArena(const TextArena& o);
  TextArena& operator=(const TextArena& o);
  TextArena(TextArena&&) noexcept = default;
  TextArena& operator=(TextArena&&) noexcept = default;

  uint64_t add(std::string_view s);
  std::string_view get(uint64_t ref) const {
    const uint32_t length = static_cast<uint32_t>(ref & kLengthMask);
    if (length == 0) return {};
    const size_t block = static_cast<size_t>(ref >> 40);
    if (length == kLengthMask) return std::string_view(bases_[block], blocks_[block]->size);
    return std::string_view(bases_[block] + ((ref >> 24) & 0xffffu), length);
  }
  // The reference in this arena of the text `ref` of `from` (another
  // arena), sharing the block that holds it rather than copying the text.
  uint64_t share(const TextArena& from, uint64_t ref);
  void release(size_t length) { garbage_ += length; }
  bool wantsCompaction() const { return garbage_ > 64 * 1024 && garbage_ * 2 > used_; }
  size_t capacity() const;

 private:
  static constexpr uint64_t kLengthMask = 0xffffff;
  struct Block {
    std::unique_ptr<char[]> bytes;
    size_t size = 0;
    size_t capacity = 0;
  };
  uint32_t newBlock(size_t capacity);
  uint32_t adopt(const std::shared_ptr<Block>& block);

  std::vector<std::shared_ptr<Block>> blocks_;
  std::vector<const char*> bases_;  // blocks_[i]->bytes, read on every get
  size_t current_ = SIZE_MAX;       // the block texts are appended to
  size_t limit_ = 0;                // bytes the current block takes
  size_t used_ = 0;
  size_t garbage_ = 0;
  // Blocks last shared from another arena: its block number -> ours.
  std::vector<uint32_t> sharedAs_;
};

// The rows of a recordset, column by column. Row numbers are storage
// order, 0-based; callers check them and the column numbers.
class CellStore {
 public:
  static constexpr long kChunkRows = 1024;

  // Adds a column for a field of this ADO type; only while the store holds
  // no rows.
  void addColumn(int type);
  size_t width() const { return columns_.size(); }
  long rows() const { return rows_; }
  Storage storage(int index) const { return columns_[static_cast<size_t>(index)].storage; }

  // Room for this many rows in all.
  void reserve(long rows);
  // Appends a row of Null cells and returns its number.
  long addRow();
  // Drops every row.
  void clear();

  CellView view(long row, int index) const;
  Value valueAt(long row, int index) const { return view(row, index).value(); }
  bool isNull(long row, int index) const;

  // Stores v (already of the field's type); raises overflow (6) for a date
  // or text the cell cannot hold.
  void set(long row, int index, const Value& v);
  // set() of a text value, without building one.
  void setText(long row, int index, std::string_view text);
  // The cell of another store (or this one) as it is, when that is a Null
  // or a value of this column's own kind; false (nothing written) else.
  // With `shareText`, a text of another store is shared, not copied (see
  // TextArena::share).
  bool copyCell(long row, int index, const CellStore& from, long fromRow, int fromIndex, bool shareText = false);

  // Bytes held by the chunks, the arena and the cells kept aside.
  size_t memoryUsage() const;

 private:
  struct Column {
    Storage storage;
    size_t size;    // bytes a cell
    size_t offset;  // sum of the sizes of the columns before it
  };
  // A row's presence bits are zeroed when it is added; values are written
  // before they are read, so the rest is not.
  struct Chunk {
    std::unique_ptr<unsigned char[]> bytes;
    size_t size = 0;
    long capacity = 0;  // rows

    Chunk() = default;
    Chunk(Chunk&&) noexcept = default;
    Chunk& operator=(Chunk&&) noexcept = default;
    Chunk(const Chunk& o) : bytes(new unsigned char[o.size]), size(o.size), capacity(o.capacity) {
      std::memcpy(bytes.get(), o.bytes.get(), size);
    }
    Chunk& operator=(const Chunk& o) {
      if (this != &o) *this = Chunk(o);
      return *this;
    }
  };
  // A 16-byte tagged cell (columns of any type and the cells kept aside):
  // byte 0 the kind, the payload from byte 8 (a text's arena reference).
  struct AnyCell {
    alignas(8) unsigned char b[16] = {static_cast<unsigned char>(CellKind::Null)};
  };
  static_assert(sizeof(AnyCell) == 16);

  // A row: the presence bits of its cells, then its cells at their widths.
  unsigned char* rowBits(const Chunk& c, long r) const { return c.bytes.get() + static_cast<size_t>(r) * rowStride_; }
  unsigned char* data(const Chunk& c, const Column& col, long r) const {
    return c.bytes.get() + static_cast<size_t>(r) * rowStride_ + bitBytes_ + col.offset;
  }
  const Chunk& chunkOf(long row) const { return chunks_[static_cast<size_t>(row / kChunkRows)]; }
  static bool bit(const unsigned char* b, int i) { return (b[i >> 3] >> (i & 7)) & 1; }
  static void setBit(unsigned char* b, int i, bool on) {
    if (on) b[i >> 3] = static_cast<unsigned char>(b[i >> 3] | (1u << (i & 7)));
    else b[i >> 3] = static_cast<unsigned char>(b[i >> 3] & ~(1u << (i & 7)));
  }
  uint64_t asideKey(long row, int index) const { return static_cast<uint64_t>(row) * columns_.size() + static_cast<uint64_t>(index); }

  Chunk newChunk(long capacity) const;
  void growFirstChunk(long capacity);
  CellView viewOf(const AnyCell& c) const;
  AnyCell anyCell(const Value& v);
  AnyCell anyText(std::string_view s);
  // Drops what the cell held (its text's arena space, its aside entry).
  void releaseCell(long row, int index);
  void releaseAny(const AnyCell& c);
  void putNative(long row, int index, const Value& v);
  void putAside(long row, int index, AnyCell c);
  void compactArenaIfWasteful();

  std::vector<Column> columns_;
  size_t rowBytes_ = 0;   // the cells of a row
  size_t bitBytes_ = 0;   // the presence bits of a row
  size_t rowStride_ = 0;  // both
  std::vector<Chunk> chunks_;
  TextArena arena_;
  std::unordered_map<uint64_t, AnyCell> aside_;  // by row * width + column
  long rows_ = 0;
  long reserved_ = 0;
};

// The value a field of this ADO type holds when v is written to it, as ADO
// converts it; raises "Multiple-step operation generated errors"
// (-2147217887) when it cannot be converted.
Value coerce(Value v, int type);

}  // namespace orvalis::recordset_detail
