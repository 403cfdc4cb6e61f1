// The statements of the Establishment class: the report's driving
// statement on each engine, its lookups, and the payroll batch export's
// two statements. Pure text builders (every value goes through sqlQuote);
// thread-safe.
#pragma once

#include <string>

#include "data/dialect.h"

namespace orvalis::reports::establishment {

// The job-history column list, exactly as the report has always sent it.
extern const char* const kJobHistoryColumns;

// The driving statement. `selection` is the user's data-access condition
// for PNLEMPMST ("" for none); it follows the company condition as
// "AND <selection> ". SQL Server, SQLite and PostgreSQL join with LEFT JOIN;
// Oracle lists PNLEMPMST after the FROM and puts its two outer-join
// conditions ("(+)") straight after the company condition.
std::string drivingSql(Dialect dialect, const std::string& variation, const std::string& selection);

// The employees, keyed by EMP_ID.
std::string employeesSql(const std::string& variation);
// The jobs of the company, keyed by CODE_ID.
std::string jobsSql(const std::string& variation);
// One code table (CODE_ID, DESCRIPTION) of the company.
std::string codeTableSql(const std::string& table, const std::string& variation);
// The dated job history of the company, read once per run.
std::string jobHistorySql(const std::string& variation);
// WEEKS_PER_YEAR of every job-history row (the driving list does not
// carry it), keyed by EMP_ID and SEQ_ID.
std::string weeksSql(const std::string& variation);
// The WTE rules of the company.
std::string wteRulesSql(const std::string& variation);

// The export: the template's batches, and the batch lines. With an empty
// batch list the line statement is the export's historical text exactly
// (no batch condition at all); otherwise it carries
// "AND BATCH_ID IN (<list>)" and also selects BATCH_ID. The three-character
// code is "substring(gen_code,1,3)" on SQL Server and PostgreSQL and
// "substr(gen_code,1,3)" on Oracle and SQLite.
std::string batchesSql(const std::string& variation, const std::string& templateId);
std::string batchLinesSql(Dialect dialect, const std::string& variation, const std::string& batchList);
// The company's employees and their line managers (PNLEMPMST.MAN_ID).
std::string lineManagersOfEmployeesSql(const std::string& variation);

}  // namespace orvalis::reports::establishment
