// The demo HR database: a realistic, deterministic data set for trying the
// reports and measuring them.
//
// buildDemoDatabase() creates the schema on a connection (SQLite or
// PostgreSQL) and fills it: for each company the code tables, jobs, grades,
// working patterns, bank holidays, control parameters, payroll calendar and
// batches; employees with posts, addresses, absences, holiday years, salary
// and pension records, HESA person and contract records, vacancies and
// applicants; and, shared by the companies, users with their rights, stored
// queries and notes. The same options (seed, sizes and as-of date) give the
// same database on every run and platform.
//
// A few defects are put in on purpose, as real data has them (empty and
// invalid HESA codes, missing HESA records and staff identifiers, employees
// without gender or birth date); the report counts them. Every other code
// exists in its code table, every post lies within its employment and every
// absence within its post.
//
// A build leaves a completion mark: the table ORVDEMOSTATE (not part of the
// HR schema) with one row, written after the last index. A build stopped
// half-way (killed, a full disk) leaves the schema without it, and the next
// build refuses that database unless told to replace it. On SQLite,
// buildDemoDatabaseFile() goes further: it builds into "<file>.partial" and
// renames that over the file at the end, so the file appears only whole.
// The mark is checked by demo-db itself (and the main job, through
// "demo-db --if-missing"), not by every command: that costs nothing on
// ordinary runs.
//
// Runs on the caller's thread; the connection is borrowed.
#pragma once

#include <filesystem>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "data/drivers/connection.h"
#include "runtime/date_time.h"

namespace orvalis {

struct DemoOptions {
  int employees = 5000;  // in all companies together
  int companies = 2;
  uint64_t seed = 1;
  // ADMAUDIT rows in all companies together, shared out like the
  // employees; -1: 50 per company or half its employees, whichever is more.
  long auditRows = -1;
  // The day the data is "as of" (current posts, open absences, the current
  // pay period); the process clock's today when not given.
  std::optional<DateTime> asOf;
  // Drop an existing schema first; without it an existing schema is an
  // error.
  bool replace = false;
  // PostgreSQL: the company tables partitioned by company, one partition
  // for each company (schema/partitions.h).
  bool partitionByCompany = false;
  // Called now and then with the share done (0 to 1) and the table being
  // written.
  std::function<void(double, const std::string&)> progress;
};

struct DemoDefects {
  long hesaPersonMissing = 0;     // employees in HESA scope without a person record
  long hesaContractsMissing = 0;  // ... without contract records
  long hesaIdMissing = 0;         // ... without a HESA staff identifier
  long hesaEmptyFields = 0;       // empty coded or dated HESA fields
  long hesaInvalidCodes = 0;      // HESA codes missing from their code tables
  long genderMissing = 0;         // employees without SEX_ID
  long birthDateMissing = 0;      // employees without DATE_BIRTH
};

struct DemoReport {
  std::vector<std::pair<std::string, long>> tables;  // rows written per table
  DemoDefects defects;
  double seconds = 0;          // in all
  double generateSeconds = 0;  // schema and drawing the people
  double loadSeconds = 0;      // writing the rows
  double indexSeconds = 0;     // indexes and statistics
  long long databaseBytes = -1;  // -1 when the engine does not say
  std::string asOf;              // ISO date
  int companies = 0;
  int employees = 0;

  long totalRows() const;
  long rowsOf(const std::string& table) const;
};

// What a database holds of the demo data.
enum class DemoState {
  Absent,      // no HR schema
  Complete,    // the HR schema and the completion mark
  Unfinished,  // the HR schema without the mark: a stopped build, or init-db
};
DemoState demoState(Connection& connection);

// Builds the demo database. Raises orvalis::Error when the schema exists and
// options.replace is false (saying whether it is complete or unfinished), for
// a provider without a schema, and for any database failure (nothing is
// committed then on SQLite).
DemoReport buildDemoDatabase(Connection& connection, const DemoOptions& options);

// Builds the demo database as the SQLite file at path: into
// "<path>.partial" beside it, renamed over path once complete, so that a
// stopped build leaves the old file (or none). An existing file is refused
// unless options.replace, when it holds the HR schema or any other table;
// with options.replace the whole file is replaced.
DemoReport buildDemoDatabaseFile(const std::filesystem::path& path, const DemoOptions& options);

// One line: rows per table (largest first), seconds, size and defects.
std::string demoSummary(const DemoReport& report);

}  // namespace orvalis
