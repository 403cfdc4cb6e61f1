// The fair employment return: the parameter and classification rules, each
// category's record choice and inclusion on a hand-made company, the
// summaries against the detail, bad input, and the one-read record choice
// against the per-employee statements on the demo database.
#include "reports/femr/femr.h"

#include <gtest/gtest.h>

#include <map>

#include "data/control.h"
#include "data/data_functions.h"
#include "data/hr_environment.h"
#include "demo/demo_database.h"
#include "engine_report_fixture.h"
#include "runtime/basic_string.h"
#include "support/report_rows.h"
#include "support/test_environment.h"

namespace orvalis::testing {
namespace {

using reports::FEMR;
namespace femr = reports::femr;

TEST(FemrRules, ParametersFormsAndClassification) {
  for (auto [in, out] : std::vector<std::pair<std::string, std::string>>{
           {"03", "03"}, {" 06 ", "06"}, {"7", "01"}, {"", "01"}, {"3", "01"}, {"x5", "01"}}) {
    EXPECT_EQ(femr::normaliseCategory(in), out) << in;
  }
  struct P {
    const char *start, *end, *wantStart, *wantEnd;
  };
  for (const P& p : {P{"", "31/03/2025", "2024-04-01", "2025-03-31"}, P{"01/04/2024", "x", "2024-04-01", "2025-03-31"},
                     P{"29/02/2024", "", "2024-02-29", "2025-02-27"}, P{"01/01/2024", "30/06/2024", "2024-01-01", "2024-06-30"}}) {
    auto period = femr::periodOf(p.start, p.end);
    ASSERT_TRUE(period) << p.start << "|" << p.end;
    EXPECT_EQ(period->start.iso() + "/" + period->end.iso(), std::string(p.wantStart) + "/" + p.wantEnd);
  }
  EXPECT_FALSE(femr::periodOf("", "TODAY"));
  EXPECT_FALSE(femr::periodOf("31/02/2024", ""));

  EXPECT_EQ(femr::formOf(" gender_summary "), femr::Form::Gender);
  EXPECT_EQ(femr::formOf("84"), femr::Form::GenderType);
  EXPECT_EQ(femr::formOf("FEMR_02"), femr::Form::Summary);
  EXPECT_EQ(femr::formOf("85"), femr::Form::None);

  // sex, religion, employment type -> cells of S, G and T.
  struct C {
    const char *sex, *religion, *employ, *s, *g, *t;
  };
  for (const C& c : {C{"M", "P", "FT", "MALE_PROTESTANT", "PROTESTANT", "PROTESTANT_FT"},
                     C{"F", ".P", "PT", "FEMALE_PROTESTANT", "PROTESTANT", "PROTESTANT_PT"},
                     C{"X", ".RC", ".PT", "FEMALE_CATHOLIC", "CATHOLIC", "CATHOLIC_PT"},
                     C{"", "C", ".TTPT", "FEMALE_CATHOLIC", "CATHOLIC", "CATHOLIC_PT"},
                     C{"m", "N", "JS", "MALE_OTHER", "OTHER", "OTHER_FT"},
                     C{"U", "", "", "FEMALE_OTHER", "OTHER", "OTHER_FT"}}) {
    EXPECT_EQ(femr::cellOf(femr::Form::Summary, c.sex, c.religion, c.employ).field, c.s);
    EXPECT_EQ(femr::cellOf(femr::Form::Gender, c.sex, c.religion, c.employ).field, c.g);
    EXPECT_EQ(femr::cellOf(femr::Form::GenderType, c.sex, c.religion, c.employ).field, c.t);
  }
  EXPECT_EQ(femr::cellOf(femr::Form::Summary, "X", "P", "").total, "FEMALE_TOTAL");
  EXPECT_EQ(femr::cellOf(femr::Form::GenderType, "M", ".RC", "PT").total, "CATHOLIC_TOTAL");
}

using test::Rows;

class FemrTest : public EngineReportTest {
 protected:
  void SetUp() override {
    EngineReportTest::SetUp();
    exec("INSERT INTO PNLEMPMST (VARIATION_ID, EMP_ID, SURNAME, FORENAME, SEX_ID, RELIGION_ID, DATE_START, DATE_LEFT) "
         "VALUES ('ORV01', 'E1', 'Ash', 'Ann', 'F', 'C', '2020-01-01', NULL), "
         "('ORV01', 'E2', 'Bay', 'Ben', 'M', '.P', '2024-03-01', NULL), "
         "('ORV01', 'E3', 'Cox', 'Cy', 'X', 'N', '2010-01-01', '2024-06-30'), "
         "('ORV01', 'E4', 'Day', 'Di', NULL, NULL, '2019-01-01', NULL), "
         "('ORV01', 'E5', 'Eve', 'Ed', 'M', '.RC', '2018-01-01', NULL)");
    // EMP, SEQ, start, end, hours, employment type, reason, SOC
    job("E1", 1, "'2020-01-01'", "'2023-12-31'", 37.5, "FT", "NEW", "2");
    job("E1", 2, "'2024-01-01'", "NULL", 20, "PT", ".PRO", "2");
    job("E2", 1, "'2024-03-01'", "NULL", 37.5, "FT", "NEW", "4");
    job("E3", 1, "'2010-01-01'", "'2024-06-30'", 20, "PT", "NEW", "9");
    job("E3", 2, "'2015-01-01'", "'2024-06-30'", 30, "FT", ".PROT", "9");  // same end, longer hours
    job("E4", 1, "'2019-01-01'", "NULL", 15, ".TTPT", "NEW", "NULL");
    job("E5", 1, "'2018-01-01'", "NULL", 37.5, "FT", "NEW", "4");            // open
    job("E5", 2, "'2022-01-01'", "'2030-12-31'", 37.5, "FT", "TRF", "4");   // later start, ended
    exec("INSERT INTO PNLVACANT (VARIATION_ID, CODE_ID, JOB_ID, SOC_ID) VALUES ('ORV01', 'V1', 'J1', '2'), "
         "('ORV01', 'V2', 'J2', NULL)");
    exec("INSERT INTO PNLJOB (VARIATION_ID, CODE_ID, DESCRIPTION, SOC_ID) VALUES ('ORV01', 'J2', 'Porter', '9')");
    // Kelly 1990 applies three times (one before the period), Kelly 1985 is
    // someone else.
    exec("INSERT INTO PNLCAND (VARIATION_ID, SEQ_ID, VACANCY_ID, REFERENCE_ID, CAN_FORENAME, CAN_SURNAME, CAN_DOB, "
         "SEX_ID, RELIGION_ID, COMMUNITY_METHOD_ID, EMPLOY_ID, DATE_APP_REC) VALUES "
         "('ORV01', 1, 'V1', 'A1', 'Kim', 'Kelly', '1990-01-01', 'F', 'C', 'BMC', 'FT', '2023-12-20'), "
         "('ORV01', 2, 'V2', 'A2', 'Kim', 'Kelly', '1990-01-01', 'F', 'C', 'BMC', 'FT', '2024-05-01'), "
         "('ORV01', 3, 'V1', 'A3', 'Kim', 'Kelly', '1990-01-01', 'F', 'C', 'BMC', 'FT', '2024-02-01'), "
         "('ORV01', 4, 'V2', 'A4', 'Al', 'Adams', '1980-01-01', 'M', 'P', 'XYZ', 'PT', '2024-03-01'), "
         "('ORV01', 5, 'V1', 'A5', 'Kit', 'Kelly', '1985-01-01', 'M', '.P', 'SWC', 'FT', '2025-01-02')");
    grid("FEMRQ", "PNLEMPHST", {"EMP_ID", "SEQ_ID", "START_DATE"});
    grid("CANQ", "PNLCAND", {"SEQ_ID", "CAN_SURNAME"});
  }
  void job(const std::string& emp, int seq, const std::string& start, const std::string& end, double hours,
           const std::string& employ, const std::string& reason, const std::string& soc) {
    exec("INSERT INTO PNLEMPHST (VARIATION_ID, EMP_ID, SEQ_ID, JOB_ID, START_DATE, END_DATE, HOURS_PER_WEEK, "
         "WEEKS_PER_YEAR, EMPLOY_ID, REASON_ID, SOC_ID) VALUES ('ORV01', '" + emp + "', " + std::to_string(seq) +
         ", 'J1', " + start + ", " + end + ", " + std::to_string(hours) + ", 52, '" + employ + "', '" + reason + "', " +
         (soc == "NULL" ? soc : "'" + soc + "'") + ")");
  }
  void grid(const std::string& code, const std::string& entity, const std::vector<std::string>& columns) {
    exec("INSERT INTO ADMGRIDH (CODE_ID, USER_ID, ENTITY_ID, QUERY_TYPE, ACCESS_BY_ALL, DESCRIPTION, "
         "APPLY_ACCESS_FILTER, MODULE_ID) VALUES ('" + code + "', 'ADMIN', '" + entity + "', 'X', 1, 'Q', 'N', 'PNL')");
    int pos = 0;
    for (const std::string& c : columns) {
      exec("INSERT INTO ADMGRIDD (CODE_ID, ITEM_ID, INCLUDE_YN, COLUMN_POSITION) VALUES ('" + code + "', '" + entity +
           "." + c + "', 'Y', " + std::to_string(++pos) + ")");
    }
  }
  // Runs the report; rows keyed by the first field's text plus "/" + SOC_ID
  // for summaries, by EMP_ID for the detail.
  Rows run(const std::string& form, const std::string& category, const std::string& query = "FEMRQ",
           const std::string& start = "01/01/2024", const std::string& end = "31/12/2024", bool expected = true) {
    FEMR report;
    rs_ = Recordset();
    EXPECT_EQ(report.ExtractData(env_, form,
                                 Parameters({Value("START_DATE=" + start), Value("END_DATE=" + end),
                                             Value("QUAL_QUERY_ID=" + query), Value("CATEGORY_ID=" + category)}),
                                 rs_),
              expected)
        << form << " " << category;
    const bool detail = rs_.isOpen() && rs_.fieldIndex("EMP_ID") >= 0;
    return test::rowsBy(rs_, [&](const test::Row& row, long r) {
      return detail ? row.at("EMP_ID")
                    : rs_.textAt(r, 0) + "/" + rs_.textAt(r, 1) + "/" + (row.count("SOC_ID") ? row.at("SOC_ID") : "");
    });
  }
  // "START_DATE USE_FOR_RETURN DATA_MISSING" of each detail row.
  std::map<std::string, std::string> choices(const Rows& rows) {
    std::map<std::string, std::string> out;
    for (const auto& [k, r] : rows) {
      out[k] = r.at(r.count("DATE_APP_REC") ? "DATE_APP_REC" : "START_DATE") + " " + r.at("USE_FOR_RETURN") + " " +
               r.at("DATA_MISSING");
    }
    return out;
  }

