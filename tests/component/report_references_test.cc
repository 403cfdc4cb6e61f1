// Report reference resolution: every row of the class table, the personnel
// numbers, and the quirks that must be kept.

#include "component/report_references.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "component/errors/error_handling.h"

namespace orvalis {
namespace {

struct Row {
  std::vector<std::string> references;
  std::string className;
  std::string module;  // "ADM|PAY": ADM kept from ADM, else PAY
};

// The class table, as published to the host.
const std::vector<Row> kTable = {
    {{"74"}, "NewHRRecords", "PAY"},
    {{"PNLEMPABS", "ABSENCE"}, "Absence", "PNL"},
    {{"PNLEMPSIRHE", "PNLEMPSIRCO", "HESA", "SIR_HE", "SIR_DATA"}, "SIR_HE", "PNL"},
    {{"ESTABLISHMENT"}, "Establishment", "PNL"},
    {{"SIR_CPD"}, "SIR_FE", "PNL"},
    {{"POST_REVIEW", "JOB_ANALYSIS"}, "PostReview", "PNL"},
    {{"EMPLOYEE_ADDRESSES"}, "Addresses", "PNL"},
    {{"PNL_AUDIT"}, "AuditData", "PNL"},
    {{"HOLIDAYS"}, "Holidays", "PNL"},
    {{"DATA_VAULT"}, "DataVault", "ADM"},
    {{"ENVIRONMENT"}, "Environment", "ADM"},
    {{"QUERY", "QUERIES", "HRQUERIES", "HRQUERY", "HR_QUERY"}, "HRQuery", "ADM"},
    {{"PDFCREATION"}, "ReportingData", "ADM"},
    {{"REPORTING", "REPORTINGDATA",
      "06",        "10",
      "18",        "19",
      "21",        "22",
      "25",        "27",
      "31",        "32",
      "44",        "49",
      "51",        "52",
      "53",        "54",
      "55",        "63",
      "64",        "67",
      "72",        "75",
      "76",        "86",
      "88"},
     "ReportingData",
     "ADM|PAY"},
    {{"PAYEMPRTI", "RTIDATA", "RTI_DATA", "RTI", "RTI_FPS", "RTI_EPS", "RTI_NVR", "RTI_EAS"}, "RTIData", "PAY"},
    {{"TPCONTS"}, "PensionSubmission", "PAY"},
    {{"PAYEMPPAD", "PENSION_AUDIT", "AUTO_ENROLMENT"}, "Pensions", "PAY"},
    {{"XMLINTERFACE", "XML", "INTERFACE"}, "XMLInterface", "ADM"},
    {{"EXTERNALINTERFACE", "EXTERNAL_INTERFACE"}, "ExternalInterface", "ADM"},
    {{"AUDITS", "AUDITDATA", "04", "16", "35", "46", "82", "83", "84"}, "AuditData", "PAY"},
    {{"PAYSLIPS", "PAYSLIPDATA", "14"}, "PayslipData", "PAY"},
    {{"PAYROLL_DETAIL", "37"}, "PayrollDetail", "PAY"},
    {{"BALANCES", "BALANCEDATA", "P60"}, "Balances", "PAY"},
    {{"PENSIONS", "98", "34", "40", "62", "71"}, "Pensions", "PAY"},
    {{"PENSERVER", "100"}, "PenServer", "PAY"},
    {{"NEST", "NEST_ENROLMENT", "NEST_SUBMISSION"}, "PensionsNEST", "PAY"},
    {{"47", "57", "58", "59", "60", "77"}, "FinanceData", "PAY"},
    {{"05", "07", "11", "12", "20", "41", "65", "73"}, "TransactionData", "PAY"},
    {{"30", "43"}, "FixedData", "PAY"},
    {{"69", "P45", "P45DATA"}, "P45Data", "PAY"},
    {{"P11", "P32", "99"}, "P11P32Data", "PAY"},
    {{"P14", "P14S", "P35_LIST", "17"}, "P14Data", "PAY"},
    {{"P35", "RECON_SUMMARY", "23"}, "P35Data", "PAY"},
    {{"50", "JOURNAL", "JOURNAL_DATA", "JOURNAL_SUMMARY"}, "JournalData", "PAY"},
    {{"BACS", "26", "45", "13", "COMPOSITE_PAYMENTS"}, "BACS", "PAY"},
    {{"OCC_SICK_BUS"}, "OccSick", "PAY"},
};

// Personnel numbers other than "09", "93" and "94" are not references of
// any row by themselves, so the row answers the same in every module.
TEST(ReportReferences, EveryRowResolvesInEveryModule) {
  for (const Row& row : kTable) {
    for (const std::string& ref : row.references) {
      for (std::string module : {"PNL", "PAY", "ADM"}) {
        const std::string given = module;
        std::string expectedModule = row.module;
        if (expectedModule == "ADM|PAY") expectedModule = given == "ADM" ? "ADM" : "PAY";
        EXPECT_EQ(gfncGetBusClassName(module, ref), row.className) << given << " " << ref;
        EXPECT_EQ(module, expectedModule) << given << " " << ref;
        EXPECT_EQ(gfncGetBusObjectID(given, ref), componentNameOfModule(expectedModule) + "." + row.className)
            << given << " " << ref;
      }
    }
  }
}

struct Case {
  std::string module;
  std::string reference;
  std::string className;
  std::string moduleAfter;
  std::string id;
};

TEST(ReportReferences, PersonnelNumbersAndQuirks) {
  const std::string pay = componentNames().payroll;
  const std::string adm = componentNames().administration;
  const std::vector<Case> cases = {
      {"pnl ", " 28", "Absence", "PNL", "ORVALIS.Absence"},
      {"PNL", "01", "SIR_HE", "PNL", "ORVALIS.SIR_HE"},
      {"PNL", "09", "Holidays", "PNL", "ORVALIS.Holidays"},
      {"PAY", "09", "ReportingData", "PAY", pay + ".ReportingData"},
      {"ADM", "09", "ReportingData", "ADM", adm + ".ReportingData"},
      {"PNL", "90", "Establishment", "PNL", "ORVALIS.Establishment"},
      {"PNL", "91", "PostReview", "PNL", "ORVALIS.PostReview"},
      {"PNL", "92", "SIR_FE", "PNL", "ORVALIS.SIR_FE"},
      // Row 7's references are mixed case and never match.
      {"PNL", "93", "", "PNL", ""},
      {"PNL", "TRAINING_COSTS", "", "PNL", ""},
      {"PNL", "TrainingCosts", "", "PNL", ""},
      {"PAY", "93", "PensionsNEST", "PAY", pay + ".PensionsNEST"},
      {"PNL", "94", "Addresses", "PNL", "ORVALIS.Addresses"},
      {"PNL", "Addresses", "", "PNL", ""},
      {"ADM", "94", "PensionsNEST", "PAY", pay + ".PensionsNEST"},
      {"PNL", "06", "ReportingData", "PAY", pay + ".ReportingData"},
      {"ADM", "06", "ReportingData", "ADM", adm + ".ReportingData"},
      {"PNL", "74", "NewHRRecords", "PAY", pay + ".NewHRRecords"},
      {" adm ", "absence", "Absence", "PNL", "ORVALIS.Absence"},
      {"PNL", "NO_SUCH_REPORT", "", "PNL", ""},
      {" pay ", "  ", "", "PAY", ""},
      {"", "ABSENCE", "Absence", "PNL", ""},  // no module: no identifier
  };
  for (const Case& c : cases) {
    std::string module = c.module;
    EXPECT_EQ(gfncGetBusClassName(module, c.reference), c.className) << c.module << "/" << c.reference;
    EXPECT_EQ(module, c.moduleAfter) << c.module << "/" << c.reference;
    EXPECT_EQ(gfncGetBusObjectID(c.module, c.reference), c.id) << c.module << "/" << c.reference;
  }
}

}  // namespace
}  // namespace orvalis
