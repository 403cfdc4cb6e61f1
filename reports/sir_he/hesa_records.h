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
//                     reference the batched source is tested against.
//   BatchedReads      reads ahead: for each run of up to kBatchSize
//                     employees of the driving order, one statement per
//                     table ("... AND EMP_ID IN ('..', ...) ORDER BY EMP_ID
//                     [, SEQ_ID]"), filed by employee in hash maps. A
//                     contract's columns are the same as the reference's
//                     (SEQ_ID first, then the fixed list); EMP_ID, needed to
//                     file the rows, is read last and not checked. When a
//                     batch statement cannot be read (a row holds a value
//                     its field cannot take; the error component was told
//                     and chose to go on), that batch's employees are read
//                     with the original statements, so the failure touches
//                     only the employee whose row it is, as before.
//
// Rows are filed under the employee identifier exactly as the database
// holds it; a row the engine matched to a requested identifier that differs
// only in case or trailing blanks (case-blind collations) is filed under
// that identifier, so each employee gets exactly the rows its own
// "EMP_ID = '...'" statement returns. Contracts come in SEQ_ID order; the
// reference statement has no ORDER BY, so there the engine's order applies
// (SEQ_ID order on SQLite, which reads them through the primary key).
//
// A source belongs to one report call; single-threaded.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "runtime/recordset.h"

namespace orvalis::reports::hesa {

// Some rows of a recordset and the columns to check in them.
struct RecordRows {
  const Recordset* rs = nullptr;
  std::vector<long> rows;  // storage row numbers
  int firstColumn = 0;
  int endColumn = 0;  // one past the last column checked
};

enum class RecordReads { PerEmployee, Batched };

class HesaRecordSource {
 public:
  virtual ~HesaRecordSource() = default;
  // Moves to the employee at this position of the driving order.
  virtual void employee(size_t position, const std::string& empId) = 0;
  virtual bool personExists() = 0;
  // The person record's row (call only when personExists()).
  virtual RecordRows person() = 0;
  virtual bool contractsExist() = 0;
  // The contract records' rows (call only when contractsExist()).
  virtual RecordRows contracts() = 0;
  // The statement in hand, for the error dump.
  virtual const std::string& sql() const = 0;
};

// empIds: the trimmed identifiers of the driving rows, in driving order.
std::unique_ptr<HesaRecordSource> makeRecordSource(RecordReads reads, const std::string& variation,
                                                   std::vector<std::string> empIds);

// The original statements (also used by the tests to show them).
std::string personExistsSql(const std::string& variation, const std::string& empId);
std::string personRowSql(const std::string& variation, const std::string& empId);
std::string contractsExistSql(const std::string& variation, const std::string& empId);
std::string contractRowsSql(const std::string& variation, const std::string& empId);

// Employees per read-ahead statement (Oracle accepts at most 1000 items in
// an IN list).
inline constexpr size_t kBatchSize = 1000;

}  // namespace orvalis::reports::hesa
