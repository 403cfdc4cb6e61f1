// Where the HESA check gets each employee's person and contract records.
//
// Two sources answer the same four questions for the employee in hand (is
// there a person record, its row, are there contract records, their rows):
//
//   PerEmployeeReads  the original statements, four per employee at most:
//                     "SELECT * FROM PNLEMPHESAP WHERE VARIATION_ID = '...'
//                     AND EMP_ID = '...'" for the person test, the fixed
//                     Person list with EMP_ID in front for its row, and the
//                     same pair on PNLEMPHESAC (SEQ_ID in front). It is the
//                     reference the company read is tested against.
//   CompanyReads      reads the whole company once: one statement per
//                     table ("SELECT EMP_ID,... FROM PNLEMPHESAP WHERE
//                     VARIATION_ID = '...' ORDER BY EMP_ID", and SEQ_ID,
//                     the Contract list and EMP_ID from PNLEMPHESAC ordered
//                     by EMP_ID, SEQ_ID), filed by employee in a hash map
//                     before the first employee is checked. A contract's
//                     columns are the same as the reference's (SEQ_ID
//                     first, then the fixed list); EMP_ID, needed to file
//                     the rows, is read last and not checked. When a
//                     company statement cannot be read (a row holds a value
//                     its field cannot take; the error component was told
//                     and chose to go on), every employee is read with the
//                     original statements, so the failure touches only the
//                     employee whose row it is, as before.
//
// Rows are filed under the employee identifier exactly as the database
// holds it. Where the engine compares identifiers without case or trailing
// blanks (SQL Server's usual collation) a row whose EMP_ID equals no
// employee exactly goes to the employees it equals in that looser way, so
// each employee gets exactly the rows its own "EMP_ID = '...'" statement
// returns there. Contracts come in SEQ_ID order; the reference statement
// has no ORDER BY, so there the engine's order applies (SEQ_ID order on
// SQLite, which reads them through the primary key).
//
// A source belongs to one report call; single-threaded.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "runtime/recordset.h"

namespace orvalis::reports::hesa {

// Some rows of a recordset and the columns to check in them.
struct RecordRows {
  const Recordset* rs = nullptr;
  std::span<const long> rows;  // storage row numbers, held by the source until its next call
  int firstColumn = 0;
  int endColumn = 0;  // one past the last column checked
  // rs holds the whole company's records of its table and stays as it is
  // for the rest of the call, so it may be checked once, row after row.
  bool wholeTable = false;
};

enum class RecordReads { PerEmployee, WholeCompany };

class HesaRecordSource {
 public:
  virtual ~HesaRecordSource() = default;
  // Moves to the employee (one of the identifiers the source was made with).
  virtual void employee(const std::string& empId) = 0;
  virtual bool personExists() = 0;
  // The person record's row (call only when personExists()).
  virtual RecordRows person() = 0;
  virtual bool contractsExist() = 0;
  // The contract records' rows (call only when contractsExist()).
  virtual RecordRows contracts() = 0;
  // The statement in hand, for the error dump.
  virtual const std::string& sql() const = 0;
};

// empIds: the trimmed identifiers of the driving rows. looseIds: the engine
// compares identifiers without case and trailing blanks.
std::unique_ptr<HesaRecordSource> makeRecordSource(RecordReads reads, const std::string& variation,
                                                   std::vector<std::string> empIds, bool looseIds);

// The original statements (also used by the tests to show them).
std::string personExistsSql(const std::string& variation, const std::string& empId);
std::string personRowSql(const std::string& variation, const std::string& empId);
std::string contractsExistSql(const std::string& variation, const std::string& empId);
std::string contractRowsSql(const std::string& variation, const std::string& empId);

}  // namespace orvalis::reports::hesa
