// A recordset filter: ADO criteria text ("FIELD op value" clauses joined by
// AND / OR, with brackets) read into a tree, and matched against stored rows.
// The syntax is described at Recordset::setFilter.
//
// Internal to runtime/: built and owned by Recordset::setFilter and setSort.
// A RowFilter is immutable once built; matching is thread-safe as long as the
// cells are not written meanwhile.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/date_time.h"
#include "runtime/recordset_cells.h"

namespace orvalis {
class Recordset;
}

namespace orvalis::recordset_detail {

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

class RowFilter {
 public:
  // Reads criteria against rs's fields; blank criteria give an empty filter.
  // Bad syntax raises 3001; an unknown field 3265.
  RowFilter(std::string_view criteria, const Recordset& rs);

  // True when there is nothing to filter on (every row matches).
  bool empty() const { return root_ < 0; }
  bool matches(const CellStore& cells, long row) const;

 private:
  bool matches(const CellStore& cells, int at, long row) const;

  std::vector<FilterNode> nodes_;
  int root_ = -1;
};

// ADO's LIKE: '*' and '%' stand for any run of characters; letters match in
// any case.
bool likeMatch(std::string_view s, std::string_view pattern);

}  // namespace orvalis::recordset_detail