  Recordset rs_;
};

TEST_P(FemrTest, EachCategoryChoosesItsRecordAndInclusion) {
  using M = std::map<std::string, std::string>;
  // 01: latest start first; E3 left before the census date; E4 lacks codes.
  EXPECT_EQ(choices(run("81", "01")), (M{{"E1", "2024-01-01 True "}, {"E2", "2024-03-01 True "},
                                        {"E3", "2015-01-01 False "}, {"E4", "2019-01-01 True *"},
                                        {"E5", "2022-01-01 True "}}));
  // 02: open job first, then the latest end with the longest hours.
  EXPECT_EQ(choices(run("DETAIL", "02")), (M{{"E1", "2024-01-01 False "}, {"E2", "2024-03-01 False "},
                                            {"E3", "2015-01-01 True "}, {"E4", "2019-01-01 False *"},
                                            {"E5", "2018-01-01 False "}}));
  // 04: the first job starting in the period; E1's is an internal move.
  EXPECT_EQ(choices(run("81", "04")), (M{{"E1", "2024-01-01 False "}, {"E2", "2024-03-01 True "},
                                        {"E3", "2010-01-01 False "}, {"E4", "2019-01-01 False *"},
                                        {"E5", "2018-01-01 False "}}));
  // 05: promotions in the period only, ".PRO" and ".PROT".
  auto promoted = run("81", "05");
  EXPECT_EQ(choices(promoted), (M{{"E1", "2024-01-01 True "}}));
  EXPECT_EQ(promoted["E1"].at("REASON_ID") + promoted["E1"].at("REASON_DESC"), ".PRO");  // no PNLEHRES rows: unknown code, empty description
  // 06: the open job before a later-ending one.
  auto latest = run("81", "06");
  EXPECT_EQ(latest["E5"].at("START_DATE"), "2018-01-01");
  EXPECT_EQ(latest["E4"].at("SEX_ID") + latest["E4"].at("SEX_DESC") + latest["E4"].at("SOC_ID"),
            "N/ANot AvailableN/A");
  EXPECT_EQ(latest["E4"].at("FTPT") + latest["E1"].at("FTPT") + latest["E1"].at("TOTAL_HOURS"), "PTPT1040");
  // 06 has no summary.
  EXPECT_TRUE(run("82", "06", "FEMRQ", "01/01/2024", "31/12/2024", false).empty());
  EXPECT_TRUE(errors_->errors().empty());
}

TEST_P(FemrTest, ApplicantsAreOneRowPerPersonFromTheirFirstApplicationInThePeriod) {
  auto rows = run("FEMR_01", "03", "CANQ");
  using M = std::map<std::string, std::string>;
  // A3 (2024-02-01) stands for Kelly 1990; A4's method is none of the three.
  EXPECT_EQ(choices(rows), (M{{"A3", "2024-02-01 True "}, {"A4", "2024-03-01 True *"}, {"A5", "2025-01-02 False "}}));
  EXPECT_EQ(rows["A4"].at("SOC_ID") + rows["A4"].at("JOB_ID"), "9J2");  // SOC from the vacancy's job
  auto summary = run("SUMMARY", "03", "CANQ");
  EXPECT_EQ(summary.size(), 2u);
  EXPECT_EQ(summary["03/BMC/2"].at("FEMALE_CATHOLIC"), "1");
  EXPECT_EQ(summary["03/N/A/9"].at("MALE_PROTESTANT"), "1");
}

TEST_P(FemrTest, SummariesCountPersonsMarkedInTheDetail) {
  for (const char* category : {"01", "02", "03", "04", "05"}) {
    const std::string query = std::string(category) == "03" ? "CANQ" : "FEMRQ";
    long marked = 0;
    for (const auto& [k, r] : run("81", category, query)) marked += r.at("USE_FOR_RETURN") == "True";
    for (const char* form : {"82", "83", "84"}) {
      const auto totals = femr::formOf(form) == femr::Form::Summary
                              ? std::vector<std::string>{"MALE_TOTAL", "FEMALE_TOTAL"}
                          : femr::formOf(form) == femr::Form::Gender
                              ? std::vector<std::string>{"TOTAL"}
                              : std::vector<std::string>{"PROTESTANT_TOTAL", "CATHOLIC_TOTAL", "OTHER_TOTAL"};
      double sum = 0, cells = 0;
      for (const auto& [k, r] : run(form, category, query)) {
        for (const std::string& t : totals) sum += std::stod(r.at(t));
        for (const std::string& c : femr::summaryCells(femr::formOf(form))) {
          if (c.find("TOTAL") == std::string::npos) cells += std::stod(r.at(c));
        }
      }
      EXPECT_EQ(sum, marked) << form << " " << category;
      EXPECT_EQ(cells, marked) << form << " " << category;
    }
  }
  // The workforce by sex and pattern: E4 (no sex code) is a woman, term-time PT.
  auto t = run("GENDER_TYPE_SUMMARY", "01");
  EXPECT_EQ(t["F/Female/N/A"].at("OTHER_PT"), "1");
  EXPECT_EQ(t["M/Male/4"].at("PROTESTANT_FT") + t["M/Male/4"].at("CATHOLIC_FT"), "11");
  auto g = run("83", "01");
  EXPECT_EQ(g["N/A/Not Available/N/A"].at("OTHER"), "1");
  EXPECT_EQ(g["X//9"].size(), 0u);  // E3 left before the census date
}

TEST_P(FemrTest, BadInputFailsClearlyOrProducesNothing) {
  // Neither date a date: nothing produced, no error.
  EXPECT_TRUE(run("81", "01", "FEMRQ", "", "soon", false).empty());
  // An unknown report name defines no field.
  run("85", "01", "FEMRQ", "01/01/2024", "31/12/2024", false);
  EXPECT_EQ(rs_.fieldCount(), 0);
  EXPECT_TRUE(errors_->errors().empty());
  // An unknown query, and a population without EMP_ID, go to the error component.
  run("81", "01", "NOSUCH", "01/01/2024", "31/12/2024", false);
  run("81", "01", "CANQ", "01/01/2024", "31/12/2024", false);
  // A query class nobody registered cannot be created.
  gsubSetControlValue("", "ADM", "OBJECT_ADM_QUERY", "Other.Query");
  run("81", "01", "FEMRQ", "01/01/2024", "31/12/2024", false);
  ASSERT_EQ(errors_->errors().size(), 3u);
  EXPECT_NE(errors_->errors()[0].description.find("\"NOSUCH\""), std::string::npos);
  EXPECT_NE(errors_->errors()[1].description.find("no column EMP_ID, which category 01 needs"), std::string::npos);
  EXPECT_EQ(errors_->errors()[2].number, err::kClassNotRegistered);
  EXPECT_NE(errors_->errors()[2].description.find("\"Other.Query\""), std::string::npos);
}

// The one-read choices against the per-employee statements, every employee
// of the demo database, on each engine.
class FemrReference : public ::testing::TestWithParam<test::Engine> {};

TEST_P(FemrReference, OneReadChoicesMatchThePerEmployeeStatements) {
  test::ScratchDatabase db(GetParam());
  {
    auto connection = db.connect();
    DemoOptions options;
    options.employees = 200;
    options.asOf = *DateTime::fromParts(2025, 6, 30);
    buildDemoDatabase(*connection, options);
  }
  auto env = test::installEnvironment(db.url());
  const femr::Period period{*DateTime::fromParts(2020, 1, 1), *DateTime::fromParts(2025, 6, 30)};
  long promotions = 0;
  for (const char* company : {"ORV01", "ORV02"}) {
    femr::JobHistory history(openRecordset(
        std::string("SELECT EMP_ID, SEQ_ID, START_DATE, END_DATE, HOURS_PER_WEEK, REASON_ID FROM PNLEMPHST "
                    "WHERE VARIATION_ID = '") + company + "'"));
    Recordset employees = openRecordset(std::string("SELECT EMP_ID FROM PNLEMPMST WHERE VARIATION_ID = '") + company + "'");
    ASSERT_GT(employees.rowCount(), 50);
    for (long r = 0; r < employees.rowCount(); ++r) {
      const std::string emp = trim(employees.textAt(r, 0));
      Recordset one = openRecordset(femr::leaverJobSql(company, emp));
      auto chosen = history.latestEnded(emp);
      ASSERT_EQ(one.rowCount() > 0, chosen.has_value()) << emp;
      if (chosen) {
        EXPECT_EQ(static_cast<long>(one.at(0, 0).toDouble()), chosen->seq) << emp;
      }
      Recordset promoted = openRecordset(femr::promotionsSql(company, emp, period));
      auto mine = history.promotions(emp, period);
      ASSERT_EQ(promoted.rowCount(), static_cast<long>(mine.size())) << emp;
      for (long p = 0; p < promoted.rowCount(); ++p) {
        EXPECT_EQ(static_cast<long>(promoted.get("SEQ_ID").toDouble()), mine[static_cast<size_t>(p)].seq) << emp;
        if (p + 1 < promoted.rowCount()) promoted.moveNext();
      }
      promotions += promoted.rowCount();
    }
  }
  EXPECT_GT(promotions, 0);
  HREnvironment::set(nullptr);
}

INSTANTIATE_TEST_SUITE_P(HandMadeCompany, FemrTest, ::testing::Values(test::Engine::SQLite), test::engineParam);
ORVALIS_ON_SQLITE_AND_POSTGRESQL(FemrReference);

}  // namespace
}  // namespace orvalis::testing
