#include "reports/absence/absence.h"

#include <algorithm>
#include <array>
#include <functional>
#include <string_view>

#include "component/class_registry.h"
#include "component/ttx_file.h"
#include "data/data_functions.h"
#include "data/dialect_functions.h"
#include "diary/absence_days.h"
#include "diary/absence_year.h"
#include "diary/day_type.h"
#include "reports/absence/absence_analyses.h"
#include "diary/diary_module.h"
#include "reports/absence/absence_fields.h"
#include "reports/absence/absence_statement.h"
#include "runtime/basic_date.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"
#include "runtime/progress.h"

namespace orvalis::reports {

using namespace absence;

namespace {

// The class as it is published: name, public methods, the error handling
// of its procedures.
const ReportClassInfo& published() {
  static const ReportClassInfo info{
      "Absence", {"ExtractData"}, Handler::ErrorComponent, newReportClass<Absence>};
  return info;
}

// Columns of the driving statement, in its order.
enum Col {
  cSeq, cEmp, cDescription, cType, cAbsent, cStart, cStartTime, cEnd, cEndTime, cDuration, cPost,
  cStartAct, cEndAct, cAction, cReview, cStartDow, cPrvNonWork, cNxtNonWork, cDurHours, cCertified,
  cCertMethod, cExpiry, cEndDow, cDurCalDays, cCategory,
};

// A date value, or a text read as a date; the date part only.
std::optional<DateTime> dateOf(const Value& v) {
  if (v.isDate() || v.isText()) return diary::dateOf(v);
  return std::nullopt;
}

Value dateValue(const Value& v) {
  std::optional<DateTime> d = dateOf(v);
  return d ? Value(*d) : Value::null();
}

Value numberValue(const Value& v) {
  if (v.isNull() || v.isEmpty()) return Value::null();
  if (v.isNumber()) return Value(v.toDouble());
  return Value(val(trim(v.text())));
}

// The text without its leading and trailing spaces, in place (trim()).
std::string_view trimmed(std::string_view s) {
  const size_t b = s.find_first_not_of(' ');
  if (b == std::string_view::npos) return {};
  return s.substr(b, s.find_last_not_of(' ') - b + 1);
}

// Stored non-working-day flags: "N", "0" and "F" read no.
const char* yesNo(std::string_view text) {
  const std::string_view t = trimmed(text);
  const char first = t.empty() ? ' ' : t.front();
  return (first == 'N' || first == 'n' || first == '0' || first == 'F' || first == 'f') ? "No" : "Yes";
}

}  // namespace

void Absence::resetWorkingState() {
  ReportClass::resetWorkingState();
  params_ = AbsenceParameters();
  variant_ = Variant::Listing;
  parameterText_.clear();
  sql_.clear();
  codes_ = CodeTables();
  employees_ = Employees();
  posts_ = PostDescriptions();
  patterns_.reset();
  wholeDays_.clear();
}

void Absence::readParameters(const std::string& method, const Parameters& parameters) {
  variant_ = variantOf(method);
  parameterText_ = parameters.describe();
  params_ = readAbsenceParameters(parameters);
}

// Every name is an Absence report: the named variants, or the listing.
bool Absence::recognises(const std::string&) const { return true; }

void Absence::runExtract(const std::string& method, Recordset& rsData, Steps& step, bool& result) {
  if (isAnalysis(variant_)) step(5, [&] { checkAnalysisParameters(params_); });
  step(6, [&] {
    sql_.clear();
    if (!params_.hasPeriod) return;
    StatementInputs in;
    in.factor = gfncAbsDecimalFactor();
    in.periodStart = params_.periodStart.iso();
    in.periodEnd = params_.periodEnd.iso();
    in.include = params_.include;
    in.variation = gfncCompanyCode();
    in.secondVariation = gfncMasterVariation();
    in.absenceTypes = params_.absenceWhere;
    in.empId = params_.empId;
    sql_ = absenceStatement(in, currentDialect());
    gfncOpenRecordset(sql_, driving());
  });
  bool created = false;
  step(7, [&] { created = createBaseRecordset(method, rsData); });
  if (created) {
    step(8, [&] {
      Recordset& drv = driving();
      if (!drv.isOpen() || drv.recordCount() <= 0) return;
      result = isAnalysis(variant_) ? fncAnalysis(method, rsData, drv) : fncBaseLoop(method, rsData, drv);
    });
  }
  if (result) step(9, [&] { gsubWriteTTX(&rsData, "", true); });
}

bool Absence::createBaseRecordset(const std::string&, Recordset& rsData) {
  if (isAnalysis(variant_)) return layOutAnalysis(variant_, rsData);
  if (isReview(variant_)) return layOutResult(rsData, kReviewFields);
  return layOutResult(rsData, kListingFields);
}

void Absence::dumpVariables(Dump& dump) const {
  dump.item("STRPARAMETERS = ", parameterText_);
  dump.item("STRSQL = ", sql_);
}

double Absence::recount(const Recordset& drv, long row, const std::string& empId, double stored) {
  const bool on = isReview(variant_) ? params_.reviewRecount() : params_.listingRecount();
  if (!on) return stored;
  std::optional<DateTime> from = dateOf(drv.at(row, cStart));
  if (!from) return stored;
  // An open-ended absence runs on past any period.
  DateTime to = dateOf(drv.at(row, cEnd)).value_or(params_.periodEnd);
  if (*from < params_.periodStart) from = params_.periodStart;
  if (to > params_.periodEnd) to = params_.periodEnd;
  if (to < *from) return 0;

  const std::string type = trim(drv.textAt(row, cType));
  auto whole = wholeDays_.find(type);
  if (whole == wholeDays_.end()) whole = wholeDays_.emplace(type, gfncWholeDaysAbsence(type)).first;
  if (!patterns_) {
    patterns_ = std::make_unique<PatternSet>();
    // A listing of many employees reads their posts once; one employee's
    // absences are counted with that employee's own statements.
    patterns_->readPostsAhead(params_.empId.empty());
  }
  double hours = 0;
  return gfncDiaryNoOfDays(empId, diary::houseText(*from), trim(drv.textAt(row, cStartTime)), diary::houseText(to),
                           trim(drv.textAt(row, cEndTime)), type, trim(drv.textAt(row, cPost)), hours, "", "",
                           *patterns_, whole->second, false);
}

bool Absence::fncBaseLoop(const std::string& method, Recordset& rsData, Recordset& drv) {
  bool result = false;
  Procedure proc(Handler::ErrorComponent, componentNames().reports, className(), "fncBaseLoop");
  proc.variables(
      [&] { return Dump().item("STRMETHODNAME:", method).item("STRPARAMETERS:", parameterText_).text(); });
  proc.run([&](Steps& step) {
    const std::string variation = gfncCompanyCode();
    step(1, [&] {
      codes_.load(variation);
      employees_.load(variation, params_.includeLeavers());
      if (!isReview(variant_)) posts_.load(variation);
    });

    std::vector<ReviewRow> review;
    std::unordered_map<std::string, size_t> reviewIndex;
    const bool listing = !isReview(variant_);
    if (listing) rsData.reserve(drv.rowCount());
    std::string scratch;
    // The rows come in employee order: the employee (and the post) of the
    // row before is usually the one wanted.
    std::string lastEmpId;
    const EmployeeRow* lastEmployee = nullptr;
    const std::string* lastDepartment = nullptr;
    size_t lastReview = 0;
    std::string lastPostEmpId;
    std::string lastPost;
    const std::string* lastPostDescription = nullptr;
    struct LastCode {
      std::string code;
      const std::string* description = nullptr;
    };
    std::array<LastCode, std::size(kListingFields)> lastCodes;
    for (long row = 0; row < drv.rowCount(); ++row) {
      progressStep(static_cast<double>(row), static_cast<double>(drv.rowCount()));
      auto absence = [&] {
        const std::string empId = trim(drv.textAt(row, cEmp));
        const bool sameEmployee = lastDepartment != nullptr && empId == lastEmpId;
        if (!sameEmployee) {
          lastEmpId = empId;
          lastEmployee = employees_.find(empId);
          lastDepartment = lastEmployee ? &codes_.describe(CodeTable::Department, lastEmployee->deptId) : nullptr;
        }
        const EmployeeRow* e = lastEmployee;
        if (e == nullptr) return;
        const Value stored = numberValue(drv.at(row, cDuration));
        const double days = recount(drv, row, empId, stored.isNull() ? 0.0 : stored.asDouble());
        if (!listing) {
          if (!sameEmployee) {
            auto [it, added] = reviewIndex.emplace(empId, review.size());
            lastReview = it->second;
            if (added) {
              ReviewRow r;
              r.empId = empId;
              r.surname = e->surname;
              r.forename = e->forename;
              r.knownAs = e->knownAs;
              r.department = *lastDepartment;
              review.push_back(std::move(r));
            }
          }
          ReviewRow& r = review[lastReview];
          // One spell per absence record.
          ++r.periods;
          r.duration += days;
          return;
        }
        rsData.addNew();
        const long out = rsData.currentRow();
        // A cell of the driving row in place (until the next one is read).
        auto cell = [&](int column) { return drv.textViewAt(row, column, scratch); };
        auto text = [&](int field, std::string_view value) {
          rsData.setTextAt(out, field, fitted(trimmed(value), kListingFields[field].size));
        };
        auto code = [&](int field, CodeTable table, int column) {
          // Neighbouring rows mostly share their codes.
          LastCode& last = lastCodes[field];
          const std::string_view value = cell(column);
          if (last.description == nullptr || value != last.code) {
            last.code.assign(value);
            last.description = &codes_.describe(table, value);
          }
          text(field, *last.description);
        };
        text(0, empId);
        text(1, e->surname);
        text(2, e->forename);
        text(3, *lastDepartment);
        text(4, "Absence Records");
        text(5, cell(cDescription));
        code(6, CodeTable::AbsenceType, cType);
        code(7, CodeTable::AbsenceReason, cAbsent);
        rsData.set(8, dateValue(drv.at(row, cStart)));
        text(9, cell(cStartTime));
        rsData.set(10, dateValue(drv.at(row, cEnd)));
        text(11, cell(cEndTime));
        rsData.set(12, Value(days));
        const std::string post = trim(drv.textAt(row, cPost));
        text(13, post);
        if (lastPostDescription == nullptr || post != lastPost || empId != lastPostEmpId) {
          lastPostEmpId = empId;
          lastPost = post;
          lastPostDescription = &posts_.describe(empId, post);
        }
        text(14, *lastPostDescription);
        text(15, cell(cStartAct));
        text(16, cell(cEndAct));
        code(17, CodeTable::Action, cAction);
        rsData.set(18, dateValue(drv.at(row, cReview)));
        text(19, cell(cStartDow));
        text(20, yesNo(cell(cPrvNonWork)));
        text(21, yesNo(cell(cNxtNonWork)));
        rsData.set(22, numberValue(drv.at(row, cDurHours)));
        text(23, cell(cCertified));
        code(24, CodeTable::CertMethod, cCertMethod);
        rsData.set(25, dateValue(drv.at(row, cExpiry)));
        text(26, cell(cEndDow));
        rsData.set(27, numberValue(drv.at(row, cDurCalDays)));
        code(28, CodeTable::Category, cCategory);
        text(29, cell(cSeq));
        rsData.set(30, stored);
      };
      step(2, std::ref(absence));
    }
    if (listing) {
      result = true;
      return;
    }
    bool scored = false;
    step(3, [&] { scored = fncReviewRows(review); });
    if (!scored) return;
    step(4, [&] {
      writeReview(review, rsData);
      result = true;
    });
  });
  return result;
}

bool Absence::fncAnalysis(const std::string& method, Recordset& rsData, const Recordset& drv) {
  bool result = false;
  Procedure proc(Handler::ErrorComponent, componentNames().reports, className(), "fncAnalysis");
  proc.variables(
      [&] { return Dump().item("STRMETHODNAME:", method).item("STRPARAMETERS:", parameterText_).text(); });
  proc.run([&](Steps& step) { step(1, [&] { result = runAnalysis(variant_, params_, drv, rsData); }); });
  return result;
}

bool Absence::fncReviewRows(std::vector<ReviewRow>& rows) {
  bool result = false;
  std::string empId;
  Procedure proc(Handler::ErrorComponent, componentNames().reports, className(), "fncAbsenceScore");
  proc.variables([&] { return Dump().item("STREMP_ID:", empId).text(); });
  proc.run([&](Steps& step) {
    ScoreBands bands;
    step(1, [&] { bands = ScoreBands::fromControl(); });
    std::vector<ReviewRow> kept;
    kept.reserve(rows.size());
    for (ReviewRow& r : rows) {
      step(2, [&] {
        empId = r.empId;
        r.score = absenceScore(r.periods, r.duration);
        r.band = bands.bandOf(r.score);
        if (withinScoreBounds(r.score, params_.lowerScore(), params_.upperScore())) kept.push_back(r);
      });
    }
    step(3, [&] {
      subApplyFilters(kept, params_.minimumDuration(), params_.minimumOccurrence());
      if (variant_ == Variant::Bradford) {
        std::stable_sort(kept.begin(), kept.end(),
                         [](const ReviewRow& a, const ReviewRow& b) { return a.score > b.score; });
      } else if (variant_ == Variant::Frequency) {
        std::stable_sort(kept.begin(), kept.end(),
                         [](const ReviewRow& a, const ReviewRow& b) { return a.periods > b.periods; });
      }
      rows = std::move(kept);
      result = true;
    });
  });
  return result;
}

void Absence::writeReview(const std::vector<ReviewRow>& rows, Recordset& rsData) {
  rsData.reserve(static_cast<long>(rows.size()));
  for (const ReviewRow& r : rows) {
    rsData.addNew();
    auto text = [&](int field, std::string_view value) {
      rsData.set(field, Value(fitted(value, kReviewFields[field].size)));
    };
    text(0, r.empId);
    text(1, r.surname);
    text(2, r.forename);
    text(3, r.knownAs);
    text(4, r.department);
    rsData.set(5, Value(r.periods));
    rsData.set(6, Value(r.duration));
    rsData.set(7, Value(r.score));
    text(8, r.band);
  }
}

Absence::Absence() : ReportClass(published()) {}

void registerAbsence() { registerReportClass(published()); }

}  // namespace orvalis::reports
