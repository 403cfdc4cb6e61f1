#include "reports/sir_he/sir_he.h"

#include "component/class_registry.h"
#include "component/ttx_file.h"
#include "data/control.h"
#include "data/data_functions.h"
#include "data/dialect.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "reports/shared/blank_trimmed.h"
#include "reports/sir_he/hesa_fields.h"
#include "runtime/basic_date.h"
#include "runtime/basic_string.h"
#include "runtime/xml_rowset.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "SIR_HE", {"ExtractData", "ExtractStringData"}, Handler::Block, newReportClass<SIR_HE>};
  return info;
}

}  // namespace

SIR_HE::SIR_HE() : ReportClass(published()) {}

void registerSIR_HE() { registerReportClass(published()); }

using namespace hesa;

namespace {

// Whether a date cell would be written as "" in the house date format: it
// is Null or blank text (a date is never written empty).
bool blankDate(const Recordset& rs, long row, int column) {
  if (rs.isNullAt(row, column)) return true;
  const Value v = rs.at(row, column);
  return !v.isDate() && trim(v.text()).empty();
}

// A date as the database's sortable date text ("YYYY-MM-DD"), which the
// return-period settings are stored in; other values as their text.
std::string storedDateText(const Value& v) {
  if (v.isDate()) return v.asDate().iso();
  return trim(v.text());
}


}  // namespace

std::string SIR_HE::staffRecordSql(const std::string& variation) {
  return std::string("SELECT EMP_ID, DATE_BIRTH, SEX_ID, HESA_ID, KNOWNAS FROM PNLEMPMST ") +
         "WHERE PNLEMPMST.VARIATION_ID = '" + sqlQuote(variation) + "' " +
         "ORDER BY PNLEMPMST.TEMPLATE_ID, PNLEMPMST.CAT_ID, PNLEMPMST.EMP_ID";
}

void SIR_HE::resetWorkingState() {
  ReportClass::resetWorkingState();
  reportName_.clear();
  sql_.clear();
  lookups_ = HesaLookups();
  personChecks_ = TableChecks();
  contractChecks_ = TableChecks();
}

// Every name runs the sequence; only "01" and "SIR_DATA" get a driving
// query, so any other name returns the empty layout and False.
bool SIR_HE::recognises(const std::string&) const { return true; }

void SIR_HE::runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) {
  step(6, [&] {
    reportName_ = method;
    sql_.clear();
    if (method == "01" || method == kReportName) {
      reportName_ = kReportName;
      sql_ = staffRecordSql(gfncCompanyCode());
    }
  });
  bool created = false;
  step(7, [&] { created = createBaseRecordset(method, rsData); });
  if (created) step(8, [&] { result = fncBaseLoop(reportName_, rsData); });
  if (result) step(9, [&] { gsubWriteTTX(&rsData, "", true); });
}

bool SIR_HE::createBaseRecordset(const std::string&, Recordset& rsData) {
  return layOutResult(rsData, kResultFields);
}

void SIR_HE::dumpVariables(Dump& dump) const { dump.item("STRSQL = ", sql_); }

hesa::RecordReads SIR_HE::recordReads() const {
  if (reads_) return *reads_;
  std::string chosen = upperTrim(HREnvironment::session().GlobalVariable("HESA_READS").text());
  return chosen == "PEREMPLOYEE" ? RecordReads::PerEmployee : RecordReads::WholeCompany;
}

