#include "runtime/result_rows.h"

#include <utility>

namespace orvalis {

namespace {

class StoredRow final : public ResultRow {
 public:
  explicit StoredRow(const Recordset& rs) : rs_(rs) {}
  void moveTo(long row) { row_ = row; }

  std::string_view text(int index, std::string& scratch) const override {
    return rs_.textViewAt(row_, index, scratch);
  }
  Value value(int index) const override { return rs_.at(row_, index); }

 private:
  const Recordset& rs_;
  long row_ = 0;
};

}  // namespace

void sendRows(const Recordset& rs, ResultSink& sink) {
  sink.start(rs.fields());
  if (rs.filter().empty() && rs.sort().empty()) {
    StoredRow row(rs);
    const long rows = rs.rowCount();
    for (long r = 0; r < rows; ++r) {
      row.moveTo(r);
      sink.row(row);
    }
    return;
  }
  Recordset view = rs;
  if (view.recordCount() == 0) return;
  StoredRow row(std::as_const(view));
  for (view.moveFirst(); !view.eof(); view.moveNext()) {
    row.moveTo(view.currentRow());
    sink.row(row);
  }
}

}  // namespace orvalis
