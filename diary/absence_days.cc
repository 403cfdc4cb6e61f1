#include "diary/absence_days.h"

#include <functional>
#include <optional>
#include <vector>

#include "component/errors/debug_log.h"
#include "data/control.h"
#include "data/hr_environment.h"
#include "data/sql_text.h"
#include "diary/dates_list.h"
#include "diary/day_type.h"
#include "diary/diary_module.h"
#include "diary/diary_trace.h"
#include "diary/working_day.h"
#include "diary/working_pattern.h"
#include "runtime/basic_number.h"
#include "runtime/basic_string.h"

namespace orvalis {

using diary::firstLetter;

namespace {

constexpr const char* kSuccess = "SUCCESS";
constexpr const char* kFailed = "FAILED";

// The all-jobs switch, read from the control table once a session.
std::string allJobsSwitch() {
  HRSession& session = HREnvironment::session();
  std::string value = trim(session.GlobalVariable("ABSALLJOBS").text());
  if (value.empty()) {
    value = firstLetter(gfncGetControlValue("", "PNL", "ABSALLJOBS"));
    if (value != "Y") value = "N";
    session.SetGlobalVariable("ABSALLJOBS", Value(value));
  }
  return value;
}

void trace(const std::string& text) { gsubDebugLog("gfncDiaryNoOfDays", text); }

}  // namespace

bool gfncDiaryDayHourCount(const std::string& workingPattern, const std::string& patternStartDate,
                           const std::string& type, const std::string& employee, const std::string& post,
                           const std::string& fromDate, const std::string& fromHalf, const std::string& fromTime,
                           const std::string& toDate, const std::string& toHalf, const std::string& toTime,
                           double& days, double& hours, PatternSet& patterns,
                           const std::string& initialiseDatesList, const std::string& wholeDaysOnly) {
  bool ran = false;
  DatesListScope datesList;  // joins the absence's scope when a post is counted
  const std::string fromMarker = upperTrim(fromHalf);
  const std::string toMarker = upperTrim(toHalf);
  std::string dayType;
  std::string whole;
  std::string startToUse;
  std::string endToUse;
  bool am = false;
  bool pm = false;
  bool addInDays = false;
  const char* amStatus = "";
  const char* pmStatus = "";
  std::optional<DateTime> checkDate;  // the half last asked about
  DateHalf checkHalf = DateHalf::AM;
  // The half's key in the list, as the dump shows it.
  auto check = [&]() -> std::string {
    if (!checkDate) return "";
    const std::string date = diary::houseText(*checkDate);
    if (whole != "N") return date;
    return date + (checkHalf == DateHalf::AM ? "+AM" : "+PM");
  };

  Procedure proc = diary::procedure("gfncDiaryDayHourCount");
  proc.variables([&] {
    return Dump()
        .item("STRWORKINGPATTERN:", workingPattern)
        .item("STRPATTERNSTARTDATE:", patternStartDate)
        .item("STRTYPE:", type)
        .item("STREMP_ID:", employee)
        .item("STRPOST_SEQ_ID:", post)
        .item("STRFROMTIMEAMPM:", fromMarker)
        .item("STRFROMTIMEACTUAL:", fromTime)
        .item("STRTOTIMEAMPM:", toMarker)
        .item("STRTOTIMEACTUAL:", toTime)
        .item("STRINITIALISEDATELIST:", initialiseDatesList)
        .item("STRWHOLEDAYSONLY:", whole)
        .item("STRCHECK = ", check())
        .item("STRSTARTTIMETOUSE = ", startToUse)
        .item("STRENDTIMETOUSE = ", endToUse)
        .item("BOLAM = ", am)
        .item("BOLPM = ", pm)
        .item("BOLADDINDAYS = ", addInDays)
        .item("STRAMSTATUS = ", amStatus)
        .item("STRPMSTATUS = ", pmStatus)
        .item("STRSUCCESS = ", kSuccess)
        .item("STRFAILED = ", kFailed)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      // The counter hands over a day type already; only an absence type
      // needs looking up.
      const std::string code = upperTrim(type);
      dayType = code == "S" || code == "H" || code == "P" ? code : gfncDiaryDayType(type);
      gsubDiarySetUp(patterns);
      if (firstLetter(initialiseDatesList) != "N") clearDatesList();
    });
    std::string chkWpAmPm;
    step(20, [&] {
      static const std::string kKey = "CONTROL\x1f" "ADM\x1f" "CHKWPAMPM";
      if (const Value* v = patterns.remembered(kKey)) {
        chkWpAmPm = v->text();
      } else {
        chkWpAmPm = upperTrim(gfncGetControlValue("", "ADM", "CHKWPAMPM"));
        patterns.remember(kKey, Value(chkWpAmPm));
      }
    });
    step(30, [&] {
      whole = firstLetter(wholeDaysOnly);
      if (whole != "Y" && whole != "N") whole = dayType == "P" ? "Y" : "N";
    });
    std::optional<DateTime> first = diary::dateOf(std::string_view(fromDate));
    std::optional<DateTime> last = diary::dateOf(std::string_view(toDate));
    if (!first) return;
    if (!last) last = first;
    DiaryTrace* observer = patterns.trace();
    const std::string category = upperTrim(workingPattern);
    std::optional<PostWorkingDays> postDays;
    step(35, [&] { postDays.emplace(employee, post, category, dayType, patterns); });
    const bool fast = postDays && postDays->ready();
    // Each half's key: the date, with the half when halves count apart.
    const DateHalf amKey = whole == "N" ? DateHalf::AM : DateHalf::Whole;
    const DateHalf pmKey = whole == "N" ? DateHalf::PM : DateHalf::Whole;
    for (DateTime d = *first; d <= *last; d = d.addDays(1)) {
      double dayDays = 0;
      double dayHours = 0;
      auto date = [&] {
        am = true;
        pm = true;
        startToUse.clear();
        endToUse.clear();
        if (d == *first) {
          startToUse = fromTime;
          if (fromMarker == "PM") am = false;
        }
        if (d == *last) {
          endToUse = toTime;
          if (toMarker == "AM") pm = false;
        }
        // The date's listing is read before either half is asked about, so
        // that the morning this post has just listed does not hide its own
        // afternoon when halves are not told apart.
        const bool amListed = datesListHolds(d, amKey);
        const bool pmListed = datesListHolds(d, pmKey);

        auto half = [&](DateHalf slot, bool counts, bool listed, const char*& status) {
          double h = 0;
          checkDate = d;
          checkHalf = slot;
          addInDays = !listed;
          bool worked = false;
          DayVerdict verdict = DayVerdict::Worked;
          if (fast) {
            worked = postDays->worked(d, slot, startToUse, endToUse, h);
          } else {
            std::string start;
            std::string end;
            worked = gfncDiaryWorkingDay(d, employee, post, category, dayType, h, start, end, patterns,
                                         slot == DateHalf::AM ? "AM" : "PM", startToUse, endToUse,
                                         observer ? &verdict : nullptr);
          }
          status = worked ? kSuccess : kFailed;
          double added = 0;
          if (worked && counts) {
            dayHours += h;
            if (addInDays) added = 0.5;
            dayDays += added;
          }
          if (observer != nullptr) {
            HalfDayNote note;
            note.date = d;
            note.slot = slot == DateHalf::AM ? "AM" : "PM";
            note.post = post;
            note.category = category;
            note.verdict = verdict;
            note.inAbsence = counts;
            note.alreadyCounted = listed;
            note.hours = h;
            note.days = added;
            observer->halfDay(note);
          }
        };
        half(DateHalf::AM, am, amListed, amStatus);
        half(DateHalf::PM, pm, pmListed, pmStatus);

        // A pattern that works only half of the date counts it whole when
        // "CHKWPAMPM" is on.
        if (dayDays == 0.5 && (amStatus == kFailed || pmStatus == kFailed) && left(chkWpAmPm, 1) == "Y") {
          dayDays = 1;
        }
        if (whole == "Y" && dayDays > 0) dayDays = 1;
      };
      step(40, std::ref(date));
      days += dayDays;
      hours += dayHours;
      if (observer != nullptr) observer->day(DayNote{d, post, dayDays, dayHours});
    }
    if (fast) postDays->leaveInSession();
    ran = true;
  });
  return ran;
}

