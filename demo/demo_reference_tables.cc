// A company's reference data: code tables, jobs, grades and scales, working
// patterns, organisation structure, control parameters, payroll calendar
// and pay batches.

#include <algorithm>
#include <cstdio>

#include "demo/demo_calendar.h"
#include "demo/demo_catalog.h"
#include "demo/demo_random.h"
#include "demo/demo_tables.h"

namespace orvalis::demo {

namespace {

std::string format(const char* pattern, long a, long b = 0) {
  char text[64];
  std::snprintf(text, sizeof text, pattern, a, b);
  return text;
}

std::string houseDate(int64_t day) { return DateTime::fromDays(day).house(); }

std::string compactDate(int64_t day) {
  DateTime d = DateTime::fromDays(day);
  return format("%04ld", d.year()) + format("%02ld%02ld", d.month(), d.day());
}

void writeCodeTables(Writer& w, const Company& co) {
  const std::vector<std::string> columns = {"VARIATION_ID", "CODE_ID", "DESCRIPTION"};
  auto plain = [&](const std::string& table, const std::vector<Code>& rows) {
    w.rows(table, columns, rows.size(), [&](size_t i, Row& r) { r << co.code << rows[i].code << rows[i].description; });
  };
  plain("PNLDEPT", departments());
  plain("PNLLOCS", locations(co.index));
  for (const CodeTable& t : plainCodeTables(co.index)) plain(t.table, t.rows);
  for (const HesaCodeTable& t : hesaCodeTables()) plain(t.table, t.rows);

  w.rows("PNLHOLGRD", {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "ENTITLEMENT"}, holidayGrades().size(),
         [&](size_t i, Row& r) {
           const Code& g = holidayGrades()[i];
           r << co.code << g.code << (std::string(g.description) + " days") << Value(std::stod(g.description));
         });
  w.rows("PNLABSTYP", {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "WHOLE_DAYS_ID"}, absenceTypes().size(),
         [&](size_t i, Row& r) {
           const AbsenceType& t = absenceTypes()[i];
           r << co.code << t.code << t.description << optional(t.wholeDays);
         });
  w.rows("PNLABSENT", {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "TYPE_ID"}, absenceReasons().size(),
         [&](size_t i, Row& r) {
           const AbsenceReason& a = absenceReasons()[i];
           r << co.code << a.code << a.description << a.type;
         });
  w.rows("PNLWTE",
         {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "WTE_OPERATOR", "WTE_ROUNDING", "WTE_FACTOR", "WTE_PERCENT",
          "WTE_DIVISIBLE"},
         wteRules().size(), [&](size_t i, Row& r) {
           const WteRule& t = wteRules()[i];
           r << co.code << t.code << t.description << t.op << optional(t.rounding) << Value(t.factor)
             << Value(t.percent) << Value(t.divisible);
         });
  w.rows("PNLSTRTYP", {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "USE_DATA_ACCESS"}, 2, [&](size_t i, Row& r) {
    if (i == 0) r << co.code << "ORG" << "Organisation" << "Y";
    if (i == 1) r << co.code << "COST" << "Cost centres" << "N";
  });
  w.rows("ADMUDCAT", {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "ENTITY_ID"}, 1,
         [&](size_t, Row& r) { r << co.code << "GEN" << "General" << "PNLEMPMST"; });
  w.rows("ADMUDDEF", {"VARIATION_ID", "ENTITY_ID", "UDF_ID", "CAT_ID", "CAPTION", "DATA_TYPE", "FIELD_SIZE"}, 3,
         [&](size_t i, Row& r) {
           static const char* const ids[] = {"UDF_SHOESIZE", "UDF_CARREG", "UDF_DBSDATE"};
           static const char* const captions[] = {"Shoe size (uniform)", "Car registration", "DBS check date"};
           static const char* const types[] = {"N", "S", "D"};
           r << co.code << "PNLEMPMST" << ids[i] << "GEN" << captions[i] << types[i] << Value(i == 1 ? 10 : 12);
         });
  w.rows("PNLDRYRULE",
         {"VARIATION_ID", "SEQ_ID", "DESCRIPTION", "BASE_ON_DATE", "BASE_DATE_FIELD", "OFFSET_NUMBER", "OFFSET_UNIT"}, 4,
         [&](size_t i, Row& r) {
           static const char* const names[] = {"Probation review due", "Contract end reminder", "Long service award",
                                               "Fit note follow-up"};
           static const char* const bases[] = {"WF", "WF", "EMP", "WF"};
           static const char* const fields[] = {"PNLEMPMST.DATE_START", "PNLEMPHST.END_DATE", "PNLEMPMST.DATE_START",
                                                "PNLEMPABS.EXPIRY_DATE"};
           static const int numbers[] = {6, -1, 25, 7};
           static const char* const units[] = {"M", "M", "Y", "D"};
           r << co.code << Value(static_cast<int>(i) + 1) << names[i] << bases[i] << fields[i] << Value(numbers[i])
             << units[i];
         });
}

void writeJobsAndGrades(Writer& w, const Context& ctx, const Company& co) {
  w.rows("PNLJOB",
         {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "STATUS_ID", "PARENT_JOB_ID", "SOC_ID", "JOB_CAT_ID", "SAL_GRD_ID"},
         jobs().size(), [&](size_t i, Row& r) {
           const Job& j = jobs()[i];
           r << co.code << j.code << j.description << j.status << optional(j.parent) << j.soc << j.category << j.grade;
         });
  // Dated versions: every third job was renamed, every fifth moved under
  // another parent; the current version runs to 31/12/2999.
  struct Version {
    size_t job;
    int64_t from, to;
    std::string description, parent;
  };
  std::vector<Version> versions;
  const int64_t open = dayOf(2999, 12, 31);
  for (size_t i = 0; i < jobs().size(); ++i) {
    const Job& j = jobs()[i];
    int64_t origin = dayOf(2000, 1, 1);
    if (i % 3 == 0) {
      int64_t change = dayOf(2012 + static_cast<int>(i % 7), 4, 1);
      versions.push_back({i, origin, change - 1, std::string(j.description) + " (former title)", j.parent});
      origin = change;
    }
    if (i % 5 == 0 && *j.parent) {
      int64_t change = dayOf(2019 + static_cast<int>(i % 4), 8, 1);
      versions.push_back({i, origin, change - 1, j.description, "J001"});
      origin = change;
    }
    versions.push_back({i, origin, open, j.description, j.parent});
  }
  w.rows("PNLJOBHST", {"VARIATION_ID", "CODE_ID", "ACTIVE_FROM", "ACTIVE_TO", "DESCRIPTION", "PARENT_JOB_ID"},
         versions.size(), [&](size_t i, Row& r) {
           const Version& v = versions[i];
           r << co.code << jobs()[v.job].code << dateValue(v.from) << dateValue(v.to) << v.description
             << optional(v.parent);
         });

  w.rows("PNLSALGRD",
         {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "SAL_USE_SCALE", "MIN_POINT", "MAX_POINT", "MIN_SALARY",
          "MAX_SALARY"},
         grades().size(), [&](size_t i, Row& r) {
           const Grade& g = grades()[i];
           r << co.code << g.code << g.description << (i == grades().size() - 1 ? "N" : "Y")
             << format("%ld", g.minPoint) << format("%ld", g.maxPoint) << Value(scaleValue(g.minPoint, ctx.lastYear))
             << Value(scaleValue(g.maxPoint, ctx.lastYear));
         });
  const std::vector<Code>& locs = locations(co.index);
  w.rows("PNLSALLOC", {"VARIATION_ID", "SAL_GRD_ID", "LOC_ID", "SAL_USE_SCALE", "ALLOWANCE"},
         grades().size() * locs.size(), [&](size_t i, Row& r) {
           const Grade& g = grades()[i / locs.size()];
           size_t l = i % locs.size();
           bool london = std::string(locs[l].description) == "London";
           r << co.code << g.code << locs[l].code << "Y" << Value(london ? 3500.0 : 0.0);
         });
  struct Point {
    size_t grade;
    int point, year;
  };
  std::vector<Point> points;
  for (size_t g = 0; g < grades().size(); ++g) {
    for (int p = grades()[g].minPoint; p <= grades()[g].maxPoint; ++p) {
      for (int year = 2015; year <= ctx.lastYear; ++year) points.push_back({g, p, year});
    }
  }
  w.rows("PNLSCALE", {"VARIATION_ID", "SAL_GRD_ID", "SCALE_POINT", "START_DATE", "END_DATE", "SP_VALUE"},
         points.size(), [&](size_t i, Row& r) {
           const Point& p = points[i];
           int64_t start = dayOf(p.year, 4, 1);
           r << co.code << grades()[p.grade].code << format("%ld", p.point) << dateValue(start)
             << dateValue(p.year == ctx.lastYear ? -1 : dayOf(p.year + 1, 3, 31)) << Value(scaleValue(p.point, p.year));
         });
}

void writePatterns(Writer& w, const Context& ctx, const Company& co) {
  w.rows("PNLCAT",
         {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "NWD_ID", "FWP", "START_DATE", "END_DATE", "LENGTH",
          "MON_WORK_DAY", "TUE_WORK_DAY", "WED_WORK_DAY", "THU_WORK_DAY", "FRI_WORK_DAY", "SAT_WORK_DAY",
          "SUN_WORK_DAY"},
         patterns().size(), [&](size_t i, Row& r) {
           const Pattern& p = patterns()[i];
           bool fixed = p.weeks > 0;
           // The rotations are anchored on a Wednesday, so that the week
           // count starts from the Monday before it.
           int64_t anchor = fixed ? dayOf(2015, 1, 7) : dayOf(2000, 1, 3);
           r << co.code << p.code << p.description << optional(p.nwd) << (fixed ? "Y" : "N") << dateValue(anchor)
             << dateValue(p.ended ? dayOf(2019, 12, 31) : -1) << (fixed ? format("%ld", p.weeks) : std::string());
           for (int d = 0; d < 7; ++d) r << (fixed ? Value::null() : Value(std::string(1, p.days[d])));
         });

  // Fixed patterns: every week, day and half of the rotation, worked or
  // not. ROT1 works Monday to Friday with Wednesday mornings only; ROT2 is
  // the nine-day fortnight (no second Friday); ROT4 is a shift rotation.
  struct Slot {
    const char* cat;
    int week, day;
    const char* half;
    bool worked;
  };
  std::vector<Slot> slots;
  for (const Pattern& p : patterns()) {
    for (int week = 1; week <= p.weeks; ++week) {
      for (int day = 1; day <= 7; ++day) {
        for (const char* half : {"AM", "PM"}) {
          std::string code = p.code;
          bool am = std::string(half) == "AM";
          bool worked = false;
          if (code == "ROT1") worked = day <= 5 && (day != 3 || am);
          if (code == "ROT2") worked = day <= 5 && !(week == 2 && day == 5);
          if (code == "ROT4") worked = ((day + 2 * week) % 7) < 5;
          slots.push_back({p.code, week, day, half, worked});
        }
      }
    }
  }
  w.rows("PNLCATFWP",
         {"VARIATION_ID", "CAT_ID", "WEEK_ID", "DAY_ID", "TIME_ID", "HOURS", "START_TIME", "END_TIME", "WORKED"},
         slots.size(), [&](size_t i, Row& r) {
           const Slot& s = slots[i];
           bool am = std::string(s.half) == "AM";
           double hours = std::string(s.cat) == "ROT2" ? 4.1667 : 3.75;
           r << co.code << s.cat << format("%ld", s.week) << format("%ld", s.day) << s.half
             << Value(s.worked ? hours : 0.0) << (am ? "09:00" : "13:30") << (am ? "12:45" : "17:15")
             << (s.worked ? "Y" : "N");
         });

  // Non-working periods: school holidays for the term-time pattern, the
  // Christmas closure for the standard ones.
  struct Period {
    const char* cat;
    int64_t from, to;
    std::string description;
  };
  std::vector<Period> periods;
  for (int year = ctx.firstYear; year <= ctx.lastYear; ++year) {
    int64_t easter = easterSunday(year);
    periods.push_back({"TERM", dayOf(year, 1, 1), dayOf(year, 1, 3), "Christmas holiday"});
    periods.push_back({"TERM", dayOf(year, 2, 17), dayOf(year, 2, 21), "February half term"});
    periods.push_back({"TERM", easter - 9, easter + 5, "Easter holiday"});
    periods.push_back({"TERM", dayOf(year, 5, 26), dayOf(year, 5, 30), "May half term"});
    periods.push_back({"TERM", dayOf(year, 7, 23), dayOf(year, 8, 31), "Summer holiday"});
    periods.push_back({"TERM", dayOf(year, 10, 27), dayOf(year, 10, 31), "October half term"});
    periods.push_back({"TERM", dayOf(year, 12, 20), dayOf(year, 12, 31), "Christmas holiday"});
    periods.push_back({"STD", dayOf(year, 12, 24), dayOf(year, 12, 24), "Christmas Eve closure"});
    periods.push_back({"STD35", dayOf(year, 12, 24), dayOf(year, 12, 24), "Christmas Eve closure"});
    periods.push_back({"ROT2", dayOf(year, 12, 27), dayOf(year, 12, 31), "Between Christmas and New Year"});
  }
  w.rows("PNLCATNW", {"VARIATION_ID", "CAT_ID", "NW_DATE", "END_DATE", "DESCRIPTION"}, periods.size(),
         [&](size_t i, Row& r) {
           const Period& p = periods[i];
           r << co.code << p.cat << dateValue(p.from) << dateValue(p.to) << p.description;
         });
}

void writeStructure(Writer& w, const Company& co) {
  struct Unit {
    const char* type;
    std::string code, parent, description;
  };
  std::vector<Unit> units = {{"ORG", "ORV", "", companyName(co.index)},
                             {"ORG", "DIVA", "ORV", "Academic division"},
                             {"ORG", "DIVS", "ORV", "Support services division"},
                             {"ORG", "DIVC", "ORV", "Commercial and care division"}};
  for (const Code& d : departments()) {
    std::string code = d.code;
    int n = std::stoi(code.substr(1));
    const char* division = (n >= 6 && n <= 9) ? "DIVA" : (n >= 10) ? "DIVC" : "DIVS";
    units.push_back({"ORG", "U" + code, division, d.description});
  }
  for (int c = 1; c <= 9; ++c) {
    units.push_back({"COST", format("CC%ld00", c), "", format("Cost centre %ld00", c)});
  }
  w.rows("PNLSTRUCT", {"VARIATION_ID", "TYPE_ID", "CODE_ID", "PARENT_ID", "DESCRIPTION"}, units.size(),
         [&](size_t i, Row& r) {
           const Unit& u = units[i];
           r << co.code << u.type << u.code << optional(u.parent) << u.description;
         });
}

void writeManagers(Writer& w, const Company& co) {
  w.rows("PNLMAN", {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "EMP_ID"}, co.managers.size(), [&](size_t i, Row& r) {
    const Employee& e = co.employees[static_cast<size_t>(co.managers[i])];
    const char* forename = (e.female ? femaleForenames() : maleForenames())[e.forename];
    r << co.code << format("M%02ld", static_cast<long>(i) + 1)
      << (std::string(forename) + " " + surnames()[e.surname]) << employeeId(e.number);
  });
}

void writeControls(Writer& w, const Context& ctx, const Company& co, long auditRows) {
  const int year = DateTime::fromDays(ctx.asOf).year();
  int64_t taxYearStart = dayOf(year, 4, 6);
  if (ctx.asOf < taxYearStart) taxYearStart = dayOf(year - 1, 4, 6);
  const int taxYear = DateTime::fromDays(taxYearStart).year();
  // The HESA year runs from 1 August.
  int64_t hesaStart = dayOf(year, 8, 1);
  if (ctx.asOf < hesaStart) hesaStart = dayOf(year - 1, 8, 1);
  const bool first = co.index % 2 == 0;

  struct Param {
    const char* type;
    const char* module;
    const char* id;
    std::string value;
  };
  std::vector<Param> params = {
      {"P", "PNL", "ABSDECPT", co.absenceFactor == 100 ? "2" : "1"},
      {"P", "PNL", "ABSYEAR", co.aprilAbsenceYear ? houseDate(dayOf(year, 4, 1)) : houseDate(dayOf(year, 1, 1))},
      {"P", "PNL", "ABSYEARAN", "N"},
      {"P", "PNL", "DEFWP", "STD"},
      {"P", "PNL", "DEFHOURS", "7.5"},
      {"P", "PNL", "VALIDABS", "SICK,IND"},
      {"P", "PNL", "ABSCHKTYPE", "HOL"},
      {"P", "PNL", "ABSALLJOBS", first ? "N" : "Y"},
      {"P", "PNL", "SIRSTARTDT", DateTime::fromDays(hesaStart).iso()},
      {"P", "PNL", "SIRENDDT", DateTime::fromDays(dayOf(DateTime::fromDays(hesaStart).year() + 1, 7, 31)).iso()},
      {"P", "PNL", "EMPIDLEN", "6"},
      {"P", "PNL", "DRYLSTREV", compactDate(ctx.asOf - 30)},
      {"P", "ADM", "CHKWPAMPM", first ? "N" : "Y"},
      {"P", "ADM", "GENTTX", "N"},
      {"P", "ADM", "DATEFORMAT", "DD/MM/YYYY"},
      {"P", "ADM", "DIA_AND_OP", "N"},
      {"P", "ADM", "MNTAUDIT", "Y"},
      {"P", "ADM", "COMPNAME", companyName(co.index)},
      {"P", "ADM", "AUDITSEQID", format("%ld", auditRows)},
      {"P", "ADM", "NOTE_ID", format("%ld", static_cast<long>(ctx.nextNote) - 1)},
      {"P", "ADM", "ADRES_ID", format("%ld", static_cast<long>(ctx.nextAddress) - 1)},
      {"P", "ADM", "BUREAUMAST", "N"},
      // Stored year first (YYYYMMDD) or already day first: the getter
      // rewrites the first form.
      {"P", "PAY", "WEEK1START", first ? compactDate(taxYearStart) : houseDate(taxYearStart)},
      {"P", "PAY", "YEARSTART", compactDate(taxYearStart)},
      {"P", "PAY", "YEAREND", compactDate(dayOf(taxYear + 1, 4, 5))},
      {"P", "PAY", "YEAR", format("%ld", taxYear)},
      {"P", "PAY", "INPUTSEQ", "1,250"},
      {"P", "PAY", "TAXBRATE", "20.00"},
      {"P", "PAY", "PAYROLLOCK", "N"},
      {"V", "VAR", "DEBUG", "NO"},
      {"V", "VAR", "DEBUGFILE", ""},
      {"V", "EXT", "EXTSYSTEM", "NONE"},
      {"V", "HRW", "PORTAL", "Y"},
      {"V", "LCK", "LOCKED", "N"},
  };
  w.rows("ADMCNTRL", {"CONTROL_TYPE", "VARIATION_ID", "LANGUAGE_ID", "MODULE_ID", "PARAM_ID", "PARAM_VALUE"},
         params.size(), [&](size_t i, Row& r) {
           const Param& p = params[i];
           r << p.type << co.code << "ENG" << p.module << p.id << optional(p.value);
         });
}

void writePayroll(Writer& w, const Context& ctx, const Company& co) {
  std::vector<std::vector<PayPeriod>> calendars;
  for (const PayTemplate& t : payTemplates()) calendars.push_back(payPeriods(ctx, t));

  w.rows("PAYTMPLT",
         {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "PAY_FREQUENCY", "PERIODS_PER_YEAR", "CURRENT_PERIOD_ID"},
         payTemplates().size(), [&](size_t i, Row& r) {
           const PayTemplate& t = payTemplates()[i];
           std::string current;
           for (const PayPeriod& p : calendars[i]) {
             if (p.current) current = p.periodId;
           }
           r << co.code << t.code << t.description << t.frequency << Value(t.periodsPerYear) << optional(current);
         });
  struct Ref {
    size_t t;
    size_t p;
  };
  std::vector<Ref> refs;
  for (size_t t = 0; t < calendars.size(); ++t) {
    for (size_t p = 0; p < calendars[t].size(); ++p) refs.push_back({t, p});
  }
  w.rows("PAYCALPRD",
         {"VARIATION_ID", "TEMPLATE_ID", "PERIOD_ID", "PAY_YEAR", "PERIOD", "START_DATE", "END_DATE", "PAY_DATE",
          "CURRENT_YN"},
         refs.size(), [&](size_t i, Row& r) {
           const PayPeriod& p = calendars[refs[i].t][refs[i].p];
           r << co.code << payTemplates()[refs[i].t].code << p.periodId << Value(p.year) << Value(p.period)
             << dateValue(p.start) << dateValue(p.end) << dateValue(p.payDate) << (p.current ? "Y" : "N");
         });

  // One batch per period over the last two years up to the current one;
  // its lines pay a sample of the template's staff in post that period.
  struct Batch {
    size_t t;
    const PayPeriod* period;
    std::string id;
  };
  std::vector<Batch> batches;
  long batchNumber = 0;
  for (size_t t = 0; t < calendars.size(); ++t) {
    for (const PayPeriod& p : calendars[t]) {
      if (p.end < ctx.asOf - 730 || p.start > ctx.asOf) continue;
      batches.push_back({t, &p, format("B%06ld", ++batchNumber)});
    }
  }
  w.rows("PAYBATCH",
         {"VARIATION_ID", "BATCH_ID", "TEMPLATE_ID", "PERIOD_ID", "DESCRIPTION", "STATUS_ID", "CREATED_DATE"},
         batches.size(), [&](size_t i, Row& r) {
           const Batch& b = batches[i];
           const PayTemplate& t = payTemplates()[b.t];
           r << co.code << b.id << t.code << b.period->periodId
             << (std::string(t.description) + " " + b.period->periodId) << (b.period->current ? "OPEN" : "POSTED")
             << dateValue(b.period->payDate - 3);
         });

  std::vector<std::vector<size_t>> staff(payTemplates().size());
  for (size_t i = 0; i < co.employees.size(); ++i) staff[co.employees[i].weekly ? 1 : 0].push_back(i);
  size_t batchIndex = 0, member = 0;
  long seq = 0, det = 0, linesInBatch = 0;
  int lineOfEmployee = 0;
  static const char* const elements[] = {"BASIC", "ERNI", "PENSION"};
  static const char* const ledger[] = {"400", "510", "520"};
  w.stream("PAYBATGEN",
           {"VARIATION_ID", "BATCH_ID", "SEQ_ID", "EMP_ID", "GEN_CODE", "GEN_VALUE", "DET_SEQ_ID", "PAYROLL_ID",
            "ELEMENT_ID"},
           [&](Row& r) {
             for (;;) {
               if (batchIndex >= batches.size()) return false;
               const Batch& b = batches[batchIndex];
               const std::vector<size_t>& pool = staff[b.t];
               // Up to 40 people a batch, fewer for a small staff.
               const size_t people = std::min<size_t>(40, std::max<size_t>(5, pool.size() / 20));
               if (member >= pool.size() || linesInBatch >= static_cast<long>(3 * people)) {
                 ++batchIndex;
                 member = 0;
                 seq = 0;
                 linesInBatch = 0;
                 lineOfEmployee = 0;
                 continue;
               }
               const Employee& e = co.employees[pool[member]];
               bool inPost = e.start <= b.period->end && (e.current() || e.left >= b.period->start);
               if (!inPost) {
                 ++member;
                 continue;
               }
               const Post& p = co.posts[e.mainPost];
               std::string payroll = "P" + employeeId(e.number);
               double pay = round2(scaleValue(p.scalePoint, yearOf(b.period->start)) * p.wteFactor /
                                   payTemplates()[b.t].periodsPerYear);
               double amount = lineOfEmployee == 0 ? pay : lineOfEmployee == 1 ? round2(pay * 0.138) : round2(pay * 0.05);
               std::string element = elements[lineOfEmployee];
               // The first line of every batch carries the payroll id as
               // its element (a recalculation line).
               if (seq == 0) element = payroll;
               std::string genCode = std::string(ledger[lineOfEmployee]) + "-" + departments()[p.dept].code + "-" +
                                     format("%ld", 1000 + p.job);
               r << co.code << b.id << Value(++seq) << employeeId(e.number) << genCode << Value(amount)
                 << Value(++det) << payroll << element;
               ++linesInBatch;
               if (++lineOfEmployee == 3) {
                 lineOfEmployee = 0;
                 member += std::max<size_t>(1, pool.size() / people);
               }
               return true;
             }
           });

  // Standing payments and this period's pay inputs for some employees.
  Random random = Random::derive(ctx.seed, static_cast<uint64_t>(co.index) + 1, 0, 7);
  std::vector<size_t> chosen;
  for (size_t i = 0; i < co.employees.size(); ++i) {
    if (co.employees[i].current() && random.chance(0.05)) chosen.push_back(i);
  }
  w.rows("PAYCON",
         {"VARIATION_ID", "CODE_ID", "DESCRIPTION", "TEMPLATE_ID", "EMP_ID", "ELEMENT_ID", "START_DATE", "END_DATE",
          "AMOUNT"},
         chosen.size(), [&](size_t i, Row& r) {
           const Employee& e = co.employees[chosen[i]];
           static const char* const kinds[] = {"CARALL", "UNIFORM", "ONCALL", "LONDON"};
           static const char* const names[] = {"Car allowance", "Uniform allowance", "On-call allowance",
                                               "London weighting"};
           r << co.code << format("C%05ld", static_cast<long>(i) + 1) << names[i % 4] << (e.weekly ? "WK" : "MTH")
             << employeeId(e.number) << kinds[i % 4] << dateValue(std::max(e.start, ctx.asOf - 400)) << Value::null()
             << Value(static_cast<double>(50 + (i * 37) % 400));
         });
  std::vector<PayPeriod> currentPeriods;
  for (const std::vector<PayPeriod>& calendar : calendars) {
    for (const PayPeriod& p : calendar) {
      if (p.current) currentPeriods.push_back(p);
    }
  }
  w.rows("PAYINPDET",
         {"VARIATION_ID", "TEMPLATE_ID", "EMP_ID", "SEQ_ID", "PERIOD_ID", "BATCH_ID", "ELEMENT_ID", "UNITS", "RATE",
          "AMOUNT"},
         chosen.size(), [&](size_t i, Row& r) {
           const Employee& e = co.employees[chosen[i]];
           size_t t = e.weekly ? 1 : 0;
           std::string period = t < currentPeriods.size() ? currentPeriods[t].periodId : "";
           double units = static_cast<double>(1 + i % 12);
           double rate = e.weekly ? 14.25 : 21.50;
           r << co.code << (e.weekly ? "WK" : "MTH") << employeeId(e.number) << Value(1) << optional(period)
             << Value::null() << (i % 2 ? "OVERTIME" : "EXPENSES") << Value(units) << Value(rate)
             << Value(round2(units * rate));
         });
}

}  // namespace

double scaleValue(int point, int year) {
  double base = 12500.0;
  for (int i = 1; i < point; ++i) base *= 1.032;
  for (int y = 2015; y < year; ++y) base *= 1.022;
  return static_cast<double>(static_cast<long>(base));
}

const char* weekdayName(int weekday) {
  static const char* const names[] = {"", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};
  return weekday >= 1 && weekday <= 7 ? names[weekday] : "";
}

const std::vector<PayTemplate>& payTemplates() {
  static const std::vector<PayTemplate> templates = {{"MTH", "Monthly payroll", "M", 12},
                                                     {"WK", "Weekly payroll", "W", 52}};
  return templates;
}

std::vector<PayPeriod> payPeriods(const Context& ctx, const PayTemplate& t) {
  std::vector<PayPeriod> periods;
  const int asOfYear = DateTime::fromDays(ctx.asOf).year();
  for (int year = asOfYear - 3; year <= asOfYear + 1; ++year) {
    int64_t yearStart = dayOf(year, 4, 6);
    int64_t yearEnd = dayOf(year + 1, 4, 5);
    for (int n = 1; n <= t.periodsPerYear; ++n) {
      PayPeriod p;
      p.year = year;
      p.period = n;
      p.periodId = format("%04ld", year) + format("%02ld", n);
      if (t.periodsPerYear == 12) {
        int month = 3 + n;  // April = period 1
        int y = year + (month > 12 ? 1 : 0);
        month = (month - 1) % 12 + 1;
        p.start = dayOf(y, month, 6);
        int nextMonth = month % 12 + 1;
        p.end = dayOf(y + (month == 12 ? 1 : 0), nextMonth, 5);
        // Paid on the last working day of the calendar month.
        int64_t last = dayOf(y, month, daysInMonth(y, month));
        while (weekdayOf(last) >= 6 || ctx.bankHolidays.count(last)) --last;
        p.payDate = last;
      } else {
        p.start = yearStart + 7 * (n - 1);
        p.end = n == t.periodsPerYear ? yearEnd : p.start + 6;
        p.payDate = p.start + ((5 - weekdayOf(p.start) + 7) % 7);  // the Friday of the week
        if (p.payDate > p.end) p.payDate = p.end;
      }
      p.current = p.start <= ctx.asOf && ctx.asOf <= p.end;
      periods.push_back(p);
    }
  }
  return periods;
}

void writeReferenceTables(Writer& w, const Context& ctx, const Company& co) {
  writeCodeTables(w, co);
  writeJobsAndGrades(w, ctx, co);
  writePatterns(w, ctx, co);
  writeStructure(w, co);
  writeManagers(w, co);
  writeControls(w, ctx, co, auditRowCount(co));
  writePayroll(w, ctx, co);
}

}  // namespace orvalis::demo
