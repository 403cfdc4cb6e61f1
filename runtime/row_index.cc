#include "runtime/row_index.h"

#include <mutex>
#include <optional>

#include "runtime/recordset.h"
#include "runtime/recordset_detail.h"
#include "runtime/value.h"

namespace orvalis {

using recordset_detail::equalNoCase;
using recordset_detail::hashNoCase;
using recordset_detail::raiseItemNotFound;
using recordset_detail::trimView;

namespace {

// The number a key text is the plain decimal form of ("-" and digits, no
// leading zero, no "-0"), if any: two such texts are equal exactly when
// their numbers are.
std::optional<int64_t> plainInteger(std::string_view s) {
  bool negative = !s.empty() && s[0] == '-';
  std::string_view digits = negative ? s.substr(1) : s;
  if (digits.empty() || digits.size() > 18) return std::nullopt;
  if (digits[0] == '0' && (digits.size() > 1 || negative)) return std::nullopt;
  int64_t n = 0;
  for (char c : digits) {
    if (c < '0' || c > '9') return std::nullopt;
    n = n * 10 + (c - '0');
  }
  return negative ? -n : n;
}

const std::vector<long> kNone;

}  // namespace

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

// The plain integer a cell's key reads as, if any: an integer cell without a
// trip through its text, anything else through its trimmed text.
std::optional<int64_t> RowIndex::integerKey(const Recordset& rs, long row, int index, std::string& scratch) {
  constexpr int64_t kPlainLimit = 999999999999999999;  // 18 digits, as plainInteger reads
  const Value v = rs.at(row, index);
  if (v.kind() == Value::Kind::Integer) {
    const int64_t n = v.asInteger();
    if (n >= -kPlainLimit && n <= kPlainLimit) return n;
    return std::nullopt;
  }
  if (v.isText()) return plainInteger(trimView(v.asText()));
  scratch = v.text();
  return plainInteger(trimView(scratch));
}

struct RowIndex::IntegerLists {
  std::once_flag made;
  std::unordered_map<int64_t, std::vector<long>> rows;
};

const RowIndex::IntegerSlot& RowIndex::probe(int64_t key) const {
  const size_t mask = slots_.size() - 1;
  // The key's low bits, the higher ones folded in: ids of rows read one
  // after the other (the usual probes) sit side by side in the table, so a
  // run of probes walks memory in order rather than missing the cache each
  // time; ids that differ only above the table's size still spread.
  const uint64_t k = static_cast<uint64_t>(key);
  const uint64_t high = k >> (64 - shift_);
  for (size_t i = static_cast<size_t>(k ^ high ^ (high >> (64 - shift_))) & mask;; i = (i + 1) & mask) {
    const IntegerSlot& s = slots_[i];
    if (s.first < 0 || s.key == key) return s;
  }
}

void RowIndex::growSlots() {
  std::vector<IntegerSlot> old = std::move(slots_);
  size_t size = 16;
  while (size < 2 * (integerCount_ + 1)) size *= 2;
  slots_.assign(size, IntegerSlot{});
  shift_ = 64;
  for (size_t n = size; n > 1; n /= 2) --shift_;
  for (const IntegerSlot& s : old) {
    if (s.first >= 0) const_cast<IntegerSlot&>(probe(s.key)) = s;
  }
}

void RowIndex::insert(int64_t key, long row) {
  if (2 * (integerCount_ + 1) > slots_.size()) growSlots();
  IntegerSlot& s = const_cast<IntegerSlot&>(probe(key));
  if (s.first < 0) {
    s = IntegerSlot{key, row, row};
    ++integerCount_;
  } else {
    next_[static_cast<size_t>(s.last)] = row;
    s.last = row;
  }
}

const std::vector<long>& RowIndex::integerRows(int64_t key) const {
  IntegerLists& lists = *lists_;
  std::call_once(lists.made, [&] {
    lists.rows.reserve(integerCount_);
    for (const IntegerSlot& s : slots_) {
      if (s.first < 0) continue;
      std::vector<long>& rows = lists.rows[s.key];
      for (long r = s.first; r >= 0; r = next_[static_cast<size_t>(r)]) rows.push_back(r);
    }
  });
  auto it = lists.rows.find(key);
  return it == lists.rows.end() ? kNone : it->second;
}

RowIndex::RowIndex(const Recordset& rs, const std::vector<std::string>& keyFields) {
  std::vector<int> cols;
  for (const auto& f : keyFields) {
    int idx = rs.fieldIndex(f);
    if (idx < 0) raiseItemNotFound();
    cols.push_back(idx);
  }
  std::string scratch;
  // One key column whose every key is a plain integer: numbers straight
  // away; the first other key sends the whole index to texts.
  if (cols.size() == 1) {
    integerCount_ = static_cast<size_t>(rs.rowCount());
    growSlots();
    integerCount_ = 0;
    next_.assign(static_cast<size_t>(rs.rowCount()), -1);
    bool plain = true;
    for (long row = 0; row < rs.rowCount() && plain; ++row) {
      if (rs.isDeleted(row)) continue;
      const std::optional<int64_t> n = integerKey(rs, row, cols[0], scratch);
      if (n) {
        insert(*n, row);
      } else {
        plain = false;
      }
    }
    if (plain && integerCount_ > 0) {
      integerKeys_ = true;
      lists_ = std::make_shared<IntegerLists>();
      return;
    }
    slots_ = {};
    next_ = {};
    integerCount_ = 0;
  }
  rows_.reserve(static_cast<size_t>(rs.rowCount()));
  std::string key;
  for (long row = 0; row < rs.rowCount(); ++row) {
    if (rs.isDeleted(row)) continue;
    key.clear();
    for (size_t i = 0; i < cols.size(); ++i) {
      if (i) key.push_back('\x1f');
      key += trimView(rs.textViewAt(row, cols[i], scratch));
    }
    auto it = rows_.find(std::string_view(key));
    if (it == rows_.end()) it = rows_.emplace(key, std::vector<long>()).first;
    it->second.push_back(row);
  }
}

const std::vector<long>& RowIndex::find(std::string_view key) const {
  if (integerKeys_) {
    auto n = plainInteger(trimView(key));
    if (!n) return kNone;
    return integerRows(*n);
  }
  auto it = rows_.find(trimView(key));
  return it == rows_.end() ? kNone : it->second;
}

const std::vector<long>& RowIndex::find(const std::vector<std::string>& keyParts) const {
  if (integerKeys_) return find(std::string_view(makeKey(keyParts)));
  auto it = rows_.find(std::string_view(makeKey(keyParts)));
  return it == rows_.end() ? kNone : it->second;
}

long RowIndex::first(std::string_view key) const {
  if (integerKeys_) {
    auto n = plainInteger(trimView(key));
    return n ? probe(*n).first : -1;
  }
  const auto& rows = find(key);
  return rows.empty() ? -1 : rows.front();
}

long RowIndex::first(const Recordset& rs, long row, int index) const {
  thread_local std::string scratch;
  if (integerKeys_) {
    const std::optional<int64_t> n = integerKey(rs, row, index, scratch);
    if (!n) return -1;
    return probe(*n).first;
  }
  return first(rs.textViewAt(row, index, scratch));
}

}  // namespace orvalis
