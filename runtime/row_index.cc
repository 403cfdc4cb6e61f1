#include "runtime/row_index.h"

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
    integers_.reserve(static_cast<size_t>(rs.rowCount()));
    bool plain = true;
    for (long row = 0; row < rs.rowCount() && plain; ++row) {
      if (rs.isDeleted(row)) continue;
      const std::optional<int64_t> n = integerKey(rs, row, cols[0], scratch);
      if (n) {
        integers_[*n].push_back(row);
      } else {
        plain = false;
      }
    }
    if (plain && !integers_.empty()) {
      integerKeys_ = true;
      return;
    }
    integers_ = {};
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
    auto it = integers_.find(*n);
    return it == integers_.end() ? kNone : it->second;
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
  const auto& rows = find(key);
  return rows.empty() ? -1 : rows.front();
}

long RowIndex::first(const Recordset& rs, long row, int index) const {
  thread_local std::string scratch;
  if (integerKeys_) {
    const std::optional<int64_t> n = integerKey(rs, row, index, scratch);
    if (!n) return -1;
    auto it = integers_.find(*n);
    return it == integers_.end() ? -1 : it->second.front();
  }
  return first(rs.textViewAt(row, index, scratch));
}

}  // namespace orvalis
