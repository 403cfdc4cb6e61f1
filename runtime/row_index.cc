#include "runtime/row_index.h"

#include "runtime/recordset.h"
#include "runtime/recordset_detail.h"

namespace orvalis {

using recordset_detail::equalNoCase;
using recordset_detail::hashNoCase;
using recordset_detail::raiseItemNotFound;
using recordset_detail::trimView;

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
