// SIR_HE ("ORVALIS.SIR_HE"): the HESA staff record checks.
//
// The report validates the HESA data held for every employee of the company
// (the person record PNLEMPHESAP, the contract records PNLEMPHESAC and the
// master PNLEMPMST) and returns one row per defect, so that the data can be
// corrected before the statutory return is made. An employee whose data is
// complete yields no row.
//
// ExtractData: the names "01" and "SIR_DATA" run the check under the report
// name "SIR_DATA"; any other name leaves the driving query empty, so the
// loop opens nothing and the call returns False with the empty, laid-out
// result. No run-time parameters. Result fields (all adChar, fixed length):
// REPORT_ID 20, EMP_ID 10, KNOWNAS 40, RECORD_TYPE 40, FIELD_ID 40,
// FIELD_DESC 40, VALUE 40, ERROR 40; a longer text is cut to its field.
// The field-description file follows a successful extract.
//
// ExtractStringData: the same extract saved as a persisted XML rowset
// (runtime/xml_rowset.h); "" when ExtractData returns False or there are
// no rows.
//
// The person and contract records of the whole company are read once by
// default (one statement per table, filed by employee); the original
// per-employee statements remain available (setRecordReads, or the session
// variable "HESA_READS" = "PEREMPLOYEE") and give the same rows.
//
// Errors are raised on in the error block (module "SIR_HE"). An instance
// keeps its collections and statements for one call; single-threaded.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "component/report_class.h"
#include "reports/sir_he/hesa_lookups.h"
#include "reports/sir_he/hesa_records.h"
#include "reports/sir_he/text_slots.h"

namespace orvalis::reports {

class SIR_HE final : public ReportClass, public StringExtract {
 public:
  SIR_HE();

  // The extract as XML text in strData ("" unless ExtractData returns True
  // with rows); returns what ExtractData returns.
  bool ExtractStringData(std::shared_ptr<Environment> environment, std::string_view methodName,
                         const Parameters& parameters, std::string& strData) override;

  // Whether an employee belongs in the return: for the name "SIR_DATA", a
  // leaver who left before the period start (PNL "SIRSTARTDT") or, among
  // leavers only, started after its end (PNL "SIRENDDT") does not; dates
  // compare as the stored date text "YYYY-MM-DD". Any other name: True.
  bool fncValidRecord(const std::string& reportName, const std::string& empId);

  // Chooses how person and contract records are read for this instance.
  void setRecordReads(hesa::RecordReads reads) { reads_ = reads; }

  // The driving statement for a company.
  static std::string staffRecordSql(const std::string& variation);

 protected:
  void resetWorkingState() override;
  bool recognises(const std::string& method) const override;
  void runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) override;
  bool createBaseRecordset(const std::string& method, Recordset& rsData) override;
  void dumpVariables(Dump& dump) const override;

 private:
  struct Employee {
    std::string empId;
    std::string knownAs;
    bool noBirthDate = false;  // the date of birth is Null or blank
    std::string sexId;
    std::string hesaId;
  };
  // One checked column of a person or contract recordset.
  struct ColumnCheck {
    std::string name;
    std::string label;
    bool coded = false;  // drawn from a real code table: its codes are tested
    hesa::CodeSet validCodes;    // codes with a description (views into lookups_)
    bool textField = false;      // the recordset's field holds texts
  };

  bool fncBaseLoop(const std::string& reportName, Recordset& rsData);
  void checkEmployee(const std::string& reportName, const Employee& e, hesa::HesaRecordSource& source,
                     Recordset& rsData);
  void checkRecords(const char* table, const hesa::RecordRows& records, const Employee& e,
                    const std::string& reportName, Recordset& rsData);
  // A checked cell that gives a row: its column check, the defect and the
  // value as found (a view into the recordset or into TableChecks::texts).
  struct Defect {
    uint32_t check;
    const char* error;
    std::string_view value;
  };
  // The checks of one table's columns and the layout they were made for.
  // A whole-company recordset is checked once in storage order (its rows'
  // cells and texts lie in that order in memory) and its defects kept by
  // row, then written out employee by employee in the driving order.
  struct TableChecks {
    const Recordset* rs = nullptr;
    const FieldDef* fields = nullptr;  // rs->fields().data() when made
    int seqColumn = -1;
    std::vector<ColumnCheck> columns;
    bool scanned = false;               // rs checked whole, below
    std::vector<uint32_t> firstDefect;  // by storage row, one past the end
    std::vector<Defect> defects;
    std::deque<std::string> texts;  // values that are not texts in rs, as texts
  };
  TableChecks& columnChecks(const char* table, const hesa::RecordRows& records);
  // Appends the defects of one row of rs.
  static void findDefects(TableChecks& checks, const Recordset& rs, int firstColumn, long row,
                          std::vector<Defect>& out, std::string& scratch, std::string& upperCased);
  void addRow(Recordset& rsData, const std::string& reportName, const Employee& e,
              std::string_view recordType, std::string_view fieldId, std::string_view fieldDesc,
              std::string_view value, std::string_view error);
  hesa::RecordReads recordReads() const;

  std::optional<hesa::RecordReads> reads_;
  std::string reportName_;
  std::string sql_;
  hesa::HesaLookups lookups_;
  TableChecks personChecks_;
  TableChecks contractChecks_;
  std::vector<Defect> rowDefects_;  // one row's, when not checked whole
};

// Adds the class to the registry (reports/report_classes.h).
void registerSIR_HE();

}  // namespace orvalis::reports
