#include "runtime/recordset.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis {

namespace {

constexpr const char* kSource = "ADODB.Recordset";

[[noreturn]] void raiseNoCurrentRecord() {
  throw Error(err::kNoCurrentRecord, kSource,
              "Either BOF or EOF is True, or the current record has been deleted. Requested "
              "operation requires a current record.");
}

[[noreturn]] void raiseItemNotFound() {
  throw Error(err::kItemNotFound, "ADODB.Fields",
              "Item cannot be found in the collection corresponding to the requested name or ordinal.");
}

[[noreturn]] void raiseBadArgument(const std::string& detail) {
  throw Error(err::kInvalidArgument, kSource,
              "Arguments are of the wrong type, are out of acceptable range, or are in conflict with "
              "one another. (" + detail + ")");
}

// ASCII upper case: names and codes are ASCII, and this is on every probe.
char up(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }

std::string_view trimView(std::string_view s) {
  size_t b = s.find_first_not_of(' ');
  if (b == std::string_view::npos) return {};
  size_t e = s.find_last_not_of(' ');
  return s.substr(b, e - b + 1);
}

size_t hashNoCase(std::string_view s) {
  uint64_t h = 1469598103934665603ull;  // FNV-1a over the upper-cased bytes
  for (char c : s) {
    h ^= static_cast<unsigned char>(up(c));
    h *= 1099511628211ull;
  }
  return static_cast<size_t>(h);
}

bool equalNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (up(a[i]) != up(b[i])) return false;
  }
  return true;
}

struct NameHash {
  using is_transparent = void;
  size_t operator()(std::string_view s) const { return hashNoCase(s); }
};
struct NameEqual {
  using is_transparent = void;
  bool operator()(std::string_view a, std::string_view b) const { return equalNoCase(a, b); }
};

