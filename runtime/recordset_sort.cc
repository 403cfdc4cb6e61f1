#include "runtime/recordset_sort.h"

#include <algorithm>
#include <string>

#include "runtime/basic_string.h"
#include "runtime/recordset.h"
#include "runtime/recordset_detail.h"

namespace orvalis::recordset_detail {

std::vector<SortKey> parseSort(std::string_view sort, const Recordset& rs) {
  std::vector<SortKey> keys;
  if (trim(sort).empty()) return keys;
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

int compareCells(const CellView& a, const CellView& b) {
  auto rank = [](CellKind k) { return isNullish(k) ? 0 : isText(k) ? 2 : 1; };
  const CellKind ka = a.kind, kb = b.kind;
  const int ra = rank(ka), rb = rank(kb);
  if (ra != rb) return ra < rb ? -1 : 1;
  if (ra == 0) return 0;
  if (ra == 2) return compareNoCase(a.text, b.text);
  if (ka == CellKind::Date && kb == CellKind::Date) return compareNumbers(dateKey(a.date()), dateKey(b.date()));
  if (ka == CellKind::Integer && kb == CellKind::Integer) return compareNumbers(a.integer, b.integer);
  return compareNumbers(a.value().toDouble(), b.value().toDouble());
}

void sortRows(std::vector<long>& rows, const CellStore& cells, const std::vector<SortKey>& keys) {
  if (keys.empty()) return;
  std::stable_sort(rows.begin(), rows.end(), [&](long a, long b) {
    for (const auto& k : keys) {
      int c = compareCells(cells.view(a, k.field), cells.view(b, k.field));
      if (c != 0) return k.descending ? c > 0 : c < 0;
    }
    return false;
  });
}

}  // namespace orvalis::recordset_detail