bool SIR_HE::fncBaseLoop(const std::string& reportName, Recordset& rsData) {
  bool result = false;
  std::string empId;
  std::unique_ptr<HesaRecordSource> source;
  Procedure proc(Handler::Block, componentNames().reports, className(), "fncBaseLoop");
  proc.variables([&] {
    return Dump()
        .item("STRMETHODNAME:", reportName)
        .item("STREMP_ID:", empId)
        .item("STRSQL = ", source ? source->sql() : sql_)
        .text();
  });
  proc.run([&](Steps& step) {
    const std::string variation = gfncCompanyCode();
    step(1, [&] { lookups_.subSetupLabelsCollection(variation); });
    step(2, [&] { lookups_.subSetupXRefCollection(variation); });

    Recordset& drv = driving();
    bool any = false;
    step(3, [&] { any = gfncOpenRecordset(sql_, drv) && drv.recordCount() > 0; });
    if (!any) return;

    int cEmp = -1, cBirth = -1, cSex = -1, cHesa = -1, cKnown = -1;
    std::string scratch;
    step(4, [&] {
      cEmp = drv.fieldIndex("EMP_ID");
      cBirth = drv.fieldIndex("DATE_BIRTH");
      cSex = drv.fieldIndex("SEX_ID");
      cHesa = drv.fieldIndex("HESA_ID");
      cKnown = drv.fieldIndex("KNOWNAS");
      std::vector<std::string> ids;
      ids.reserve(static_cast<size_t>(drv.recordCount()));
      for (drv.moveFirst(); !drv.eof(); drv.moveNext()) {
        ids.emplace_back(blankTrimmed(drv.textViewAt(drv.currentRow(), cEmp, scratch)));
      }
      // SQL Server's usual collation compares identifiers without case and
      // trailing blanks; the other engines compare them exactly.
      source = makeRecordSource(recordReads(), variation, std::move(ids), currentDialect() == Dialect::SqlServer);
    });

    step(5, [&] {
      Employee e;
      for (drv.moveFirst(); !drv.eof(); drv.moveNext()) {
        const long row = drv.currentRow();
        const auto text = [&](int column) { return blankTrimmed(drv.textViewAt(row, column, scratch)); };
        e.empId = text(cEmp);
        empId = e.empId;
        e.knownAs = text(cKnown);
        e.noBirthDate = blankDate(drv, row, cBirth);
        e.sexId = text(cSex);
        e.hesaId = text(cHesa);
        source->employee(e.empId);
        checkEmployee(reportName, e, *source, rsData);
      }
      result = true;
    });
  });
  return result;
}

void SIR_HE::checkEmployee(const std::string& reportName, const Employee& e, HesaRecordSource& source,
                           Recordset& rsData) {
  bool valid = true;
  // Through ExtractData the name is always "SIR_DATA"; the branch stays.
  if (reportName == kValidatedName) valid = fncValidRecord(reportName, e.empId);
  if (!valid) return;

  if (!source.personExists()) {
    valid = false;
    addRow(rsData, reportName, e, kPersonRecord, "", "", "", kNoPersonRecord);
  }
  if (valid) {
    RecordRows person = source.person();
    if (e.noBirthDate) {
      addRow(rsData, reportName, e, kPersonRecord, "BIRTHDATE", lookups_.label(kBirthDateLabel), "",
             kFieldIsEmpty);
    }
    if (e.sexId.empty()) {
      addRow(rsData, reportName, e, kPersonRecord, "GENDER", lookups_.label(kGenderLabel), "", kFieldIsEmpty);
    }
    checkRecords(kPersonTable, person, e, reportName, rsData);
  }

  // A missing person record does not stop the contract checks.
  valid = source.contractsExist();
  if (!valid) {
    addRow(rsData, reportName, e, kContractRecord, "", "", "", kNoContractRecords);
    return;
  }
  checkRecords(kContractTable, source.contracts(), e, reportName, rsData);
}

