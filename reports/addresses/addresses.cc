#include "reports/addresses/addresses.h"

#include <optional>

#include "component/class_registry.h"
#include "data/data_functions.h"
#include "data/sql_text.h"
#include "reports/shared/query_driving.h"
#include "runtime/basic_string.h"
#include "runtime/error.h"

namespace orvalis::reports {

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{"Addresses", {"ExtractData"}, Handler::Block, newReportClass<Addresses>};
  return info;
}

// One address block, in field order; the address lookup reads the same
// columns after SEQ_ID.
constexpr ResultField kAddressFields[] = {
    {"NAME", ado::adVarChar, 40},     {"ADD_1", ado::adVarChar, 40},     {"ADD_2", ado::adVarChar, 40},
    {"ADD_3", ado::adVarChar, 40},    {"ADD_4", ado::adVarChar, 40},     {"ADD_5", ado::adVarChar, 40},
    {"POST_CODE", ado::adChar, 20},   {"PHONE_OFFICE", ado::adChar, 30}, {"PHONE_HOME", ado::adChar, 30},
    {"PHONE_FAX", ado::adChar, 30},   {"E_MAIL", ado::adVarChar, 100},   {"CONTACT_ID", ado::adVarChar, 40},
};
constexpr int kBlockSize = static_cast<int>(std::size(kAddressFields));

// The employee columns naming each block's address, in block order.
constexpr const char* kAddressIdColumns[] = {"HOME_ADD_ID", "EMER_ADD_ID", "NOK_ADD_ID", "NOK_WORK_ADD_ID"};

}  // namespace

Addresses::Addresses() : ReportClass(published()) {}

void registerAddresses() { registerReportClass(published()); }

std::string Addresses::employeesSql(const std::string& companyCode) {
  return std::string("SELECT EMP_ID, HOME_ADD_ID, EMER_ADD_ID, NOK_ADD_ID, NOK_WORK_ADD_ID FROM PNLEMPMST ") +
         "WHERE VARIATION_ID = '" + sqlQuote(companyCode) + "'";
}

std::string Addresses::addressesSql() {
  return std::string(
             "SELECT SEQ_ID, NAME, ADD_1, ADD_2, ADD_3, ADD_4, ADD_5, POST_CODE, PHONE_OFFICE, PHONE_HOME, ") +
         "PHONE_FAX, E_MAIL, CONTACT_ID " + "FROM ADMADRES";
}

void Addresses::resetWorkingState() {
  ReportClass::resetWorkingState();
  addId_.clear();
  sql_.clear();
  addresses_ = Recordset();
  addressIndex_ = RowIndex();
}

void Addresses::readParameters(const std::string&, const Parameters& parameters) { addId_ = parameters.text(1); }

// One extract, whatever the name.
bool Addresses::recognises(const std::string&) const { return true; }

void Addresses::openDriving(const std::string&, Recordset& driving) {
  sql_ = storedQuerySql(addId_);
  openStoredQuery(sql_, driving);
}

bool Addresses::createBaseRecordset(const std::string&, Recordset& rsData) {
  rsData = Recordset();
  subAddQueryFields(rsData, driving());
  return fncCreateBaseRecordset(rsData);
}

bool Addresses::fncCreateBaseRecordset(Recordset& rsData) {
  for (const char* prefix : kBlockPrefixes) {
    for (const ResultField& f : kAddressFields) appendResultField(rsData, prefix + std::string(f.name), f.type, f.size);
  }
  rsData.open();
  return rsData.isOpen();
}

bool Addresses::baseLoop(const std::string& method, Recordset& rsData, Recordset& driving) {
  return fncBaseLoop(method, rsData, driving);
}

void Addresses::dumpVariables(Dump& dump) const { dump.item("STRADDID = ", addId_); }

bool Addresses::fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& rsQuery) {
  bool result = false;
  std::string colSql;
  Procedure proc(Handler::Block, componentNames().reports, className(), "fncBaseLoop");
  proc.variables([&] { return Dump().item("STRMETHODNAME:", method).item("STRCOLSQL = ", colSql).text(); });
  proc.run([&](Steps& step) {
    Recordset employees;
    RowIndex employeeIndex;
    step(1, [&] {
      colSql = employeesSql(gfncCompanyCode());
      if (gfncOpenRecordset(colSql, employees)) employeeIndex = RowIndex(employees, {"EMP_ID"});
    });
    step(2, [&] {
      colSql = addressesSql();
      if (gfncOpenRecordset(colSql, addresses_)) addressIndex_ = RowIndex(addresses_, {"SEQ_ID"});
    });

    int empColumn = -1;
    int reportIdField = -1;
    int idColumns[std::size(kAddressIdColumns)] = {};
    int blockFields[std::size(kBlockPrefixes)] = {};
    std::optional<QueryRowCopier> copier;
    step(3, [&] {
      empColumn = rsQuery.fieldIndex("emp_id");
      if (empColumn < 0) {
        throw Error(err::kItemNotFound, "ADODB.Fields",
                    "Item cannot be found in the collection corresponding to the requested name or ordinal. "
                    "(emp_id)");
      }
      reportIdField = rsData.fieldIndex("REPORT_ID");
      for (size_t b = 0; b < std::size(kBlockPrefixes); ++b) {
        blockFields[b] = rsData.fieldIndex(std::string(kBlockPrefixes[b]) + kAddressFields[0].name);
        idColumns[b] = employees.fieldIndex(kAddressIdColumns[b]);
      }
      copier.emplace(rsQuery, rsData);
    });

    step(4, [&] {
      rsData.reserve(rsQuery.recordCount());
      for (rsQuery.moveFirst(); !rsQuery.eof(); rsQuery.moveNext()) {
        const long row = rsQuery.currentRow();
        rsData.addNew();
        rsData.setTextAt(rsData.currentRow(), reportIdField, kReportId);
        copier->copy(rsQuery, row, rsData);
        const long employee = employeeIndex.first(rsQuery, row, empColumn);
        if (employee < 0) continue;
        for (size_t b = 0; b < std::size(kBlockPrefixes); ++b) {
          subAddAddressDetails(rsData, blockFields[b], employees, employee, idColumns[b]);
        }
      }
      rsData.moveFirst();
      result = true;
    });
  });
  return result;
}

void Addresses::subAddAddressDetails(Recordset& rsData, int firstField, const Recordset& employees, long employee,
                                     int idColumn) {
  // The address id is looked up as the cell holds it (a number without a
  // trip through its text).
  const long address = addressIndex_.first(employees, employee, idColumn);
  if (address < 0) return;
  try {
    const long row = rsData.currentRow();
    // The block's texts are shared with the address lookup, not copied.
    rsData.copyCells(row, firstField, addresses_, address, 1, kBlockSize);
  } catch (...) {
    // The handler is set up only when a value fails, so the per-row cost
    // stays that of the copy; the block reads as if it had always been there.
    std::exception_ptr failure = std::current_exception();
    const std::string temp = trim(employees.textAt(employee, idColumn));
    Procedure proc(Handler::Block, componentNames().reports, className(), "subAddAddressDetails");
    proc.variables([&] { return Dump().item("STRTEMP:", temp).text(); });
    proc.run([&](Steps& step) { step(1, [&] { std::rethrow_exception(failure); }); });
  }
}

}  // namespace orvalis::reports
