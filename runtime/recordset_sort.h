// Recordset sorting: the ADO sort text ("FIELD [ASC|DESC], ...") read into
// keys, and a stable sort of stored rows by them. Null sorts first
// ascending; texts compare without regard to case; numbers and dates sort
// before texts when a field holds both.
//
// Internal to runtime/: used by Recordset::setSort and setFilter. Free
// functions; thread-safe as long as the cells are not written meanwhile.
#pragma once

#include <string_view>
#include <vector>

#include "runtime/recordset_cells.h"

namespace orvalis {
class Recordset;
}

namespace orvalis::recordset_detail {

struct SortKey {
  int field;
  bool descending;
};

// Reads sort text against rs's fields; blank text gives no keys. A bad key
// raises 3001; an unknown field 3265.
std::vector<SortKey> parseSort(std::string_view sort, const Recordset& rs);

// Sort order of two cells: Null first, then numbers and dates, then texts.
int compareCells(const CellView& a, const CellView& b);

// Orders rows (storage row numbers) by the keys; rows that compare equal
// keep their order.
void sortRows(std::vector<long>& rows, const CellStore& cells, const std::vector<SortKey>& keys);

}  // namespace orvalis::recordset_detail
