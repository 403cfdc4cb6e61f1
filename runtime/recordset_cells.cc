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

uint64_t TextArena::add(std::string_view s) {
  if (blocks_.empty() || blocks_.back().size() + s.size() > blocks_.back().capacity()) {
    size_t size = blocks_.empty() ? 1024 : std::min<size_t>(blocks_.back().capacity() * 2, 64 * 1024);
    blocks_.emplace_back();
    blocks_.back().reserve(std::max(size, s.size()));
  }
  std::string& block = blocks_.back();
  uint64_t ref = (static_cast<uint64_t>(blocks_.size() - 1) << 32) | block.size();
  block.append(s);
  used_ += s.size();
  return ref;
}

size_t TextArena::capacity() const {
  size_t n = blocks_.capacity() * sizeof(std::string);
  for (const auto& b : blocks_) n += b.capacity();
  return n;
}

void CellStore::reserve(long rows) {
  long chunks = (rows + kChunkRows - 1) / kChunkRows;
  chunks_.reserve(static_cast<size_t>(chunks));
}

long CellStore::addRow() {
  if (rows_ % kChunkRows == 0) {
    chunks_.emplace_back();
    // Past the first chunk the recordset is large: take whole chunks.
    if (chunks_.size() > 1) chunks_.back().reserve(static_cast<size_t>(kChunkRows) * width_);
  }
  auto& chunk = chunks_.back();
  chunk.resize(chunk.size() + width_);
  return rows_++;
}

void CellStore::clear() {
  chunks_.clear();
  arena_ = TextArena();
  rows_ = 0;
}

std::string_view CellStore::textOf(const Cell& c) const {
  if (kindOf(c) == CellKind::ShortText) {
    return std::string_view(reinterpret_cast<const char*>(c.b + 2), c.b[1]);
  }
  return arena_.get(load<uint64_t>(c, 8), load<uint32_t>(c, 4));
}

Value CellStore::valueOf(const Cell& c) const {
  switch (kindOf(c)) {
    case CellKind::Empty: return Value();
    case CellKind::Null: return Value::null();
    case CellKind::Boolean: return Value(c.b[8] != 0);
    case CellKind::Integer: return Value(static_cast<long long>(load<int64_t>(c, 8)));
    case CellKind::Double: return Value(load<double>(c, 8));
    case CellKind::ShortText:
    case CellKind::LongText: return Value(textOf(c));
    case CellKind::Date: return Value(DateTime::fromDays(load<int32_t>(c, 8), load<int32_t>(c, 12)));
  }
  return Value::null();
}

std::string CellStore::textOfCell(const Cell& c) const {
  return isText(kindOf(c)) ? std::string(textOf(c)) : valueOf(c).text();
}

void CellStore::set(long row, int index, const Value& v) {
  put(cell(row, index), v);
  compactArenaIfWasteful();
}

void CellStore::put(Cell& c, const Value& v) {
  if (v.isText()) {
    putText(c, v.asText());
    return;
  }
  if (kindOf(c) == CellKind::LongText) arena_.release(load<uint32_t>(c, 4));
  Cell n;
  switch (v.kind()) {
    case Value::Kind::Empty: n.b[0] = static_cast<unsigned char>(CellKind::Empty); break;
    case Value::Kind::Null: n.b[0] = static_cast<unsigned char>(CellKind::Null); break;
    case Value::Kind::Boolean:
      n.b[0] = static_cast<unsigned char>(CellKind::Boolean);
      n.b[8] = v.asBool() ? 1 : 0;
      break;
    case Value::Kind::Integer:
      n.b[0] = static_cast<unsigned char>(CellKind::Integer);
      store<int64_t>(n, 8, v.asInteger());
      break;
    case Value::Kind::Double:
      n.b[0] = static_cast<unsigned char>(CellKind::Double);
      store<double>(n, 8, v.asDouble());
      break;
    case Value::Kind::Date: {
      DateTime d = v.asDate();
      if (d.days() < std::numeric_limits<int32_t>::min() || d.days() > std::numeric_limits<int32_t>::max()) {
        raiseOverflow(kSource);
      }
      n.b[0] = static_cast<unsigned char>(CellKind::Date);
      store<int32_t>(n, 8, static_cast<int32_t>(d.days()));
      store<int32_t>(n, 12, d.secondsOfDay());
      break;
    }
    case Value::Kind::Text:
      break;  // above
  }
  c = n;
}

void CellStore::putText(Cell& c, std::string_view s) {
  if (kindOf(c) == CellKind::LongText) arena_.release(load<uint32_t>(c, 4));
  Cell n;
  if (s.size() <= kShortText) {
    n.b[0] = static_cast<unsigned char>(CellKind::ShortText);
    n.b[1] = static_cast<unsigned char>(s.size());
    if (!s.empty()) std::memcpy(n.b + 2, s.data(), s.size());  // an empty view may hold no pointer
  } else {
    if (s.size() > std::numeric_limits<uint32_t>::max()) raiseOverflow(kSource);
    n.b[0] = static_cast<unsigned char>(CellKind::LongText);
    store<uint32_t>(n, 4, static_cast<uint32_t>(s.size()));
    store<uint64_t>(n, 8, arena_.add(s));
  }
  c = n;
}

void CellStore::setText(long row, int index, std::string_view text) {
  putText(cell(row, index), text);
  compactArenaIfWasteful();
}

void CellStore::copyTextOrNull(long row, int index, const CellStore& from, const Cell& c) {
  if (isText(kindOf(c))) {
    // The source may be this store, whose arena may move as it grows.
    if (&from == this && kindOf(c) == CellKind::LongText) {
      set(row, index, Value(from.textOf(c)));
      return;
    }
    setText(row, index, from.textOf(c));
    return;
  }
  Cell& target = cell(row, index);
  if (kindOf(target) == CellKind::LongText) arena_.release(load<uint32_t>(target, 4));
  target = c;
  compactArenaIfWasteful();
}

void CellStore::compactArenaIfWasteful() {
  if (!arena_.wantsCompaction()) return;
  TextArena fresh;
  for (auto& chunk : chunks_) {
    for (auto& c : chunk) {
      if (kindOf(c) == CellKind::LongText) store<uint64_t>(c, 8, fresh.add(textOf(c)));
    }
  }
  arena_ = std::move(fresh);
}

size_t CellStore::memoryUsage() const {
  size_t bytes = chunks_.capacity() * sizeof(std::vector<Cell>);
  for (const auto& chunk : chunks_) bytes += chunk.capacity() * sizeof(Cell);
  bytes += arena_.capacity();
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