int compareNoCase(std::string_view a, std::string_view b) {
  size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    unsigned char x = static_cast<unsigned char>(up(a[i]));
    unsigned char y = static_cast<unsigned char>(up(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

template <typename T>
int compareNumbers(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

// ---- Cells ----

// A 16-byte tagged value. Byte 0 is the kind. Short texts keep their length
// in byte 1 and their bytes in 2..15; long texts keep their length in bytes
// 4..7 and their arena reference in 8..15; other payloads are in 8..15.
enum class CellKind : unsigned char { Empty, Null, Boolean, Integer, Double, ShortText, LongText, Date };

struct Cell {
  alignas(8) unsigned char b[16] = {static_cast<unsigned char>(CellKind::Null)};
};
static_assert(sizeof(Cell) == 16);

constexpr size_t kShortText = 14;

CellKind kindOf(const Cell& c) { return static_cast<CellKind>(c.b[0]); }

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

bool isNullish(CellKind k) { return k == CellKind::Null || k == CellKind::Empty; }
bool isText(CellKind k) { return k == CellKind::ShortText || k == CellKind::LongText; }

// Texts longer than a cell holds, in blocks that grow from 1 KiB to 64 KiB;
// a reference is (block << 32) | offset, so blocks never move texts.
class TextArena {
 public:
  uint64_t add(std::string_view s) {
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
  std::string_view get(uint64_t ref, uint32_t length) const {
    return std::string_view(blocks_[ref >> 32]).substr(ref & 0xffffffffu, length);
  }
  void release(size_t length) { garbage_ += length; }
  bool wantsCompaction() const { return garbage_ > 64 * 1024 && garbage_ * 2 > used_; }
  size_t capacity() const {
    size_t n = blocks_.capacity() * sizeof(std::string);
    for (const auto& b : blocks_) n += b.capacity();
    return n;
  }

 private:
  std::vector<std::string> blocks_;
  size_t used_ = 0;
  size_t garbage_ = 0;
};

bool isTextType(int type) {
  switch (type) {
    case ado::adBSTR:
    case ado::adChar:
    case ado::adWChar:
    case ado::adVarChar:
    case ado::adLongVarChar:
    case ado::adVarWChar:
    case ado::adLongVarWChar:
    case ado::adGUID:
      return true;
    default:
      return false;
  }
}

int64_t roundToInt64(double d) {
  double whole = std::floor(d);
  double diff = d - whole;
  if (diff > 0.5 || (diff == 0.5 && std::fmod(whole, 2.0) != 0)) whole += 1;
  if (!(whole >= -9.2e18 && whole <= 9.2e18)) raiseOverflow();
  return static_cast<int64_t>(whole);
}

// The value a field of this ADO type holds when v is written to it.
Value coerce(Value v, int type) {
  if (v.isNull() || type == ado::adVariant || type == ado::adEmpty) return v;
  if (isTextType(type)) return v.isText() ? v : Value(v.text());
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

// ---- Filter ----

enum class Op { Eq, Ne, Lt, Gt, Le, Ge, Like, IsNull, IsNotNull };

struct Literal {
  enum Kind { Text, Number, Date } kind = Text;
  std::string text;
  double number = 0;
  DateTime date;
  std::optional<double> textNumber;   // a Text literal read as a number
  std::optional<DateTime> textDate;   // a Text literal read as a date
};

struct FilterNode {
  enum Kind { And, Or, Clause } kind = Clause;
  int left = -1;
  int right = -1;
  int field = -1;
  Op op = Op::Eq;
  Literal literal;
};

struct FilterToken {
  enum Kind { LParen, RParen, Name, Text, Date, Number, Operator, End } kind;
  std::string text;
};

std::vector<FilterToken> lexFilter(std::string_view s) {
  std::vector<FilterToken> out;
  size_t i = 0;
  auto closing = [&](char quote) -> std::string {
    std::string text;
    for (++i;; ++i) {
      if (i >= s.size()) raiseBadArgument("unterminated " + std::string(1, quote));
      if (s[i] == quote) {
        if (quote == '\'' && i + 1 < s.size() && s[i + 1] == '\'') {
          text.push_back('\'');
          ++i;
          continue;
        }
        ++i;
        return text;
      }
      text.push_back(s[i]);
    }
  };
  while (i < s.size()) {
    char c = s[i];
    if (std::isspace(static_cast<unsigned char>(c))) {
      ++i;
    } else if (c == '(') {
      out.push_back({FilterToken::LParen, "("});
      ++i;
    } else if (c == ')') {
      out.push_back({FilterToken::RParen, ")"});
      ++i;
    } else if (c == '[') {
      size_t end = s.find(']', i);
      if (end == std::string_view::npos) raiseBadArgument("unterminated [");
      out.push_back({FilterToken::Name, std::string(s.substr(i + 1, end - i - 1))});
      i = end + 1;
    } else if (c == '\'' || c == '"') {
      out.push_back({FilterToken::Text, closing(c)});
    } else if (c == '#') {
      out.push_back({FilterToken::Date, closing('#')});
    } else if (c == '<' || c == '>' || c == '=' || c == '!') {
      std::string op(1, c);
      if (i + 1 < s.size() && (s[i + 1] == '=' || (c == '<' && s[i + 1] == '>'))) op.push_back(s[++i]);
      if (op == "!") raiseBadArgument("operator !");
      if (op == "!=") op = "<>";
      out.push_back({FilterToken::Operator, op});
      ++i;
    } else if (std::isdigit(static_cast<unsigned char>(c)) ||
               ((c == '-' || c == '+' || c == '.') && i + 1 < s.size() &&
                (std::isdigit(static_cast<unsigned char>(s[i + 1])) || s[i + 1] == '.'))) {
      size_t j = i + 1;
      while (j < s.size() && (std::isalnum(static_cast<unsigned char>(s[j])) || s[j] == '.' ||
                              ((s[j] == '+' || s[j] == '-') && (s[j - 1] == 'e' || s[j - 1] == 'E')))) {
        ++j;
      }
      out.push_back({FilterToken::Number, std::string(s.substr(i, j - i))});
      i = j;
    } else {
      size_t j = i;
      while (j < s.size() && !std::isspace(static_cast<unsigned char>(s[j])) &&
             std::string_view("()<>=!'\"#[").find(s[j]) == std::string_view::npos) {
        ++j;
      }
      out.push_back({FilterToken::Name, std::string(s.substr(i, j - i))});
      i = j;
    }
  }
  out.push_back({FilterToken::End, ""});
  return out;
}

class FilterParser {
 public:
  FilterParser(std::string_view criteria, const Recordset& rs, std::vector<FilterNode>& nodes)
      : tokens_(lexFilter(criteria)), rs_(rs), nodes_(nodes) {}

  int parse() {
    int root = parseOr();
    if (peek().kind != FilterToken::End) raiseBadArgument("unexpected '" + peek().text + "'");
    return root;
  }

 private:
  const FilterToken& peek() const { return tokens_[pos_]; }
  bool isWord(const char* word) const {
    return peek().kind == FilterToken::Name && equalsNoCase(peek().text, word);
  }

  int add(FilterNode node) {
    nodes_.push_back(std::move(node));
    return static_cast<int>(nodes_.size()) - 1;
  }

  int parseOr() {
    int left = parseAnd();
    while (isWord("OR")) {
      ++pos_;
      FilterNode n;
      n.kind = FilterNode::Or;
      n.left = left;
      n.right = parseAnd();
      left = add(std::move(n));
    }
    return left;
  }

  int parseAnd() {
    int left = parseFactor();
    while (isWord("AND")) {
      ++pos_;
      FilterNode n;
      n.kind = FilterNode::And;
      n.left = left;
      n.right = parseFactor();
      left = add(std::move(n));
    }
    return left;
  }

  int parseFactor() {
    if (peek().kind == FilterToken::LParen) {
      ++pos_;
      int inner = parseOr();
      if (peek().kind != FilterToken::RParen) raiseBadArgument("missing )");
      ++pos_;
      return inner;
    }
    return parseClause();
  }

  int parseClause() {
    if (peek().kind != FilterToken::Name) raiseBadArgument("field name expected");
    FilterNode n;
    n.field = rs_.fieldIndex(peek().text);
    if (n.field < 0) raiseItemNotFound();
    ++pos_;
    const FilterToken& opToken = peek();
    if (opToken.kind == FilterToken::Operator) {
      static const std::pair<const char*, Op> kOps[] = {{"=", Op::Eq},  {"<>", Op::Ne}, {"<", Op::Lt},
                                                        {">", Op::Gt},  {"<=", Op::Le}, {">=", Op::Ge}};
      for (const auto& [text, op] : kOps) {
        if (opToken.text == text) n.op = op;
      }
      ++pos_;
    } else if (isWord("LIKE")) {
      n.op = Op::Like;
      ++pos_;
    } else if (isWord("IS")) {
      ++pos_;
      bool negated = isWord("NOT");
      if (negated) ++pos_;
      if (!isWord("NULL")) raiseBadArgument("NULL expected after IS");
      ++pos_;
      n.op = negated ? Op::IsNotNull : Op::IsNull;
      return add(std::move(n));
    } else {
      raiseBadArgument("operator expected");
    }

    const FilterToken& v = peek();
    if (isWord("NULL")) {
      if (n.op == Op::Eq) {
        n.op = Op::IsNull;
      } else if (n.op == Op::Ne) {
        n.op = Op::IsNotNull;
      } else {
        raiseBadArgument("NULL compares only with = or <>");
      }
    } else if (v.kind == FilterToken::Text) {
      n.literal.kind = Literal::Text;
      n.literal.text = v.text;
      n.literal.textNumber = parseNumber(v.text);
      n.literal.textDate = parseDate(v.text);
    } else if (v.kind == FilterToken::Number && n.op != Op::Like) {
      auto d = parseNumber(v.text);
      if (!d) raiseBadArgument("bad number " + v.text);
      n.literal.kind = Literal::Number;
      n.literal.number = *d;
      n.literal.text = v.text;
    } else if (v.kind == FilterToken::Date && n.op != Op::Like) {
      auto d = parseDate(v.text);
      if (!d) raiseBadArgument("bad date #" + v.text + "#");
      n.literal.kind = Literal::Date;
      n.literal.date = *d;
      n.literal.text = v.text;
    } else {
      raiseBadArgument("value expected");
    }
    ++pos_;
    return add(std::move(n));
  }

  std::vector<FilterToken> tokens_;
  size_t pos_ = 0;
  const Recordset& rs_;
  std::vector<FilterNode>& nodes_;
};

// '*' and '%' stand for any run of characters; letters match in any case.
bool likeMatch(std::string_view s, std::string_view pattern) {
  size_t si = 0, pi = 0, star = std::string_view::npos, mark = 0;
  while (si < s.size()) {
    if (pi < pattern.size() && (pattern[pi] == '*' || pattern[pi] == '%')) {
      star = pi++;
      mark = si;
    } else if (pi < pattern.size() && up(pattern[pi]) == up(s[si])) {
      ++pi;
      ++si;
    } else if (star != std::string_view::npos) {
      pi = star + 1;
      si = ++mark;
    } else {
      return false;
    }
  }
  while (pi < pattern.size() && (pattern[pi] == '*' || pattern[pi] == '%')) ++pi;
  return pi == pattern.size();
}

bool applyOp(Op op, int cmp) {
  switch (op) {
    case Op::Eq: return cmp == 0;
    case Op::Ne: return cmp != 0;
    case Op::Lt: return cmp < 0;
    case Op::Gt: return cmp > 0;
    case Op::Le: return cmp <= 0;
    case Op::Ge: return cmp >= 0;
    default: return false;
  }
}

int64_t dateKey(DateTime d) { return d.days() * 86400 + d.secondsOfDay(); }

struct SortKey {
  int field;
  bool descending;
};

}  // namespace

// ---- Recordset ----

struct Recordset::Impl {
  static constexpr long kChunkRows = 1024;

  std::vector<FieldDef> fields;
  std::unordered_map<std::string, int, NameHash, NameEqual> byName;  // any case
  std::vector<std::vector<Cell>> chunks;        // kChunkRows rows each, row-major
  TextArena arena;
  long rows = 0;
  bool open = false;
  // Rows that were deleted; empty until the first delete.
  std::vector<bool> deleted;
  long deletedCount = 0;
  // Visible rows in cursor order; with `identity` all rows in storage order.
  // A deleted row leaves a tombstone (-1) in the view so that the cursor can
  // stay on it until it moves; tombstones are squeezed out as the cursor
  // moves once they make up half the view.
  bool identity = true;
  std::vector<long> view;
  long tombstones = 0;
  mutable std::vector<long> positionOfRow;  // inverse of view, built on demand
  long cursor = -1;  // index into the view slots; -1 = BOF, == slots() = EOF
  std::string filter;
  std::string sort;

  size_t width() const { return fields.size(); }
  long slots() const { return identity ? rows : static_cast<long>(view.size()); }
  long visible() const { return slots() - tombstones; }
  long slotRow(long pos) const { return identity ? pos : view[static_cast<size_t>(pos)]; }
  bool onTombstone() const { return !identity && cursor >= 0 && cursor < slots() && view[static_cast<size_t>(cursor)] < 0; }
  bool atEof() const { return visible() == 0 || (cursor >= slots()); }
  bool atBof() const { return visible() == 0 || cursor < 0; }

  void skipForward() {
    while (!identity && cursor >= 0 && cursor < slots() && view[static_cast<size_t>(cursor)] < 0) ++cursor;
  }
  void skipBackward() {
    while (!identity && cursor >= 0 && cursor < slots() && view[static_cast<size_t>(cursor)] < 0) --cursor;
  }
  void squeezeTombstones() {
    if (tombstones < 1024 || tombstones * 2 < static_cast<long>(view.size()) || onTombstone()) return;
    long live = 0;
    long newCursor = cursor < 0 ? -1 : -2;
    for (size_t i = 0; i < view.size(); ++i) {
      if (static_cast<long>(i) == cursor) newCursor = live;
      if (view[i] >= 0) view[static_cast<size_t>(live++)] = view[i];
    }
    view.resize(static_cast<size_t>(live));
    cursor = newCursor == -2 ? live : newCursor;
    tombstones = 0;
    invalidatePositions();
  }

  Cell& cell(long row, int index) {
    return chunks[static_cast<size_t>(row / kChunkRows)][static_cast<size_t>(row % kChunkRows) * width() +
                                                         static_cast<size_t>(index)];
  }
  const Cell& cell(long row, int index) const { return const_cast<Impl*>(this)->cell(row, index); }

  std::string_view textOf(const Cell& c) const {
    if (kindOf(c) == CellKind::ShortText) {
      return std::string_view(reinterpret_cast<const char*>(c.b + 2), c.b[1]);
    }
    return arena.get(load<uint64_t>(c, 8), load<uint32_t>(c, 4));
  }

  Value valueOf(const Cell& c) const {
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

  std::string textOfCell(const Cell& c) const {
    return isText(kindOf(c)) ? std::string(textOf(c)) : valueOf(c).text();
  }

  void put(Cell& c, const Value& v) {
    if (kindOf(c) == CellKind::LongText) arena.release(load<uint32_t>(c, 4));
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
      case Value::Kind::Text: {
        const std::string& s = v.asText();
        if (s.size() <= kShortText) {
          n.b[0] = static_cast<unsigned char>(CellKind::ShortText);
          n.b[1] = static_cast<unsigned char>(s.size());
          std::memcpy(n.b + 2, s.data(), s.size());
        } else {
          if (s.size() > std::numeric_limits<uint32_t>::max()) raiseOverflow(kSource);
          n.b[0] = static_cast<unsigned char>(CellKind::LongText);
          store<uint32_t>(n, 4, static_cast<uint32_t>(s.size()));
          store<uint64_t>(n, 8, arena.add(s));
        }
        break;
      }
    }
    c = n;
  }

  void compactArenaIfWasteful() {
    if (!arena.wantsCompaction()) return;
    TextArena fresh;
    for (auto& chunk : chunks) {
      for (auto& c : chunk) {
        if (kindOf(c) == CellKind::LongText) store<uint64_t>(c, 8, fresh.add(textOf(c)));
      }
    }
    arena = std::move(fresh);
  }

  bool rowDeleted(long row) const { return deletedCount > 0 && deleted[static_cast<size_t>(row)]; }

  // Sort order of two cells: Null first, then numbers and dates, then texts.
  int compareCells(const Cell& a, const Cell& b) const {
    auto rank = [](CellKind k) { return isNullish(k) ? 0 : isText(k) ? 2 : 1; };
    CellKind ka = kindOf(a), kb = kindOf(b);
    int ra = rank(ka), rb = rank(kb);
    if (ra != rb) return ra < rb ? -1 : 1;
    if (ra == 0) return 0;
    if (ra == 2) return compareNoCase(textOf(a), textOf(b));
    if (ka == CellKind::Date && kb == CellKind::Date) {
      return compareNumbers(dateKey(valueOf(a).asDate()), dateKey(valueOf(b).asDate()));
    }
    if (ka == CellKind::Integer && kb == CellKind::Integer) {
      return compareNumbers(load<int64_t>(a, 8), load<int64_t>(b, 8));
    }
    return compareNumbers(valueOf(a).toDouble(), valueOf(b).toDouble());
  }

  bool clauseMatches(const FilterNode& n, const Cell& c) const {
    CellKind k = kindOf(c);
    if (n.op == Op::IsNull) return isNullish(k);
    if (n.op == Op::IsNotNull) return !isNullish(k);
    if (isNullish(k)) return false;
    const Literal& lit = n.literal;
    if (n.op == Op::Like) {
      return isText(k) ? likeMatch(textOf(c), lit.text) : likeMatch(valueOf(c).text(), lit.text);
    }
    if (isText(k)) {
      std::string_view s = textOf(c);
      if (lit.kind == Literal::Text) return applyOp(n.op, compareNoCase(s, lit.text));
      if (lit.kind == Literal::Number) {
        auto d = parseNumber(s);
        return d ? applyOp(n.op, compareNumbers(*d, lit.number)) : applyOp(n.op, compareNoCase(s, lit.text));
      }
      auto d = parseDate(s);
      return d && applyOp(n.op, compareNumbers(dateKey(*d), dateKey(lit.date)));
    }
    Value v = valueOf(c);
    if (k == CellKind::Date) {
      int64_t key = dateKey(v.asDate());
      if (lit.kind == Literal::Date) return applyOp(n.op, compareNumbers(key, dateKey(lit.date)));
      if (lit.kind == Literal::Number) return applyOp(n.op, compareNumbers(v.asDate().serial(), lit.number));
      if (lit.textDate) return applyOp(n.op, compareNumbers(key, dateKey(*lit.textDate)));
      return applyOp(n.op, compareNoCase(v.text(), lit.text));
    }
    double x = v.toDouble();
    if (lit.kind == Literal::Number) return applyOp(n.op, compareNumbers(x, lit.number));
    if (lit.kind == Literal::Date) return applyOp(n.op, compareNumbers(x, lit.date.serial()));
    if (lit.textNumber) return applyOp(n.op, compareNumbers(x, *lit.textNumber));
    return applyOp(n.op, compareNoCase(v.text(), lit.text));
  }

  bool matches(const std::vector<FilterNode>& nodes, int at, long row) const {
    const FilterNode& n = nodes[static_cast<size_t>(at)];
    switch (n.kind) {
      case FilterNode::And: return matches(nodes, n.left, row) && matches(nodes, n.right, row);
      case FilterNode::Or: return matches(nodes, n.left, row) || matches(nodes, n.right, row);
      case FilterNode::Clause: return clauseMatches(n, cell(row, n.field));
    }
    return false;
  }

  void invalidatePositions() { positionOfRow.clear(); }

  // Rebuilds the visible rows from the filter, the sort and the deletions,
  // then puts the cursor on the first of them.
  void rebuildView(const std::vector<FilterNode>& filterNodes, int root, const std::vector<SortKey>& keys) {
    invalidatePositions();
    cursor = 0;
    view.clear();
    tombstones = 0;
    if (root < 0 && keys.empty() && deletedCount == 0) {
      identity = true;
      return;
    }
    identity = false;
    for (long row = 0; row < rows; ++row) {
      if (rowDeleted(row)) continue;
      if (root >= 0 && !matches(filterNodes, root, row)) continue;
      view.push_back(row);
    }
    if (!keys.empty()) {
      std::stable_sort(view.begin(), view.end(), [&](long a, long b) {
        for (const auto& k : keys) {
          int c = compareCells(cell(a, k.field), cell(b, k.field));
          if (c != 0) return k.descending ? c > 0 : c < 0;
        }
        return false;
      });
    }
  }
};

Recordset::Recordset() : impl_(std::make_unique<Impl>()) {}
Recordset::~Recordset() = default;
Recordset::Recordset(const Recordset& o) : impl_(std::make_unique<Impl>(*o.impl_)) {}
Recordset& Recordset::operator=(const Recordset& o) {
  if (this != &o) impl_ = std::make_unique<Impl>(*o.impl_);
  return *this;
}
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;

void Recordset::appendField(std::string name, int type, long definedSize, int attributes) {
  FieldDef f;
  f.name = std::move(name);
  f.type = type;
  f.definedSize = definedSize;
  f.attributes = attributes;
  appendField(std::move(f));
}

void Recordset::appendField(FieldDef field) {
  if (impl_->open) {
    throw Error(err::kDatabase, "ADODB.Fields", "Operation is not allowed when the object is open.");
  }
  impl_->byName.emplace(std::string(trimView(field.name)), static_cast<int>(impl_->fields.size()));
  impl_->fields.push_back(std::move(field));
}

const std::vector<FieldDef>& Recordset::fields() const { return impl_->fields; }
int Recordset::fieldCount() const { return static_cast<int>(impl_->fields.size()); }

int Recordset::fieldIndex(std::string_view name) const {
  auto it = impl_->byName.find(trimView(name));
  return it == impl_->byName.end() ? -1 : it->second;
}

const FieldDef& Recordset::field(int index) const {
  if (index < 0 || index >= fieldCount()) raiseItemNotFound();
  return impl_->fields[static_cast<size_t>(index)];
}

void Recordset::open() {
  if (impl_->open) return;
  impl_->open = true;
  impl_->cursor = 0;
}

void Recordset::close() {
  Impl& m = *impl_;
  m.open = false;
  m.chunks.clear();
  m.arena = TextArena();
  m.rows = 0;
  m.deleted.clear();
  m.deletedCount = 0;
  m.identity = true;
  m.view.clear();
  m.tombstones = 0;
  m.invalidatePositions();
  m.cursor = -1;
  m.filter.clear();
  m.sort.clear();
}

bool Recordset::isOpen() const { return impl_->open; }

void Recordset::reserve(long rows) {
  Impl& m = *impl_;
  long chunks = (rows + Impl::kChunkRows - 1) / Impl::kChunkRows;
  m.chunks.reserve(static_cast<size_t>(chunks));
}

void Recordset::addNew() {
  Impl& m = *impl_;
  if (!m.open) open();
  if (m.rows % Impl::kChunkRows == 0) {
    m.chunks.emplace_back();
    // Past the first chunk the recordset is large: take whole chunks.
    if (m.chunks.size() > 1) m.chunks.back().reserve(static_cast<size_t>(Impl::kChunkRows) * m.width());
  }
  auto& chunk = m.chunks.back();
  chunk.resize(chunk.size() + m.width());
  long row = m.rows++;
  if (m.deletedCount > 0) m.deleted.push_back(false);
  if (!m.identity) {
    m.view.push_back(row);
    m.invalidatePositions();
  }
  m.cursor = m.slots() - 1;
}

void Recordset::deleteCurrent() {
  Impl& m = *impl_;
  long row = currentRow();
  if (row < 0) raiseNoCurrentRecord();
  if (m.deletedCount == 0) m.deleted.assign(static_cast<size_t>(m.rows), false);
  m.deleted[static_cast<size_t>(row)] = true;
  ++m.deletedCount;
  if (m.identity) {
    m.view.resize(static_cast<size_t>(m.rows));
    for (long i = 0; i < m.rows; ++i) m.view[static_cast<size_t>(i)] = i;
    m.identity = false;
  }
  m.view[static_cast<size_t>(m.cursor)] = -1;  // the cursor stays on it
  ++m.tombstones;
  m.invalidatePositions();
}

bool Recordset::isDeleted(long row) const {
  return row >= 0 && row < impl_->rows && impl_->rowDeleted(row);
}

long Recordset::recordCount() const { return impl_->visible(); }
bool Recordset::eof() const { return impl_->atEof(); }
bool Recordset::bof() const { return impl_->atBof(); }

void Recordset::moveFirst() {
  Impl& m = *impl_;
  m.cursor = 0;
  m.skipForward();
  m.squeezeTombstones();
}

void Recordset::moveNext() {
  Impl& m = *impl_;
  if (!m.onTombstone() && m.atEof()) raiseNoCurrentRecord();
  ++m.cursor;
  m.skipForward();
  m.squeezeTombstones();
}

void Recordset::movePrevious() {
  Impl& m = *impl_;
  if (!m.onTombstone() && m.atBof()) raiseNoCurrentRecord();
  --m.cursor;
  m.skipBackward();
  m.squeezeTombstones();
}

void Recordset::moveLast() {
  Impl& m = *impl_;
  m.cursor = m.slots() - 1;
  m.skipBackward();
  if (m.visible() == 0) m.cursor = 0;
  m.squeezeTombstones();
}

long Recordset::absolutePosition() const {
  const Impl& m = *impl_;
  if (currentRow() < 0) return 0;
  if (m.identity || m.tombstones == 0) return m.cursor + 1;
  return static_cast<long>(std::count_if(m.view.begin(), m.view.begin() + m.cursor + 1, [](long r) { return r >= 0; }));
}

long Recordset::currentRow() const {
  const Impl& m = *impl_;
  if (m.atBof() || m.atEof() || m.onTombstone()) return -1;
  return m.slotRow(m.cursor);
}

void Recordset::moveToRow(long row) {
  Impl& m = *impl_;
  if (row < 0 || row >= m.rows || m.rowDeleted(row)) {
    m.cursor = m.slots();
    return;
  }
  if (m.identity) {
    m.cursor = row;
    return;
  }
  if (m.positionOfRow.empty()) {
    m.positionOfRow.assign(static_cast<size_t>(m.rows), -1);
    for (size_t i = 0; i < m.view.size(); ++i) {
      if (m.view[i] >= 0) m.positionOfRow[static_cast<size_t>(m.view[i])] = static_cast<long>(i);
    }
  }
  long pos = m.positionOfRow[static_cast<size_t>(row)];
  m.cursor = pos < 0 ? m.slots() : pos;
}

Value Recordset::get(int index) const {
  field(index);
  long row = currentRow();
  if (row < 0) raiseNoCurrentRecord();
  return impl_->valueOf(impl_->cell(row, index));
}

Value Recordset::get(std::string_view name) const {
  int idx = fieldIndex(name);
  if (idx < 0) raiseItemNotFound();
  return get(idx);
}

void Recordset::set(int index, Value v) {
  field(index);
  long row = currentRow();
  if (row < 0) raiseNoCurrentRecord();
  setAt(row, index, std::move(v));
}

void Recordset::set(std::string_view name, Value v) {
  int idx = fieldIndex(name);
  if (idx < 0) raiseItemNotFound();
  set(idx, std::move(v));
}

long Recordset::rowCount() const { return impl_->rows; }

namespace {
void checkRow(long row, long rows) {
  if (row < 0 || row >= rows) throw Error(err::kSubscriptOutOfRange, kSource, "Subscript out of range");
}
}  // namespace

Value Recordset::at(long row, int index) const {
  field(index);
  checkRow(row, impl_->rows);
  return impl_->valueOf(impl_->cell(row, index));
}

std::string Recordset::textAt(long row, int index) const {
  field(index);
  checkRow(row, impl_->rows);
  return impl_->textOfCell(impl_->cell(row, index));
}

bool Recordset::isNullAt(long row, int index) const {
  field(index);
  checkRow(row, impl_->rows);
  return isNullish(kindOf(impl_->cell(row, index)));
}

void Recordset::setAt(long row, int index, Value v) {
  const FieldDef& f = field(index);
  checkRow(row, impl_->rows);
  impl_->put(impl_->cell(row, index), coerce(std::move(v), f.type));
  impl_->compactArenaIfWasteful();
}

namespace {
std::vector<SortKey> parseSort(std::string_view sort, const Recordset& rs) {
  std::vector<SortKey> keys;
  for (const auto& part : split(sort, ",")) {
    std::string item = trim(part);
    if (item.empty()) raiseBadArgument("empty sort key");
    std::string name;
    std::string rest;
    if (item.front() == '[') {
      size_t end = item.find(']');
      if (end == std::string::npos) raiseBadArgument("unterminated [");
      name = item.substr(1, end - 1);
      rest = trim(item.substr(end + 1));
    } else {
      size_t blank = item.find(' ');
      name = item.substr(0, blank);
      rest = blank == std::string::npos ? "" : trim(item.substr(blank));
    }
    SortKey key{rs.fieldIndex(name), false};
    if (key.field < 0) raiseItemNotFound();
    if (equalsNoCase(rest, "DESC")) {
      key.descending = true;
    } else if (!rest.empty() && !equalsNoCase(rest, "ASC")) {
      raiseBadArgument("bad sort order '" + rest + "'");
    }
    keys.push_back(key);
  }
  return keys;
}
}  // namespace

void Recordset::setFilter(std::string_view criteria) {
  std::vector<FilterNode> nodes;
  int root = -1;
  if (!trim(criteria).empty()) root = FilterParser(criteria, *this, nodes).parse();
  auto keys = trim(impl_->sort).empty() ? std::vector<SortKey>{} : parseSort(impl_->sort, *this);
  impl_->filter = std::string(criteria);
  impl_->rebuildView(nodes, root, keys);
}

const std::string& Recordset::filter() const { return impl_->filter; }

void Recordset::setSort(std::string_view sort) {
  auto keys = trim(sort).empty() ? std::vector<SortKey>{} : parseSort(sort, *this);
  std::vector<FilterNode> nodes;
  int root = -1;
  if (!trim(impl_->filter).empty()) root = FilterParser(impl_->filter, *this, nodes).parse();
  impl_->sort = std::string(sort);
  impl_->rebuildView(nodes, root, keys);
}

const std::string& Recordset::sort() const { return impl_->sort; }

size_t Recordset::memoryUsage() const {
  const Impl& m = *impl_;
  size_t bytes = m.chunks.capacity() * sizeof(std::vector<Cell>);
  for (const auto& chunk : m.chunks) bytes += chunk.capacity() * sizeof(Cell);
  bytes += m.arena.capacity();
  bytes += m.view.capacity() * sizeof(long) + m.positionOfRow.capacity() * sizeof(long);
  bytes += m.deleted.capacity() / 8;
  return bytes;
}

// ---- RowIndex ----

size_t RowIndex::NoCaseHash::operator()(std::string_view s) const { return hashNoCase(s); }

bool RowIndex::NoCaseEqual::operator()(std::string_view a, std::string_view b) const {
  return equalNoCase(a, b);
}

std::string RowIndex::makeKey(const std::vector<std::string>& parts) {
  std::string key;
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i) key.push_back('\x1f');
    key += trimView(parts[i]);
  }
  return key;
}

RowIndex::RowIndex(const Recordset& rs, const std::vector<std::string>& keyFields) {
  std::vector<int> cols;
  for (const auto& f : keyFields) {
    int idx = rs.fieldIndex(f);
    if (idx < 0) raiseItemNotFound();
    cols.push_back(idx);
  }
  rows_.reserve(static_cast<size_t>(rs.rowCount()));
  std::string key;
  for (long row = 0; row < rs.rowCount(); ++row) {
    if (rs.isDeleted(row)) continue;
    key.clear();
    for (size_t i = 0; i < cols.size(); ++i) {
      if (i) key.push_back('\x1f');
      key += trimView(rs.textAt(row, cols[i]));
    }
    auto it = rows_.find(std::string_view(key));
    if (it == rows_.end()) it = rows_.emplace(key, std::vector<long>()).first;
    it->second.push_back(row);
  }
}

const std::vector<long>& RowIndex::find(std::string_view key) const {
  static const std::vector<long> kNone;
  auto it = rows_.find(trimView(key));
  return it == rows_.end() ? kNone : it->second;
}

const std::vector<long>& RowIndex::find(const std::vector<std::string>& keyParts) const {
  static const std::vector<long> kNone;
  auto it = rows_.find(std::string_view(makeKey(keyParts)));
  return it == rows_.end() ? kNone : it->second;
}

long RowIndex::first(std::string_view key) const {
  const auto& rows = find(key);
  return rows.empty() ? -1 : rows.front();
}

}  // namespace orvalis