double gfncDiaryNoOfDays(const std::string& employee, const std::string& fromDate, const std::string& morning,
                         const std::string& toDate, const std::string& afternoon, const std::string& type,
                         const std::string& postSeq, double& totalHours, const std::string& absenceFromTime,
                         const std::string& absenceToTime, PatternSet& patterns, const std::string& wholeDaysOnly,
                         bool includeAbsentPosts) {
  double totalDays = 0;
  DatesListScope datesList;  // every post of the absence shares the list
  std::string emp = trim(employee);
  std::string from = upperTrim(fromDate);
  std::string to = upperTrim(toDate);
  std::string fromHalf = upperTrim(morning);
  std::string toHalf = upperTrim(afternoon);
  std::string fromTime = trim(absenceFromTime);
  std::string toTime = trim(absenceToTime);
  std::string seq = trim(postSeq);
  std::string checkAllJobs;
  std::string sql;
  std::optional<DateTime> testDate;
  std::string check;
  std::string catId;
  std::string seqId;
  std::string wpStart;
  bool calculate = false;

  const bool logging = debugLogEnabled();
  if (logging) {
    trace("gfncDiaryNoOfDays : Start");
    trace("strEMP_ID : " + employee);
    trace("strFromDate : " + fromDate);
    trace("strMorning : " + morning);
    trace("strToDate : " + toDate);
    trace("strAfternoon : " + afternoon);
    trace("strType : " + type);
    trace("strPOST_SEQ_ID : " + postSeq);
    trace("dblTotalHours : " + numberText(totalHours));
    trace("strAbsenceFromTime : " + absenceFromTime);
    trace("strAbsenceToTime : " + absenceToTime);
    trace("strWholeDaysOnly : " + wholeDaysOnly);
  }

  Procedure proc = diary::procedure("gfncDiaryNoOfDays");
  proc.variables([&] {
    return Dump()
        .item("STREMP_ID:", emp)
        .item("STRFROMDATE:", from)
        .item("STRMORNING:", fromHalf)
        .item("STRTODATE:", to)
        .item("STRAFTERNOON:", toHalf)
        .item("STRTYPE:", type)
        .item("STRPOST_SEQ_ID:", seq)
        .item("STRABSENCEFROMTIME:", fromTime)
        .item("STRABSENCETOTIME:", toTime)
        .item("STRWHOLEDAYSONLY:", wholeDaysOnly)
        .item("BOLCHECKALLJOBS = ", checkAllJobs == "Y")
        .item("STRTESTDATE = ", testDate ? testDate->house() : std::string())
        .item("STRCHECK = ", check)
        .item("STRCAT_ID = ", catId)
        .item("STRSEQ_ID = ", seqId)
        .item("STRSQL = ", sql)
        .item("STRCHECKALLJOBS = ", checkAllJobs)
        .item("STRWP_START_DATE = ", wpStart)
        .item("BOLCALCULATE = ", calculate)
        .text();
  });
  proc.run([&](Steps& step) {
    step(10, [&] {
      clearDatesList();
      checkAllJobs = allJobsSwitch();
    });
    totalHours = 0;
    if (fromTime == "00:00") fromTime.clear();
    if (toTime == "00:00") toTime.clear();
    step(20, [&] {
      if (emp.empty()) emp = trim(HREnvironment::session().EmployeeCode());
    });
    std::optional<DateTime> first = diary::dateOf(std::string_view(from));
    if (!first || emp.empty()) return;
    std::string dayType;
    step(30, [&] {
      // An absence type's day type, remembered by the run.
      const std::string key = "DAY_TYPE\x1f" + type;
      if (const Value* v = patterns.remembered(key)) {
        dayType = v->text();
      } else {
        dayType = gfncDiaryDayType(type);
        patterns.remember(key, Value(dayType));
      }
    });
    std::optional<DateTime> last = diary::dateOf(std::string_view(to));
    if (!last) last = first;
    if (*last < *first) return;

    // The posts to count in: read ahead by the run, or one statement.
    const bool ahead = patterns.postsAhead();
    step(40, [&] {
      if (ahead) return;
      sql = "select * from PNLEMPHST " + diary::whereVariation() + " " + "and EMP_ID = '" + sqlQuote(emp) + "'";
      if (!seq.empty()) {
        sql += " and SEQ_ID = '" + sqlQuote(seq) + "'";
      } else if (checkAllJobs != "Y") {
        sql += includeAbsentPosts ? " and STATUS_ID in ('R', 'A')" : " and STATUS_ID in ('R')";
      }
      sql += " order by PNL_CAT_ID asc";
    });
    std::shared_ptr<const Recordset> posts;
    const Recordset* history = nullptr;
    step(50, [&] {
      gsubDiarySetUp(patterns);
      if (ahead) {
        history = patterns.postHistory();
      } else {
        posts = patterns.rows(sql);
        history = posts.get();
      }
    });
    DiaryTrace* observer = patterns.trace();
    if (history == nullptr) {
      // The posts cannot be read: the absence is counted once for the post given.
      step(60, [&] {
        double days = 0;
        double hours = 0;
        gfncDiaryDayHourCount("", "", dayType, emp, seq, diary::houseText(*first), fromHalf, fromTime, diary::houseText(*last), toHalf,
                              toTime, days, hours, patterns, "N", wholeDaysOnly);
        totalDays = days;
        totalHours = hours;
      });
      return;
    }
    const Recordset& rs = *history;
    // The posts read ahead know their field positions.
    PatternSet::PostFields f = ahead ? patterns.postFields() : PatternSet::PostFields{};
    if (!ahead) {
      f.category = rs.fieldIndex("PNL_CAT_ID");
      f.seq = rs.fieldIndex("SEQ_ID");
      f.hours = rs.fieldIndex("hours_per_week");
      f.wpStart = rs.fieldIndex("WP_START_DATE");
      f.start = rs.fieldIndex("START_DATE");
      f.end = rs.fieldIndex("END_DATE");
    }
    const int catField = f.category;
    const int seqField = f.seq;
    const int hoursField = f.hours;
    const int wpField = f.wpStart;
    const int startField = f.start;
    const int endField = f.end;
    auto field = [&rs](long row, int index) { return index >= 0 ? rs.at(row, index) : Value(); };
    // The storage rows of the posts, in the statement's order.
    std::vector<long> rows;
    if (!ahead) {
      rows.resize(static_cast<size_t>(rs.rowCount()));
      for (long r = 0; r < rs.rowCount(); ++r) rows[static_cast<size_t>(r)] = r;
    } else {
      const int statusField = f.status;
      for (long r : patterns.postRows(emp)) {
        if (!seq.empty()) {
          if (trim(field(r, seqField).text()) != seq) continue;
        } else if (checkAllJobs != "Y") {
          const std::string status = trim(field(r, statusField).text());
          if (status != "R" && !(includeAbsentPosts && status == "A")) continue;
        }
        rows.push_back(r);
      }
    }
    for (long row : rows) {
      step(70, [&] {
        catId = upperTrim(field(row, catField).text());
        seqId = upperTrim(field(row, seqField).text());
        const Value weekly = field(row, hoursField);
        const bool zeroHours = weekly.isNumber() ? weekly.toDouble() == 0 : val(weekly.text()) == 0;
        std::optional<DateTime> anchor = diary::dateOf(field(row, wpField));
        wpStart = anchor ? diary::houseText(*anchor) : "NONE";
        DateTime postFrom = *first;
        DateTime postTo = *last;
        std::string skipped;
        if (std::optional<DateTime> start = diary::dateOf(field(row, startField))) {
          testDate = *start;
          if (*start > postTo) {
            skipped = "post starts after the absence";
          } else if (*start > postFrom) {
            postFrom = *start;
          }
        }
        if (std::optional<DateTime> end = diary::dateOf(field(row, endField)); end && skipped.empty()) {
          testDate = *end;
          if (*end < postFrom) {
            skipped = "post ended before the absence";
          } else if (*end < postTo) {
            postTo = *end;
          }
        }
        if (skipped.empty() && postFrom > postTo) skipped = "post not current during the absence";
        if (skipped.empty() && zeroHours) skipped = "zero-hours post";
        calculate = skipped.empty();
        if (observer != nullptr) observer->post(PostNote{seqId, catId, postFrom, postTo, calculate, skipped});
        if (!calculate) return;
        double days = 0;
        double hours = 0;
        // The absence's half markers and times go with the post's dates as
        // they stand.
        gfncDiaryDayHourCount(catId, wpStart, dayType, emp, seqId, diary::houseText(postFrom), fromHalf, fromTime,
                              diary::houseText(postTo), toHalf, toTime, days, hours, patterns, "N", wholeDaysOnly);
        totalDays += days;
        totalHours += hours;
      });
    }
  });
  if (logging) trace("gfncDiaryNoOfDays : End " + numberText(totalDays));
  return totalDays;
}

}  // namespace orvalis
