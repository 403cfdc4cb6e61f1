// Recordset at report scale: 100 000 rows x 30 fields of mixed texts,
// numbers and dates, filled, read back by index and by name, and looked up
// through RowIndex. memoryUsage() is reported as counters, with its ratio
// to the raw bytes of the values: the sum of each value's natural size (a
// text's bytes, 4 for a Long, 8 for a Double or a date, 2 for a Boolean;
// nothing for Null).
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "runtime/recordset.h"

namespace orvalis {
namespace {

constexpr long kRows = 100000;
constexpr int kFields = 30;

// Texts are built by appending: GCC 12 warns falsely (-Wrestrict) on
// "literal" + std::to_string(...) at -O2.
std::string text(const char* prefix, long n, const char* middle = "", long m = -1) {
  std::string s = prefix;
  s += std::to_string(n);
  s += middle;
  if (m >= 0) s += std::to_string(m);
  return s;
}

std::string empId(long row) { return text("E", 1000000 + row); }

// Fields 0-9 texts (an id, short codes, longer names), 10-19 numbers
// (integers and doubles), 20-29 dates (some with times).
Recordset makeLayout() {
  Recordset rs;
  for (int f = 0; f < kFields; ++f) {
    std::string name = text("FIELD_", f);
    if (f < 10) rs.appendField(name, ado::adVarChar, f < 5 ? 10 : 60);
    else if (f < 15) rs.appendField(name, ado::adInteger, 4);
    else if (f < 20) rs.appendField(name, ado::adDouble, 8);
    else rs.appendField(name, ado::adDBTimeStamp, 8);
  }
  rs.open();
  return rs;
}

Value cellValue(long row, int f) {
  if (f == 0) return Value(empId(row));
  if (f < 5) return Value(text("D", (row * 7 + f) % 40));
  if (f < 10) return Value(text("Surname-", row, " Forename-", f));
  if (f < 15) return Value(row * f);
  if (f < 20) return Value(static_cast<double>(row) / (f + 1));
  return Value(DateTime::fromDays(40000 + (row + f) % 9000, f % 2 == 0 ? 0 : 3600 * (f - 20)));
}

void fill(Recordset& rs) {
  rs.reserve(kRows);
  for (long row = 0; row < kRows; ++row) {
    rs.addNew();
    for (int f = 0; f < kFields; ++f) rs.set(f, cellValue(row, f));
  }
  rs.moveFirst();
}

const Recordset& filled() {
  static const Recordset rs = [] {
    Recordset r = makeLayout();
    fill(r);
    return r;
  }();
  return rs;
}

double rawBytes(const Recordset& rs) {
  double bytes = 0;
  for (long row = 0; row < rs.rowCount(); ++row) {
    for (int f = 0; f < rs.fieldCount(); ++f) {
      const Value v = rs.at(row, f);
      if (v.isText()) bytes += static_cast<double>(v.asText().size());
      else if (v.kind() == Value::Kind::Boolean) bytes += 2;
      else if (v.isNull()) bytes += 0;
      else bytes += rs.field(f).type == ado::adInteger ? 4 : 8;
    }
  }
  return bytes;
}

void memoryCounters(benchmark::State& state, const Recordset& rs) {
  state.counters["bytes"] = static_cast<double>(rs.memoryUsage());
  state.counters["raw_bytes"] = rawBytes(rs);
  state.counters["ratio_to_raw"] = static_cast<double>(rs.memoryUsage()) / state.counters["raw_bytes"];
  state.counters["bytes_per_cell"] = static_cast<double>(rs.memoryUsage()) / (static_cast<double>(kRows) * kFields);
}

void BM_Fill(benchmark::State& state) {
  for (auto _ : state) {
    Recordset rs = makeLayout();
    fill(rs);
    benchmark::DoNotOptimize(rs.recordCount());
    state.PauseTiming();
    memoryCounters(state, rs);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kRows * kFields);
}
BENCHMARK(BM_Fill)->Unit(benchmark::kMillisecond);

void BM_ReadByIndex(benchmark::State& state) {
  Recordset rs = filled();
  for (auto _ : state) {
    size_t n = 0;
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
      for (int f = 0; f < kFields; ++f) n += rs.get(f).isNull() ? 0 : 1;
    }
    benchmark::DoNotOptimize(n);
  }
  state.SetItemsProcessed(state.iterations() * kRows * kFields);
  memoryCounters(state, rs);
}
BENCHMARK(BM_ReadByIndex)->Unit(benchmark::kMillisecond);

void BM_ReadByName(benchmark::State& state) {
  Recordset rs = filled();
  std::vector<std::string> names;
  for (int f = 0; f < kFields; ++f) names.push_back(text("field_", f));
  for (auto _ : state) {
    size_t n = 0;
    for (rs.moveFirst(); !rs.eof(); rs.moveNext()) {
      for (const auto& name : names) n += rs.get(name).isNull() ? 0 : 1;
    }
    benchmark::DoNotOptimize(n);
  }
  state.SetItemsProcessed(state.iterations() * kRows * kFields);
}
BENCHMARK(BM_ReadByName)->Unit(benchmark::kMillisecond);

void BM_RowIndexBuild(benchmark::State& state) {
  const Recordset& rs = filled();
  for (auto _ : state) {
    RowIndex index(rs, {"FIELD_0"});
    benchmark::DoNotOptimize(index.size());
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_RowIndexBuild)->Unit(benchmark::kMillisecond);

void BM_RowIndexProbe(benchmark::State& state) {
  const Recordset& rs = filled();
  RowIndex index(rs, {"FIELD_0"});
  std::vector<std::string> keys;
  for (long row = 0; row < kRows; ++row) keys.push_back(row % 10 == 0 ? "missing" : empId((row * 7919) % kRows));
  for (auto _ : state) {
    long hits = 0;
    for (const auto& k : keys) hits += index.first(k) >= 0 ? 1 : 0;
    benchmark::DoNotOptimize(hits);
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_RowIndexProbe)->Unit(benchmark::kMillisecond);

void BM_FilterAndSort(benchmark::State& state) {
  Recordset rs = filled();
  for (auto _ : state) {
    rs.setFilter("FIELD_1 = 'd7' OR FIELD_12 < 1000");
    rs.setSort("FIELD_21 DESC, FIELD_0");
    benchmark::DoNotOptimize(rs.recordCount());
    rs.setSort("");
    rs.setFilter("");
  }
  state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_FilterAndSort)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvalis
