#include "support/report_rows.h"

#include "runtime/basic_string.h"

namespace orvalis::test {

Row rowAt(const Recordset& rs, long row) {
  Row out;
  for (int f = 0; f < rs.fieldCount(); ++f) {
    Value v = rs.at(row, f);
    out[rs.field(f).name] = v.isNull() ? "<NULL>" : v.isDate() ? v.asDate().iso() : trim(v.text());
  }
  return out;
}

Rows rowsBy(const Recordset& rs, const std::function<std::string(const Row&, long)>& key) {
  Rows rows;
  for (long r = 0; rs.isOpen() && r < rs.rowCount(); ++r) {
    Row row = rowAt(rs, r);
    rows[key(row, r)] = std::move(row);
  }
  return rows;
}

Rows rowsByFirstTwo(const Recordset& rs) {
  return rowsBy(rs, [&](const Row&, long r) { return trim(rs.textAt(r, 0)) + "/" + trim(rs.textAt(r, 1)); });
}

::testing::AssertionResult hasFields(const Row& row, const Row& want) {
  std::string differences;
  for (const auto& [name, text] : want) {
    auto it = row.find(name);
    if (it == row.end()) {
      differences += "\n  " + name + ": missing, want \"" + text + "\"";
    } else if (it->second != text) {
      differences += "\n  " + name + ": \"" + it->second + "\", want \"" + text + "\"";
    }
  }
  if (differences.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "fields differ:" << differences;
}

std::string engineParam(const ::testing::TestParamInfo<Engine>& info) { return engineName(info.param); }

}  // namespace orvalis::test
