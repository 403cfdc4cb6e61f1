// The ADO filter and sort syntax of Recordset. Input: the filter, then on a
// second line a sort.
#include "fuzz_input.h"
#include "runtime/error.h"
#include "runtime/recordset.h"

using namespace orvalis;

namespace {

// Five rows over every kind of field a filter compares, with Nulls.
Recordset rows() {
  Recordset rs;
  rs.appendField("ID", ado::adInteger, 4);
  rs.appendField("NAME", ado::adVarChar, 40);
  rs.appendField("AMOUNT", ado::adDouble, 8);
  rs.appendField("START", ado::adDBTimeStamp, 8);
  rs.appendField("ACTIVE", ado::adBoolean, 2);
  rs.appendField("Dept Code", ado::adVarChar, 10);
  const char* names[] = {"Smith", "O'Brien", "12", "01/04/2024", nullptr};
  const char* starts[] = {"06/04/2024", nullptr, "31/12/1899", "29/02/2024", "01/01/2030"};
  for (int i = 0; i < 5; ++i) {
    rs.addNew();
    rs.set("ID", Value(i + 1));
    if (names[i]) rs.set("NAME", Value(names[i]));
    if (i != 1) rs.set("AMOUNT", Value(i * 12.5 - 10));
    if (starts[i]) rs.set("START", Value(starts[i]));
    rs.set("ACTIVE", Value(i % 2 == 0));
    rs.set("Dept Code", Value(i == 3 ? "" : "HR"));
  }
  rs.moveFirst();
  return rs;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Recordset source = rows();
  auto f = fuzz::lines(data, size, 2);
  Recordset rs = source;
  try {
    rs.setFilter(f[0]);
    fuzz::check(rs.recordCount() <= rs.rowCount(), "a filter shows no more rows than there are", f[0]);
    long seen = 0;
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) ++seen;
    fuzz::check(seen == rs.recordCount(), "the cursor visits recordCount rows", f[0]);
  } catch (const Error&) {
    // Bad syntax (3001) and unknown fields (3265) are the caller's mistakes.
  }
  try {
    const long before = rs.recordCount();
    rs.setSort(f[1]);
    fuzz::check(rs.recordCount() == before, "a sort keeps the visible rows", f[1]);
  } catch (const Error&) {
  }
  return 0;
}
