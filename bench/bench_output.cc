// The tool's recordset writers alone: one 100 000-row recordset built in
// memory and shaped like an absence listing (31 fields: names and repeated
// descriptions, short codes, dates and a time stamp, hours and days, money,
// a flag, and columns that are mostly Null), written as CSV and as XLSX.
// The figure to read is CPU (the thread's processor time, which includes
// the system time of the workbook's temporary files); run with
// --benchmark_repetitions=5 and read the medians:
//
//   build/bench/bench_output --benchmark_repetitions=5 --benchmark_report_aggregates_only
#include <benchmark/benchmark.h>

#include <sstream>
#include <string>

#include "cli/recordset_output.h"
#include "cli/xlsx_output.h"
#include "runtime/ado.h"
#include "runtime/recordset.h"

namespace orvalis {
namespace {

constexpr long kRows = 100000;

std::string numbered(const char* prefix, long n) {
  std::string s = prefix;
  s += std::to_string(n);
  return s;
}

const Recordset& listing() {
  static const Recordset rs = [] {
    const char* departments[] = {"Human Resources", "Information Technology", "Finance", "Estates and Facilities",
                                 "School of Engineering", "Library"};
    const char* reasons[] = {"Annual holiday", "Sickness - cold or flu", "House move", "Jury service",
                             "Sickness - back pain", "Compassionate leave", "Training course"};
    const char* days[] = {"Monday", "Tuesday", "Wednesday", "Thursday", "Friday"};
    Recordset r;
    for (int f = 0; f < 3; ++f) r.appendField(numbered("NAME_", f), ado::adVarChar, 40);
    for (int f = 0; f < 5; ++f) r.appendField(numbered("DESCRIPTION_", f), ado::adVarChar, 40);
    for (int f = 0; f < 4; ++f) r.appendField(numbered("CODE_", f), ado::adVarChar, 4);
    for (int f = 0; f < 4; ++f) r.appendField(numbered("DATE_", f), ado::adDBTimeStamp, 8);
    r.appendField("STAMP", ado::adDBTimeStamp, 8);
    for (int f = 0; f < 3; ++f) r.appendField(numbered("HOURS_", f), ado::adDouble, 8);
    for (int f = 0; f < 2; ++f) r.appendField(numbered("COUNT_", f), ado::adInteger, 4);
    r.appendField("COST", ado::adCurrency, 8);
    r.appendField("CERTIFIED", ado::adBoolean, 2);
    for (int f = 0; f < 7; ++f) r.appendField(numbered("SPARE_", f), ado::adVarChar, 30);
    r.open();
    r.reserve(kRows);
    for (long row = 0; row < kRows; ++row) {
      r.addNew();
      int f = 0;
      r.set(f++, Value(numbered("", 100000 + row / 3)));
      r.set(f++, Value(numbered("Surname", row % 977)));
      r.set(f++, Value(numbered("Forename", row % 131)));
      for (int d = 0; d < 5; ++d) r.set(f++, Value(d % 2 ? reasons[(row + d) % 7] : departments[(row + d) % 6]));
      for (int c = 0; c < 4; ++c) r.set(f++, Value(c % 2 ? "PM" : numbered("", row % 12)));
      for (int d = 0; d < 4; ++d) r.set(f++, d == 3 && row % 4 ? Value::null() : Value(DateTime::fromDays(45000 + (row + d) % 700)));
      r.set(f++, Value(DateTime::fromDays(45000 + row % 700, 8 * 3600 + row % 36000)));
      for (int h = 0; h < 3; ++h) r.set(f++, Value(0.5 * static_cast<double>((row + h) % 15) * 7.5));
      for (int c = 0; c < 2; ++c) r.set(f++, Value((row + c) % 9));
      r.set(f++, Value(static_cast<double>(row % 50000) / 4));
      r.set(f++, Value(row % 3 == 0));
      for (int s = 0; s < 7; ++s) r.set(f++, (row + s) % 4 ? Value::null() : Value(days[(row + s) % 5]));
    }
    r.moveFirst();
    return r;
  }();
  return rs;
}

void BM_Write(benchmark::State& state, cli::OutputFormat format) {
  const Recordset& rs = listing();
  const cli::ReportHeading heading{"ORVALIS.Absence LISTING", "LISTING", "ORV01", {}};
  size_t bytes = 0;
  for (auto _ : state) {
    std::string out = cli::recordsetText(rs, format, true, heading);
    bytes = out.size();
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["bytes"] = static_cast<double>(bytes);
  state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK_CAPTURE(BM_Write, csv, cli::OutputFormat::Csv)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Write, xlsx, cli::OutputFormat::Xlsx)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvalis
