#include "runtime/recordset_cells.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "runtime/ado.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"
#include "runtime/recordset_detail.h"

namespace orvalis::recordset_detail {

namespace {

template <typename T>
T load(const unsigned char* p) {
  T v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

template <typename T>
void store(unsigned char* p, T v) {
  std::memcpy(p, &v, sizeof v);
}

size_t cellSize(Storage s) {
  switch (s) {
    case Storage::Text: return 8;
    case Storage::Int32: return 4;
    case Storage::Int64: return 8;
    case Storage::Double: return 8;
    case Storage::Date: return 8;
    case Storage::Boolean: return 1;
    case Storage::Any: return 16;
  }
  return 16;
}


int32_t checkedDays(DateTime d) {
  if (d.days() < std::numeric_limits<int32_t>::min() || d.days() > std::numeric_limits<int32_t>::max()) {
    raiseOverflow(kSource);
  }
  return static_cast<int32_t>(d.days());
}

}  // namespace

Value CellView::value() const {
  switch (kind) {
    case CellKind::Empty: return Value();
    case CellKind::Null: return Value::null();
    case CellKind::Boolean: return Value(boolean);
    case CellKind::Integer: return Value(static_cast<long long>(integer));
    case CellKind::Double: return Value(number);
    case CellKind::Text: return Value(text);
    case CellKind::Date: return Value(date());
  }
  return Value::null();
}

Storage storageFor(int type) {
  if (ado::isTextType(type)) return Storage::Text;
  switch (type) {
    case ado::adInteger:
    case ado::adSmallInt:
    case ado::adTinyInt:
    case ado::adUnsignedTinyInt: return Storage::Int32;
    case ado::adBigInt: return Storage::Int64;
    case ado::adSingle:
    case ado::adDouble:
    case ado::adDecimal:
    case ado::adNumeric:
    case ado::adVarNumeric:
    case ado::adCurrency: return Storage::Double;
    case ado::adDate:
    case ado::adDBTimeStamp:
    case ado::adDBDate:
    case ado::adDBTime: return Storage::Date;
    case ado::adBoolean: return Storage::Boolean;
    default: return Storage::Any;
  }
}

// ---- Text arena ----

TextArena::TextArena(const TextArena& o)
    : blocks_(o.blocks_), bases_(o.bases_), limit_(o.limit_), used_(o.used_), garbage_(o.garbage_) {}

TextArena& TextArena::operator=(const TextArena& o) {
  if (this != &o) *this = TextArena(o);
  return *this;
}

uint32_t TextArena::newBlock(size_t capacity) {
  auto block = std::make_shared<Block>();
  block->bytes.reset(new char[capacity]);
  block->capacity = capacity;
  return adopt(block);
}

uint32_t TextArena::adopt(const std::shared_ptr<Block>& block) {
  if (blocks_.size() >= (size_t{1} << 24)) raiseOverflow(kSource);
  blocks_.push_back(block);
  bases_.push_back(block->bytes.get());
  return static_cast<uint32_t>(blocks_.size() - 1);
}

uint64_t TextArena::add(std::string_view s) {
  if (s.empty()) return 0;
  if (s.size() > kOwnBlock) {
    const uint32_t own = newBlock(s.size());
    Block& block = *blocks_[own];
    std::memcpy(block.bytes.get(), s.data(), s.size());
    block.size = s.size();
    used_ += s.size();
    return (static_cast<uint64_t>(own) << 40) | kLengthMask;
  }
  if (current_ == SIZE_MAX || blocks_[current_]->size + s.size() > limit_) {
    limit_ = limit_ == 0 ? 1024 : std::min<size_t>(limit_ * 2, 64 * 1024);
    current_ = newBlock(limit_);
  }
  Block& block = *blocks_[current_];
  const uint64_t ref = (static_cast<uint64_t>(current_) << 40) | (static_cast<uint64_t>(block.size) << 24) | s.size();
  std::memcpy(block.bytes.get() + block.size, s.data(), s.size());
  block.size += s.size();
  used_ += s.size();
  return ref;
}

uint64_t TextArena::share(const TextArena& from, uint64_t ref) {
  const uint64_t length = ref & kLengthMask;
  if (length == 0) return 0;
  const size_t theirs = static_cast<size_t>(ref >> 40);
  const std::shared_ptr<Block>& block = from.blocks_[theirs];
  if (theirs >= sharedAs_.size()) sharedAs_.resize(from.blocks_.size(), UINT32_MAX);
  // A number left from another arena names some other block: checked by
  // identity (a block we hold cannot be freed and its address reused).
  uint32_t& ours = sharedAs_[theirs];
  if (ours >= blocks_.size() || blocks_[ours] != block) ours = adopt(block);
  used_ += length == kLengthMask ? block->size : length;
  return (static_cast<uint64_t>(ours) << 40) | (ref & ((uint64_t{1} << 40) - 1));
}

size_t TextArena::capacity() const {
  size_t n = blocks_.capacity() * (sizeof(std::shared_ptr<Block>) + sizeof(Block)) + bases_.capacity() * sizeof(char*);
  for (const auto& b : blocks_) n += b->capacity;
  return n;
}

// ---- Cell store ----

void CellStore::addColumn(int type) {
  const Storage s = storageFor(type);
  columns_.push_back(Column{s, cellSize(s), rowBytes_});
  rowBytes_ += cellSize(s);
  bitBytes_ = (columns_.size() + 7) / 8;
  rowStride_ = bitBytes_ + rowBytes_;
}

CellStore::Chunk CellStore::newChunk(long capacity) const {
  Chunk c;
  c.capacity = capacity;
  c.size = static_cast<size_t>(capacity) * rowStride_;
  c.bytes.reset(new unsigned char[c.size]);
  return c;
}

void CellStore::growFirstChunk(long capacity) {
  Chunk& old = chunks_.front();
  if (capacity <= old.capacity) return;
  Chunk c = newChunk(capacity);
  std::memcpy(c.bytes.get(), old.bytes.get(), old.size);
  old = std::move(c);
}

void CellStore::reserve(long rows) {
  reserved_ = std::max(reserved_, rows);
  chunks_.reserve(static_cast<size_t>((rows + kChunkRows - 1) / kChunkRows));
  if (chunks_.size() == 1) growFirstChunk(std::min(kChunkRows, rows));
}

long CellStore::addRow() {
  const size_t c = static_cast<size_t>(rows_ / kChunkRows);
  if (c == chunks_.size()) {
    chunks_.push_back(newChunk(c == 0 ? std::min(kChunkRows, std::max(reserved_, 16L)) : kChunkRows));
  } else if (rows_ % kChunkRows == chunks_[c].capacity) {
    growFirstChunk(std::min(kChunkRows, chunks_[c].capacity * 4));  // only the first chunk starts short
  }
  std::memset(rowBits(chunks_[c], rows_ % kChunkRows), 0, bitBytes_);  // all Null
  return rows_++;
}

void CellStore::clear() {
  chunks_.clear();
  arena_ = TextArena();
  aside_.clear();
  rows_ = 0;
  reserved_ = 0;
}

CellView CellStore::viewOf(const AnyCell& c) const {
  CellView v;
  v.kind = static_cast<CellKind>(c.b[0]);
  switch (v.kind) {
    case CellKind::Boolean: v.boolean = c.b[8] != 0; break;
    case CellKind::Integer: v.integer = load<int64_t>(c.b + 8); break;
    case CellKind::Double: v.number = load<double>(c.b + 8); break;
    case CellKind::Text: v.text = arena_.get(load<uint64_t>(c.b + 8)); break;
    case CellKind::Date:
      v.days = load<int32_t>(c.b + 8);
      v.seconds = load<int32_t>(c.b + 12);
      break;
    default: break;
  }
  return v;
}

CellView CellStore::view(long row, int index) const {
  const Chunk& ch = chunkOf(row);
  const long r = row % kChunkRows;
  if (!bit(rowBits(ch, r), index)) {
    if (aside_.empty()) return CellView{};
    auto it = aside_.find(asideKey(row, index));
    return it == aside_.end() ? CellView{} : viewOf(it->second);
  }
  const Column& col = columns_[static_cast<size_t>(index)];
  const unsigned char* p = data(ch, col, r);
  CellView v;
  switch (col.storage) {
    case Storage::Text:
      v.kind = CellKind::Text;
      v.text = arena_.get(load<uint64_t>(p));
      break;
    case Storage::Int32:
      v.kind = CellKind::Integer;
      v.integer = load<int32_t>(p);
      break;
    case Storage::Int64:
      v.kind = CellKind::Integer;
      v.integer = load<int64_t>(p);
      break;
    case Storage::Double:
      v.kind = CellKind::Double;
      v.number = load<double>(p);
      break;
    case Storage::Date:
      v.kind = CellKind::Date;
      v.days = load<int32_t>(p);
      v.seconds = load<int32_t>(p + 4);
      break;
    case Storage::Boolean:
      v.kind = CellKind::Boolean;
      v.boolean = *p != 0;
      break;
    case Storage::Any: {
      AnyCell c;
      std::memcpy(c.b, p, sizeof c.b);
      return viewOf(c);
    }
  }
  return v;
}

bool CellStore::isNull(long row, int index) const {
  const Column& col = columns_[static_cast<size_t>(index)];
  if (col.storage != Storage::Any && bit(rowBits(chunkOf(row), row % kChunkRows), index)) return false;
  return isNullish(view(row, index).kind);
}

CellStore::AnyCell CellStore::anyText(std::string_view s) {
  AnyCell c;
  c.b[0] = static_cast<unsigned char>(CellKind::Text);
  store<uint64_t>(c.b + 8, arena_.add(s));
  return c;
}

CellStore::AnyCell CellStore::anyCell(const Value& v) {
  AnyCell c;
  switch (v.kind()) {
    case Value::Kind::Empty: c.b[0] = static_cast<unsigned char>(CellKind::Empty); break;
    case Value::Kind::Null: break;
    case Value::Kind::Boolean:
      c.b[0] = static_cast<unsigned char>(CellKind::Boolean);
      c.b[8] = v.asBool() ? 1 : 0;
      break;
    case Value::Kind::Integer:
      c.b[0] = static_cast<unsigned char>(CellKind::Integer);
      store<int64_t>(c.b + 8, v.asInteger());
      break;
    case Value::Kind::Double:
      c.b[0] = static_cast<unsigned char>(CellKind::Double);
      store<double>(c.b + 8, v.asDouble());
      break;
    case Value::Kind::Text: return anyText(v.asText());
    case Value::Kind::Date: {
      const DateTime d = v.asDate();
      c.b[0] = static_cast<unsigned char>(CellKind::Date);
      store<int32_t>(c.b + 8, checkedDays(d));
      store<int32_t>(c.b + 12, d.secondsOfDay());
      break;
    }
  }
  return c;
}

void CellStore::releaseAny(const AnyCell& c) {
  if (static_cast<CellKind>(c.b[0]) == CellKind::Text) arena_.release(arena_.get(load<uint64_t>(c.b + 8)).size());
}

void CellStore::releaseCell(long row, int index) {
  const Chunk& ch = chunkOf(row);
  const long r = row % kChunkRows;
  const Column& col = columns_[static_cast<size_t>(index)];
  if (bit(rowBits(ch, r), index)) {
    const unsigned char* p = data(ch, col, r);
    if (col.storage == Storage::Text) {
      arena_.release(arena_.get(load<uint64_t>(p)).size());
    } else if (col.storage == Storage::Any) {
      AnyCell c;
      std::memcpy(c.b, p, sizeof c.b);
      releaseAny(c);
    }
    return;
  }
  if (aside_.empty()) return;
  auto it = aside_.find(asideKey(row, index));
  if (it == aside_.end()) return;
  releaseAny(it->second);
  aside_.erase(it);
}

void CellStore::set(long row, int index, const Value& v) {
  releaseCell(row, index);
  const Chunk& ch = chunkOf(row);
  const long r = row % kChunkRows;
  const Column& col = columns_[static_cast<size_t>(index)];
  unsigned char* b = rowBits(ch, r);
  unsigned char* p = data(ch, col, r);
  bool native = true;
  switch (v.kind()) {
    case Value::Kind::Null: setBit(b, index, false); return;
    case Value::Kind::Text:
      if (col.storage != Storage::Text) native = false;
      else store<uint64_t>(p, arena_.add(v.asText()));
      break;
    case Value::Kind::Integer:
      if (col.storage == Storage::Int64) store<int64_t>(p, v.asInteger());
      else if (col.storage == Storage::Int32 && v.asInteger() >= std::numeric_limits<int32_t>::min() &&
               v.asInteger() <= std::numeric_limits<int32_t>::max()) store<int32_t>(p, static_cast<int32_t>(v.asInteger()));
      else native = false;
      break;
    case Value::Kind::Double:
      if (col.storage == Storage::Double) store<double>(p, v.asDouble());
      else native = false;
      break;
    case Value::Kind::Date:
      if (col.storage == Storage::Date) {
        store<int32_t>(p, checkedDays(v.asDate()));
        store<int32_t>(p + 4, v.asDate().secondsOfDay());
      } else {
        native = false;
      }
      break;
    case Value::Kind::Boolean:
      if (col.storage == Storage::Boolean) *p = v.asBool() ? 1 : 0;
      else native = false;
      break;
    case Value::Kind::Empty: native = false; break;
  }
  if (!native) {
    AnyCell c = anyCell(v);
    if (col.storage == Storage::Any) {
      std::memcpy(p, c.b, sizeof c.b);
    } else {
      setBit(b, index, false);
      aside_[asideKey(row, index)] = c;
      compactArenaIfWasteful();
      return;
    }
  }
  setBit(b, index, true);
  compactArenaIfWasteful();
}

void CellStore::setText(long row, int index, std::string_view text) {
  const Column& col = columns_[static_cast<size_t>(index)];
  if (col.storage != Storage::Text) {
    set(row, index, Value(text));
    return;
  }
  // The text may be in this store's arena: add it before the old one is
  // released or the arena compacted.
  const uint64_t ref = arena_.add(text);
  const Chunk& ch = chunkOf(row);
  const long r = row % kChunkRows;
  unsigned char* b = rowBits(ch, r);
  unsigned char* p = data(ch, col, r);
  if (bit(b, index)) {
    arena_.release(arena_.get(load<uint64_t>(p)).size());
  } else if (!aside_.empty()) {
    releaseCell(row, index);
  }
  store<uint64_t>(p, ref);
  setBit(b, index, true);
  compactArenaIfWasteful();
}

bool CellStore::copyCell(long row, int index, const CellStore& from, long fromRow, int fromIndex, bool shareText) {
  const Column& col = columns_[static_cast<size_t>(index)];
  const Column& src = from.columns_[static_cast<size_t>(fromIndex)];
  const Chunk& fch = from.chunkOf(fromRow);
  const long fr = fromRow % kChunkRows;
  if (!bit(from.rowBits(fch, fr), fromIndex)) {
    if (!from.aside_.empty() && from.aside_.count(from.asideKey(fromRow, fromIndex))) return false;
    if (src.storage == Storage::Any) return false;  // Null or Empty: the caller tells
    unsigned char* b = rowBits(chunkOf(row), row % kChunkRows);
    if (bit(b, index) || !aside_.empty()) releaseCell(row, index);
    setBit(b, index, false);
    return true;
  }
  if (src.storage != col.storage || col.storage == Storage::Any) return false;
  const unsigned char* p = from.data(fch, src, fr);
  if (col.storage == Storage::Text) {
    if (!shareText || &from == this) {
      setText(row, index, from.arena_.get(load<uint64_t>(p)));
      return true;
    }
    const uint64_t ref = arena_.share(from.arena_, load<uint64_t>(p));
    const Chunk& ch = chunkOf(row);
    const long r = row % kChunkRows;
    unsigned char* b = rowBits(ch, r);
    if (bit(b, index) || !aside_.empty()) releaseCell(row, index);
    store<uint64_t>(data(ch, col, r), ref);
    setBit(b, index, true);
    compactArenaIfWasteful();
    return true;
  }
  releaseCell(row, index);
  const Chunk& ch = chunkOf(row);
  const long r = row % kChunkRows;
  std::memcpy(data(ch, col, r), p, col.size);
  setBit(rowBits(ch, r), index, true);
  return true;
}

void CellStore::compactArenaIfWasteful() {
  if (!arena_.wantsCompaction()) return;
  TextArena fresh;
  for (size_t ci = 0; ci < chunks_.size(); ++ci) {
    const Chunk& ch = chunks_[ci];
    const long n = std::min(kChunkRows, rows_ - static_cast<long>(ci) * kChunkRows);
    for (size_t i = 0; i < columns_.size(); ++i) {
      const Column& col = columns_[i];
      if (col.storage != Storage::Text && col.storage != Storage::Any) continue;
      for (long r = 0; r < n; ++r) {
        if (!bit(rowBits(ch, r), static_cast<int>(i))) continue;
        unsigned char* p = data(ch, col, r);
        if (col.storage == Storage::Any) {
          if (static_cast<CellKind>(p[0]) != CellKind::Text) continue;
          p += 8;
        }
        store<uint64_t>(p, fresh.add(arena_.get(load<uint64_t>(p))));
      }
    }
  }
  for (auto& [key, c] : aside_) {
    if (static_cast<CellKind>(c.b[0]) == CellKind::Text) store<uint64_t>(c.b + 8, fresh.add(arena_.get(load<uint64_t>(c.b + 8))));
  }
  arena_ = std::move(fresh);
}

size_t CellStore::memoryUsage() const {
  size_t bytes = chunks_.capacity() * sizeof(Chunk);
  for (const auto& chunk : chunks_) bytes += chunk.size;
  bytes += arena_.capacity();
  bytes += aside_.size() * (sizeof(AnyCell) + 2 * sizeof(void*) + sizeof(uint64_t)) + aside_.bucket_count() * sizeof(void*);
  return bytes;
}

// ---- Conversion to the field's type ----

namespace {


int64_t roundToInt64(double d) {
  double whole = std::floor(d);
  double diff = d - whole;
  if (diff > 0.5 || (diff == 0.5 && std::fmod(whole, 2.0) != 0)) whole += 1;
  if (!(whole >= -9.2e18 && whole <= 9.2e18)) raiseOverflow();
  return static_cast<int64_t>(whole);
}

}  // namespace

Value coerce(Value v, int type) {
  if (v.isNull() || type == ado::adVariant || type == ado::adEmpty) return v;
  if (ado::isTextType(type)) {
    if (v.isText()) return v;  // moved, not copied
    return Value(v.text());
  }
  if (v.isEmpty() || (v.isText() && trim(v.asText()).empty())) return Value::null();
  try {
    switch (type) {
      case ado::adSmallInt:
        return Value(static_cast<long>(v.toInteger()));
      case ado::adInteger:
      case ado::adTinyInt:
      case ado::adUnsignedTinyInt:
        return Value(static_cast<long>(v.toLong()));
      case ado::adBigInt:
        if (v.kind() == Value::Kind::Integer) return v;  // no trip through a double
        return Value(static_cast<long long>(roundToInt64(v.toDouble())));
      case ado::adSingle:
      case ado::adDouble:
      case ado::adDecimal:
      case ado::adNumeric:
      case ado::adVarNumeric:
        return Value(v.toDouble());
      case ado::adCurrency:
        return Value(basicRound(v.toDouble(), 4));
      case ado::adDate:
      case ado::adDBTimeStamp:
        return Value(v.toDate());
      case ado::adDBDate:
        return Value(v.toDate().datePart());
      case ado::adDBTime:
        return Value(DateTime::fromDays(0, v.toDate().secondsOfDay()));
      case ado::adBoolean:
        return Value(v.toBool());
      default:
        return v;
    }
  } catch (const Error&) {
    // A date column of an engine that does not enforce its types (SQLite)
    // may hold text that is no date: keep the text rather than lose the row.
    if (v.isText() && (type == ado::adDate || type == ado::adDBTimeStamp || type == ado::adDBDate)) {
      return v;
    }
    throw Error(err::kMultipleStep, "Microsoft Cursor Engine",
                "Multiple-step operation generated errors. Check each status value.");
  }
}

}  // namespace orvalis::recordset_detail
