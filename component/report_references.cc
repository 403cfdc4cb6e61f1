#include "component/report_references.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "component/errors/error_handling.h"
#include "runtime/basic_string.h"

namespace orvalis {

namespace {

constexpr const char* kModule = "HRClassFunctions";

struct NumberedReport {
  const char* number;
  const char* reference;
};

// Personnel report numbers, applied only in module "PNL".
constexpr NumberedReport kPersonnelNumbers[] = {
    {"01", "SIR_DATA"},     {"09", "HOLIDAYS"}, {"28", "ABSENCE"},        {"90", "ESTABLISHMENT"},
    {"91", "JOB_ANALYSIS"}, {"92", "SIR_CPD"},  {"93", "TRAINING_COSTS"}, {"94", "EMPLOYEE_ADDRESSES"},
};

// Where a row sends the module.
enum class ModuleRule { Pnl, Pay, Adm, AdmElsePay };

struct ClassRow {
  std::vector<std::string_view> references;
  const char* className;
  ModuleRule module;
};

// Searched in order; the first row holding the reference wins. The mixed-
// case references of rows 7 and 8 never equal an upper-cased reference, so
// "TRAINING_COSTS" finds no class and the Addresses report is reached only
// through "EMPLOYEE_ADDRESSES".
const ClassRow kClassRows[] = {
    {{"74"}, "NewHRRecords", ModuleRule::Pay},
    {{"PNLEMPABS", "ABSENCE"}, "Absence", ModuleRule::Pnl},
    {{"PNLEMPSIRHE", "PNLEMPSIRCO", "HESA", "SIR_HE", "SIR_DATA"}, "SIR_HE", ModuleRule::Pnl},
    {{"ESTABLISHMENT"}, "Establishment", ModuleRule::Pnl},
    {{"SIR_CPD"}, "SIR_FE", ModuleRule::Pnl},
    {{"POST_REVIEW", "JOB_ANALYSIS"}, "PostReview", ModuleRule::Pnl},
    {{"TrainingCosts"}, "TRAINING_COSTS", ModuleRule::Pnl},
    {{"Addresses", "EMPLOYEE_ADDRESSES"}, "Addresses", ModuleRule::Pnl},
    {{"PNL_AUDIT"}, "AuditData", ModuleRule::Pnl},
    {{"HOLIDAYS"}, "Holidays", ModuleRule::Pnl},
    {{"DATA_VAULT"}, "DataVault", ModuleRule::Adm},
    {{"ENVIRONMENT"}, "Environment", ModuleRule::Adm},
    {{"QUERY", "QUERIES", "HRQUERIES", "HRQUERY", "HR_QUERY"}, "HRQuery", ModuleRule::Adm},
    {{"PDFCREATION"}, "ReportingData", ModuleRule::Adm},
    {{"REPORTING", "REPORTINGDATA",
      "06",        "09",
      "10",        "18",
      "19",        "21",
      "22",        "25",
      "27",        "31",
      "32",        "44",
      "49",        "51",
      "52",        "53",
      "54",        "55",
      "63",        "64",
      "67",        "72",
      "75",        "76",
      "86",        "88"},
     "ReportingData",
     ModuleRule::AdmElsePay},
    {{"PAYEMPRTI", "RTIDATA", "RTI_DATA", "RTI", "RTI_FPS", "RTI_EPS", "RTI_NVR", "RTI_EAS"},
     "RTIData",
     ModuleRule::Pay},
    {{"TPCONTS"}, "PensionSubmission", ModuleRule::Pay},
    {{"PAYEMPPAD", "PENSION_AUDIT", "AUTO_ENROLMENT"}, "Pensions", ModuleRule::Pay},
    {{"XMLINTERFACE", "XML", "INTERFACE"}, "XMLInterface", ModuleRule::Adm},
    {{"EXTERNALINTERFACE", "EXTERNAL_INTERFACE"}, "ExternalInterface", ModuleRule::Adm},
    {{"AUDITS", "AUDITDATA", "04", "16", "35", "46", "82", "83", "84"}, "AuditData", ModuleRule::Pay},
    {{"PAYSLIPS", "PAYSLIPDATA", "14"}, "PayslipData", ModuleRule::Pay},
    {{"PAYROLL_DETAIL", "37"}, "PayrollDetail", ModuleRule::Pay},
    {{"BALANCES", "BALANCEDATA", "P60"}, "Balances", ModuleRule::Pay},
    {{"PENSIONS", "98", "34", "40", "62", "71"}, "Pensions", ModuleRule::Pay},
    {{"PENSERVER", "100"}, "PenServer", ModuleRule::Pay},
    {{"NEST", "NEST_ENROLMENT", "NEST_SUBMISSION", "94", "93"}, "PensionsNEST", ModuleRule::Pay},
    {{"47", "57", "58", "59", "60", "77"}, "FinanceData", ModuleRule::Pay},
    {{"05", "07", "11", "12", "20", "41", "65", "73"}, "TransactionData", ModuleRule::Pay},
    {{"30", "43"}, "FixedData", ModuleRule::Pay},
    {{"69", "P45", "P45DATA"}, "P45Data", ModuleRule::Pay},
    {{"P11", "P32", "99"}, "P11P32Data", ModuleRule::Pay},
    {{"P14", "P14S", "P35_LIST", "17"}, "P14Data", ModuleRule::Pay},
    {{"P35", "RECON_SUMMARY", "23"}, "P35Data", ModuleRule::Pay},
    {{"50", "JOURNAL", "JOURNAL_DATA", "JOURNAL_SUMMARY"}, "JournalData", ModuleRule::Pay},
    {{"BACS", "26", "45", "13", "COMPOSITE_PAYMENTS"}, "BACS", ModuleRule::Pay},
    {{"OCC_SICK_BUS"}, "OccSick", ModuleRule::Pay},
};

std::string moduleOf(ModuleRule rule, const std::string& current) {
  switch (rule) {
    case ModuleRule::Pnl:
      return "PNL";
    case ModuleRule::Pay:
      return "PAY";
    case ModuleRule::Adm:
      return "ADM";
    case ModuleRule::AdmElsePay:
      return current == "ADM" ? "ADM" : "PAY";
  }
  return current;
}

}  // namespace

void subConvertReference(std::string& reference) {
  Procedure proc(Handler::ErrorComponent, componentNames().payroll, kModule, "subConvertReference");
  proc.variables([&] { return Dump().item("STRREFERENCE:", reference).text(); });
  proc.run([&](Steps& step) {
    step(1, [&] {
      for (const NumberedReport& n : kPersonnelNumbers) {
        if (reference == n.number) {
          reference = n.reference;
          return;
        }
      }
    });
  });
}

std::string gfncGetBusClassName(std::string& module, const std::string& reference) {
  std::string className;
  std::string ref;
  Procedure proc(Handler::ErrorComponent, componentNames().payroll, kModule, "gfncGetBusClassName");
  proc.variables([&] {
    return Dump().item("STRREF:", ref).item("STRBC = ", className).item("STRREFERENCE = ", reference).text();
  });
  proc.run([&](Steps& step) {
    step(1, [&] {
      module = upperTrim(module);
      ref = upperTrim(reference);
    });
    if (ref.empty()) return;
    if (module == "PNL") step(2, [&] { subConvertReference(ref); });
    step(3, [&] {
      for (const ClassRow& row : kClassRows) {
        for (std::string_view candidate : row.references) {
          if (candidate == ref) {
            className = row.className;
            module = moduleOf(row.module, module);
            return;
          }
        }
      }
    });
  });
  return className;
}

std::string componentNameOfModule(const std::string& module) {
  const std::string m = upperTrim(module);
  if (m == "PNL") return componentNames().reports;
  if (m == "PAY") return componentNames().payroll;
  if (m == "ADM") return componentNames().administration;
  return "";
}

std::string gfncGetBusObjectID(const std::string& module, const std::string& reference) {
  std::string m = upperTrim(module);
  if (m.empty()) return "";
  const std::string ref = upperTrim(reference);
  if (ref.empty()) return "";
  const std::string className = gfncGetBusClassName(m, ref);
  if (className.empty()) return "";
  return componentNameOfModule(m) + "." + className;
}

std::vector<std::string> referencesReaching(const std::string& classId) {
  const std::string wanted = upperTrim(classId);
  std::vector<std::string> candidates;
  for (const ClassRow& row : kClassRows) {
    for (std::string_view r : row.references) candidates.emplace_back(r);
  }
  for (const NumberedReport& n : kPersonnelNumbers) candidates.emplace_back(n.number);
  std::vector<std::string> found;
  for (const std::string& reference : candidates) {
    std::vector<std::string> modules;
    for (const char* module : {"PNL", "PAY", "ADM"}) {
      if (upperTrim(gfncGetBusObjectID(module, reference)) == wanted) modules.emplace_back(module);
    }
    if (modules.empty()) continue;
    const std::string text = modules.size() == 3 ? reference : reference + " (" + join(modules, ", ") + ")";
    if (std::find(found.begin(), found.end(), text) == found.end()) found.push_back(text);
  }
  return found;
}

}  // namespace orvalis
