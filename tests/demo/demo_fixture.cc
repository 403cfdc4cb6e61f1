#include "demo_fixture.h"

#include "runtime/date_time.h"
#include "schema/schema.h"

namespace orvalis::testing {

DemoOptions demoOptions(int employees, uint64_t seed) {
  DemoOptions options;
  options.employees = employees;
  options.companies = 2;
  options.seed = seed;
  options.asOf = DateTime::fromParts(2026, 11, 21);
  return options;
}

SharedDemo& sharedDemo() {
  static SharedDemo demo = [] {
    SharedDemo d;
    d.db = std::make_unique<test::ScratchDatabase>(test::Engine::SQLite);
    d.connection = d.db->connect();
    d.report = buildDemoDatabase(*d.connection, demoOptions(kDemoEmployees, 7));
    return d;
  }();
  return demo;
}

std::map<std::string, uint64_t> tableChecksums(Connection& connection) {
  std::map<std::string, uint64_t> sums;
  for (const TableDef& t : schemaModel().tables) {
    Recordset rs = connection.query("select * from " + t.name);
    uint64_t sum = 0;
    for (long row = 0; row < rs.rowCount(); ++row) {
      uint64_t h = 1469598103934665603ULL;  // FNV-1a over the row's values
      for (int c = 0; c < rs.fieldCount(); ++c) {
        Value v = rs.at(row, c);
        std::string text = v.isNull() ? std::string("\x01null") : v.text();
        for (unsigned char ch : text + '\x1f') {
          h ^= ch;
          h *= 1099511628211ULL;
        }
      }
      sum += h;
    }
    sums[t.name] = sum;
  }
  return sums;
}

long scalar(Connection& connection, const std::string& sql) {
  Recordset rs = connection.query(sql);
  if (rs.eof()) return 0;
  return static_cast<long>(rs.get(0).toDouble());
}

}  // namespace orvalis::testing