void SIR_HE::findDefects(TableChecks& checks, const Recordset& rs, int firstColumn, long row,
                         std::vector<Defect>& out, std::string& scratch, std::string& upperCased) {
  for (size_t i = 0; i < checks.columns.size(); ++i) {
    const ColumnCheck& check = checks.columns[i];
    const int column = firstColumn + static_cast<int>(i);
    std::string_view value;
    bool ownText = false;
    if (check.textField) {
      // The view is into scratch when the cell holds no text.
      scratch.clear();
      value = blankTrimmed(rs.textViewAt(row, column, scratch));
      ownText = !scratch.empty();
    } else {
      // A number's or a date's text is never empty: it is only needed
      // for a code.
      Value cell = rs.at(row, column);
      if (!cell.isNull() && !cell.isText() && !check.coded) continue;
      scratch = cell.text();
      value = blankTrimmed(scratch);
      ownText = true;
    }
    const char* defect = nullptr;
    if (value.empty()) {
      defect = kFieldIsEmpty;
    } else if (check.coded && !check.validCodes.contains(value, upperCased)) {
      defect = kInvalidValue;
    }
    if (defect == nullptr) continue;
    if (ownText && !value.empty()) value = checks.texts.emplace_back(value);
    out.push_back({static_cast<uint32_t>(i), defect, value});
  }
}

void SIR_HE::checkRecords(const char* table, const RecordRows& records, const Employee& e,
                          const std::string& reportName, Recordset& rsData) {
  const bool contract = std::string_view(table) == kContractTable;
  TableChecks& tableChecks = columnChecks(table, records);
  const Recordset& rs = *records.rs;
  std::string scratch;
  std::string upperCased;
  if (records.wholeTable && !tableChecks.scanned) {
    tableChecks.scanned = true;
    tableChecks.firstDefect.assign(static_cast<size_t>(rs.rowCount()) + 1, 0);
    for (long row = 0; row < rs.rowCount(); ++row) {
      tableChecks.firstDefect[static_cast<size_t>(row)] = static_cast<uint32_t>(tableChecks.defects.size());
      if (rs.isDeleted(row)) continue;
      findDefects(tableChecks, rs, records.firstColumn, row, tableChecks.defects, scratch, upperCased);
    }
    tableChecks.firstDefect.back() = static_cast<uint32_t>(tableChecks.defects.size());
  }
  std::string recordType;
  for (long row : records.rows) {
    std::span<const Defect> defects;
    if (records.wholeTable) {
      const Defect* all = tableChecks.defects.data();
      defects = std::span<const Defect>(all + tableChecks.firstDefect[static_cast<size_t>(row)],
                                        all + tableChecks.firstDefect[static_cast<size_t>(row) + 1]);
    } else {
      rowDefects_.clear();
      findDefects(tableChecks, rs, records.firstColumn, row, rowDefects_, scratch, upperCased);
      defects = rowDefects_;
    }
    const bool staffIdMissing = contract && e.hesaId.empty();
    if (defects.empty() && !staffIdMissing) continue;
    // The record type is only written with a defect.
    recordType = contract ? kContractPrefix + trim(rs.textAt(row, tableChecks.seqColumn)) : kPersonRecord;
    for (const Defect& d : defects) {
      const ColumnCheck& check = tableChecks.columns[d.check];
      addRow(rsData, reportName, e, recordType, check.name, check.label, d.value, d.error);
    }
    // The staff identifier is reported once per contract.
    if (staffIdMissing) {
      addRow(rsData, reportName, e, recordType, "STAFF_ID", lookups_.label(kStaffIdLabel), "", kFieldIsEmpty);
    }
  }
}

