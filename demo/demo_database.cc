#include "demo/demo_database.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <set>

#include "data/sql_text.h"
#include "runtime/basic_string.h"
#include "runtime/clock.h"
#include "runtime/error.h"
#include "demo/demo_calendar.h"
#include "demo/demo_catalog.h"
#include "demo/demo_tables.h"
#include "runtime/text_file.h"
#include "schema/schema.h"

namespace orvalis {

namespace demo {

void Writer::rows(const std::string& table, const std::vector<std::string>& columns, size_t count,
                  const std::function<void(size_t, Row&)>& fill) {
  size_t next = 0;
  stream(table, columns, [&](Row& row) {
    if (next >= count) return false;
    fill(next++, row);
    return true;
  });
}

void Writer::stream(const std::string& table, const std::vector<std::string>& columns,
                    const std::function<bool(Row&)>& next) {
  long sinceReport = 0;
  long written = connection_.bulkInsert(table, columns, [&](std::vector<Value>& values) {
    for (Value& v : values) v = Value();
    Row row(values);
    if (!next(row)) return false;
    if (++sinceReport == 20000) {
      onRows_(sinceReport, table);
      sinceReport = 0;
    }
    return true;
  });
  onRows_(sinceReport, table);
  auto it = std::find_if(report_.tables.begin(), report_.tables.end(),
                         [&](const auto& entry) { return entry.first == table; });
  if (it == report_.tables.end()) {
    report_.tables.emplace_back(table, written);
  } else {
    it->second += written;
  }
}

}  // namespace demo

namespace {

// The completion mark: written last, so that its presence means the build
// ran to the end.
constexpr const char* kStateTable = "ORVDEMOSTATE";

// Every table of the connection's database (its current schema on
// PostgreSQL), upper-cased.
std::set<std::string> tableNames(Connection& connection) {
  const bool sqlite = schemaEngineOf(connection.provider()) == SchemaEngine::SQLite;
  Recordset rs = connection.query(sqlite ? "select name from sqlite_master where type = 'table'"
                                         : "select table_name from information_schema.tables "
                                           "where table_schema = current_schema() and table_type = 'BASE TABLE'");
  std::set<std::string> names;
  for (rs.moveFirst(); !rs.eof(); rs.moveNext()) names.insert(upperTrim(rs.get(0).text()));
  return names;
}

void writeCompletionMark(Connection& connection, const DemoOptions& options, const DemoReport& report) {
  connection.execute(std::string("CREATE TABLE ") + kStateTable +
                     " (STATE_ID VARCHAR(10) NOT NULL, SEED VARCHAR(20), EMPLOYEES INTEGER, COMPANIES INTEGER, "
                     "AS_OF VARCHAR(10))");
  connection.execute(std::string("INSERT INTO ") + kStateTable + " VALUES ('COMPLETE', '" +
                     sqlQuote(std::to_string(options.seed)) + "', " + std::to_string(report.employees) + ", " +
                     std::to_string(report.companies) + ", '" + sqlQuote(report.asOf) + "')");
}

[[noreturn]] void refuseExisting(DemoState state) {
  if (state == DemoState::Complete) {
    throw Error(err::kDatabase, "ORVALIS.Demo",
                "the database already holds the demo database (use --replace to drop and recreate it)");
  }
  throw Error(err::kDatabase, "ORVALIS.Demo",
              "the database holds an unfinished HR schema: a demo-db run that stopped before the end, or a "
              "schema without demo data (use --replace to drop and rebuild it)");
}

// The SQLite file and the journals SQLite keeps beside it.
void removeDatabaseFiles(const std::filesystem::path& path, bool withMain) {
  std::vector<std::string> names = {"-journal", "-wal", "-shm"};
  if (withMain) names.insert(names.begin(), "");
  for (const std::string& suffix : names) {
    std::filesystem::path p = path;
    p += suffix;
    if (::unlink(p.c_str()) != 0 && errno != ENOENT) throw fileError("cannot delete", p, errno);
  }
}

long long databaseSize(Connection& connection) {
  try {
    std::string sql = schemaEngineOf(connection.provider()) == SchemaEngine::SQLite
                          ? "select page_count * page_size from pragma_page_count(), pragma_page_size()"
                          : "select pg_database_size(current_database())";
    Recordset rs = connection.query(sql);
    if (rs.eof()) return -1;
    return static_cast<long long>(rs.get(0).toDouble());
  } catch (const Error&) {
    return -1;
  }
}

}  // namespace

long DemoReport::totalRows() const {
  long total = 0;
  for (const auto& [table, rows] : tables) total += rows;
  return total;
}

long DemoReport::rowsOf(const std::string& table) const {
  for (const auto& [name, rows] : tables) {
    if (name == table) return rows;
  }
  return 0;
}

DemoReport buildDemoDatabase(Connection& connection, const DemoOptions& options) {
  using Clock = std::chrono::steady_clock;
  const auto started = Clock::now();
  if (options.employees < options.companies || options.companies < 1) {
    throw Error(err::kInvalidProcedureCall, "ORVALIS.Demo",
                "the demo database needs at least one company and one employee per company");
  }
  if (schemaExists(connection)) {
    if (!options.replace) refuseExisting(demoState(connection));
    dropSchema(connection);
  }
  // A mark without a schema is stale; the new one is written at the end.
  if (tableNames(connection).count(kStateTable)) connection.execute(std::string("DROP TABLE ") + kStateTable);
  // Tables first, indexes after the load: building an index over sorted
  // keys is much faster than growing it row by row.
  SchemaLayout layout;
  layout.partitionByCompany = options.partitionByCompany;
  if (layout.partitionByCompany) {
    for (int c = 0; c < options.companies; ++c) layout.companies.push_back(demo::companyCode(c));
  }
  createSchemaTables(connection, layout);
  const bool sqlite = schemaEngineOf(connection.provider()) == SchemaEngine::SQLite;
  std::string cacheSize;
  if (sqlite) {
    Recordset rs = connection.query("PRAGMA cache_size");
    cacheSize = rs.eof() ? "-2000" : rs.get(0).text();
    connection.execute("PRAGMA cache_size = -262144");  // 256 MB while loading
  }

  auto progress = [&](double share, const std::string& table) {
    if (options.progress) options.progress(std::min(1.0, share), table);
  };
  progress(0, "generating");

  demo::Context ctx = demo::makeContext(options.seed, (options.asOf ? *options.asOf : clock::now()).datePart().days());
  ctx.nextNote = demo::kSharedNotes + 1;

  std::vector<demo::Company> companies;
  double estimate = 0;
  for (int c = 0; c < options.companies; ++c) {
    int share = options.employees / options.companies + (c < options.employees % options.companies ? 1 : 0);
    companies.push_back(demo::generateCompany(ctx, c, share));
    demo::Company& co = companies.back();
    co.auditRows = options.auditRows < 0
                       ? std::max<long>(50, static_cast<long>(share) / 2)
                       : options.auditRows / options.companies + (c < options.auditRows % options.companies ? 1 : 0);
    estimate += 11.5 * static_cast<double>(co.employees.size()) + 3.0 * static_cast<double>(co.posts.size()) +
                static_cast<double>(co.absences.size()) + static_cast<double>(co.auditRows) + 6000;
  }

  DemoReport report;
  report.generateSeconds = std::chrono::duration<double>(Clock::now() - started).count();
  const auto loaded = Clock::now();
  report.asOf = DateTime::fromDays(ctx.asOf).iso();
  report.companies = options.companies;
  report.employees = options.employees;
  double written = 0;
  demo::Writer writer(connection, report, [&](long rows, const std::string& table) {
    written += static_cast<double>(rows);
    progress(written / estimate, table);
  });

  connection.begin();
  try {
    demo::writeSharedTables(writer, ctx, companies);
    for (const demo::Company& co : companies) {
      demo::writeReferenceTables(writer, ctx, co);
      demo::writePeopleTables(writer, ctx, co, report.defects);
      demo::writeTrainingTables(writer, ctx, co);
      demo::writeCheckLists(writer, ctx, co);
    }
    connection.commit();
  } catch (...) {
    try {
      connection.rollback();
    } catch (...) {
      // Report the first failure.
    }
    throw;
  }
  report.loadSeconds = std::chrono::duration<double>(Clock::now() - loaded).count();
  progress(1, "indexing");
  const auto indexing = Clock::now();
  createSchemaIndexes(connection);
  if (sqlite) {
    connection.execute("ANALYZE");
    connection.execute("PRAGMA cache_size = " + cacheSize);
    // A file shared by readers and writers: readers never wait for a writer.
    connection.execute("PRAGMA journal_mode = WAL");
  } else {
    for (const TableDef& t : schemaModel().tables) connection.execute("ANALYZE " + t.name);
  }
  writeCompletionMark(connection, options, report);
  report.indexSeconds = std::chrono::duration<double>(Clock::now() - indexing).count();
  progress(1, "done");

  report.databaseBytes = databaseSize(connection);
  report.seconds = std::chrono::duration<double>(Clock::now() - started).count();
  return report;
}

DemoState demoState(Connection& connection) {
  if (!schemaExists(connection)) return DemoState::Absent;
  if (!tableNames(connection).count(kStateTable)) return DemoState::Unfinished;
  Recordset rs =
      connection.query(std::string("select count(*) from ") + kStateTable + " where STATE_ID = 'COMPLETE'");
  return !rs.eof() && rs.get(0).toDouble() > 0 ? DemoState::Complete : DemoState::Unfinished;
}

DemoReport buildDemoDatabaseFile(const std::filesystem::path& path, const DemoOptions& options) {
  std::error_code ec;
  if (std::filesystem::is_directory(path, ec)) throw fileError("cannot build the demo database at", path, EISDIR);
  if (!options.replace && std::filesystem::file_size(path, ec) > 0 && !ec) {
    auto existing = openConnection("sqlite:" + path.string());
    if (schemaExists(*existing)) refuseExisting(demoState(*existing));
    if (!tableNames(*existing).empty()) {
      throw Error(err::kDatabase, "ORVALIS.Demo",
                  path.string() + " holds other tables; demo-db writes a whole database file "
                  "(use --replace to replace the file)");
    }
  }
  if (path.has_parent_path()) {
    std::filesystem::create_directories(path.parent_path(), ec);
    if (ec) throw fileError("cannot create folder", path.parent_path(), ec.value());
  }
  std::filesystem::path partial = path;
  partial += ".partial";
  removeDatabaseFiles(partial, true);  // what a stopped build left
  DemoReport report;
  try {
    auto connection = openConnection("sqlite:" + partial.string());
    DemoOptions fresh = options;
    fresh.replace = false;
    report = buildDemoDatabase(*connection, fresh);
  } catch (...) {
    try {
      removeDatabaseFiles(partial, true);
    } catch (...) {
      // Report the build's failure.
    }
    throw;
  }
  // The old file's journals would be played back into the new file.
  removeDatabaseFiles(path, false);
  if (::rename(partial.c_str(), path.c_str()) != 0) throw fileError("cannot replace", path, errno);
  return report;
}

std::string demoSummary(const DemoReport& report) {
  std::vector<std::pair<std::string, long>> tables = report.tables;
  std::stable_sort(tables.begin(), tables.end(), [](const auto& a, const auto& b) { return a.second > b.second; });
  auto number = [](long long n) {
    std::string digits = std::to_string(n), out;
    for (size_t i = 0; i < digits.size(); ++i) {
      if (i > 0 && (digits.size() - i) % 3 == 0) out += ',';
      out += digits[i];
    }
    return out;
  };
  std::string text = "wrote " + number(report.totalRows()) + " rows in " + std::to_string(tables.size()) +
                     " tables for " + number(report.employees) + " employees in " +
                     std::to_string(report.companies) + " companies as of " + report.asOf + " (";
  for (size_t i = 0; i < tables.size() && i < 8; ++i) {
    text += (i ? ", " : "") + tables[i].first + " " + number(tables[i].second);
  }
  char tail[160];
  std::snprintf(tail, sizeof tail, ", ...) in %.1f s (generate %.1f, load %.1f, index %.1f)", report.seconds,
                report.generateSeconds, report.loadSeconds, report.indexSeconds);
  text += tail;
  if (report.databaseBytes >= 0) {
    std::snprintf(tail, sizeof tail, "; database %.1f MB", static_cast<double>(report.databaseBytes) / 1048576.0);
    text += tail;
  }
  const DemoDefects& d = report.defects;
  text += "; deliberate defects: " + number(d.hesaPersonMissing) + " HESA person and " +
          number(d.hesaContractsMissing) + " contract records missing, " + number(d.hesaIdMissing) +
          " HESA ids missing, " + number(d.hesaEmptyFields) + " empty and " + number(d.hesaInvalidCodes) +
          " invalid HESA codes, " + number(d.genderMissing) + " genders and " + number(d.birthDateMissing) +
          " birth dates missing";
  return text;
}

}  // namespace orvalis