SIR_HE::TableChecks& SIR_HE::columnChecks(const char* table, const RecordRows& records) {
  TableChecks& checks = std::string_view(table) == kContractTable ? contractChecks_ : personChecks_;
  const Recordset& rs = *records.rs;
  const size_t count = static_cast<size_t>(records.endColumn - records.firstColumn);
  // The same recordset as last time: the same layout.
  if (checks.rs == &rs && checks.fields == rs.fields().data() && checks.columns.size() == count) return checks;
  checks.scanned = false;
  checks.firstDefect.clear();
  checks.defects.clear();
  checks.texts.clear();
  bool same = checks.columns.size() == count;
  for (size_t i = 0; same && i < count; ++i) {
    const FieldDef& field = rs.field(records.firstColumn + static_cast<int>(i));
    same = checks.columns[i].name == field.name && checks.columns[i].textField == ado::isTextType(field.type);
  }
  checks.rs = &rs;
  checks.fields = rs.fields().data();
  checks.seqColumn = rs.fieldIndex("SEQ_ID");
  if (same) return checks;

  checks.columns.clear();
  for (int c = records.firstColumn; c < records.endColumn; ++c) {
    ColumnCheck check;
    check.name = rs.field(c).name;
    const std::string key = std::string(table) + "." + check.name;
    check.label = lookups_.label(key);
    std::string codeTable = upperTrim(lookups_.codeTable(table, check.name));
    check.coded = !codeTable.empty() && codeTable != kMasterTable;
    check.validCodes = HesaLookups::validCodes(lookups_.codes(key));
    check.textField = ado::isTextType(rs.field(c).type);
    checks.columns.push_back(std::move(check));
  }
  return checks;
}

void SIR_HE::addRow(Recordset& rsData, const std::string& reportName, const Employee& e,
                    std::string_view recordType, std::string_view fieldId, std::string_view fieldDesc,
                    std::string_view value, std::string_view error) {
  const std::string_view texts[] = {reportName, e.empId,   e.knownAs, recordType,
                                    fieldId,    fieldDesc, value,     error};
  rsData.addNew();
  const long row = rsData.currentRow();
  for (int i = 0; i < static_cast<int>(std::size(texts)); ++i) {
    rsData.setTextAt(row, i, fitted(texts[i], kResultFields[i].size));
  }
}

bool SIR_HE::fncValidRecord(const std::string& reportName, const std::string& empId) {
  bool result = true;
  std::string sql;
  Procedure proc(Handler::Block, componentNames().reports, className(), "fncValidRecord");
  proc.variables([&] { return Dump().item("STREMP_ID:", empId).item("STRSQL = ", sql).text(); });
  proc.run([&](Steps& step) {
    if (reportName != kReportName) return;
    std::string start, end;
    step(1, [&] {
      start = gfncGetControlValue("", "PNL", "SIRSTARTDT");
      end = gfncGetControlValue("", "PNL", "SIRENDDT");
    });
    const std::string condition = "WHERE VARIATION_ID = '" + sqlQuote(gfncCompanyCode()) + "' " +
                                  "AND EMP_ID = '" + sqlQuote(empId) + "' " + "AND STATUS_ID = 'L'";
    bool leftBefore = false;
    step(2, [&] {
      sql = "SELECT DATE_LEFT FROM PNLEMPMST " + condition;
      Recordset rs;
      leftBefore = gfncOpenRecordset(sql, rs) && !rs.eof() && storedDateText(rs.get(0)) < start;
    });
    if (leftBefore) {
      result = false;
      return;
    }
    step(3, [&] {
      // The leaver condition again: the start-date test applies to leavers
      // only, and current staff are always members.
      sql = "SELECT DATE_START FROM PNLEMPMST " + condition;
      Recordset rs;
      if (!gfncOpenRecordset(sql, rs) || rs.eof()) return;
      result = !(storedDateText(rs.get(0)) > end);
    });
  });
  return result;
}

bool SIR_HE::ExtractStringData(std::shared_ptr<Environment> environment, std::string_view methodName,
                               const Parameters& parameters, std::string& strData) {
  bool result = false;
  const std::string method(methodName);
  Procedure proc(Handler::Block, componentNames().reports, className(), "ExtractStringData");
  proc.variables([&] { return Dump().item("STRMETHODNAME:", method).item("STRDATA:", strData).text(); });
  proc.run([&](Steps& step) {
    Recordset rs;
    step(1, [&] { result = ExtractData(environment, method, parameters, rs); });
    step(2, [&] { strData = result ? recordsetXmlText(rs) : std::string(); });
    step(3, [&] { rs.close(); });
  });
  return result;
}

}  // namespace orvalis::reports
