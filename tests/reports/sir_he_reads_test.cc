// The two ways of reading person and contract records: the original
// per-employee statements and the one read of the whole company give the
// same rows, row for row, over varied data; the company read sends one
// statement per table where the original sends several per employee.

#include <fmt/format.h>

#include <fstream>
#include <random>

#include "reports/sir_he/hesa_fields.h"
#include "runtime/basic_string.h"
#include "sir_he_fixture.h"

namespace orvalis::testing {
namespace {

using reports::hesa::RecordReads;

class SirHeReads : public SirHeFixture {
 protected:
  // Employees with a share of every defect; identifiers that need quoting
  // or differ only in case; contracts stored out of SEQ_ID order.
  void populate(int employees, uint64_t seed) {
    std::mt19937_64 rng(seed);
    auto chance = [&](int percent) { return static_cast<int>(rng() % 100) < percent; };
    auto defects = [&](const std::string& list) {
      Columns changes;
      for (const std::string& column : split(list, ",")) {
        if (chance(3)) changes[column] = "NULL";
        if (chance(2) && validLiteral(column) == "'1'") changes[column] = "'ZZ'";
      }
      return changes;
    };
    Connection& db = env_->hrConnection();
    db.begin();
    for (int i = 0; i < employees; ++i) {
      std::string id = fmt::format("E{:05}", i);
      if (i % 97 == 5) id = fmt::format("O'N{}", i);
      if (i % 89 == 3) id = fmt::format("e{:05}", i - 1);  // a case twin of the one before
      Columns master = {{"TEMPLATE_ID", fmt::format("'T{}'", rng() % 3)},
                        {"CAT_ID", fmt::format("'C{}'", rng() % 4)}};
      if (chance(5)) master["DATE_BIRTH"] = "NULL";
      if (chance(5)) master["SEX_ID"] = "''";
      if (chance(20)) master["HESA_ID"] = "NULL";
      addEmployee(sqlQuoted(id), master);
      if (!chance(8)) addPerson(sqlQuoted(id), defects(reports::hesa::kPersonColumns));
      int contracts = static_cast<int>(rng() % 4);
      for (int seq = contracts; seq >= 1; --seq) {
        addContract(sqlQuoted(id), seq, defects(reports::hesa::kContractColumns));
      }
    }
    db.commit();
  }

  // The identifier as it goes between the fixture's quotes.
  static std::string sqlQuoted(const std::string& id) { return replace(id, "'", "''"); }

  // Statements that read the person and contract tables, from the trace.
  long hesaStatements(const std::filesystem::path& trace) {
    std::ifstream in(trace);
    long n = 0;
    for (std::string line; std::getline(in, line);) {
      if (line.find("FROM PNLEMPHESA") != std::string::npos && line.find("AND 1 = 0") == std::string::npos)
        ++n;
    }
    return n;
  }
};

TEST_F(SirHeReads, CompanyReadsGiveTheOriginalRowsRowForRow) {
  populate(2600, 42);
  bool referenceOk = false, companyOk = false;
  std::vector<ResultRow> reference = extract("SIR_DATA", &referenceOk, RecordReads::PerEmployee);
  std::vector<ResultRow> company = extract("SIR_DATA", &companyOk, RecordReads::WholeCompany);
  EXPECT_TRUE(referenceOk);
  EXPECT_EQ(companyOk, referenceOk);
  ASSERT_EQ(company.size(), reference.size());
  long differences = 0;
  for (size_t i = 0; i < reference.size() && differences < 5; ++i) {
    if (company[i] != reference[i]) {
      ++differences;
      ADD_FAILURE() << "row " << i << ": " << join(company[i], "|") << " instead of "
                    << join(reference[i], "|");
    }
  }

  // The comparison covers every kind of defect.
  std::map<std::string, long> kinds;
  for (const ResultRow& r : reference) ++kinds[r[7]];
  EXPECT_EQ(kinds.size(), 4u);
  for (const auto& [error, count] : kinds) EXPECT_GT(count, 20) << error;
  // ... and the identifiers that need care.
  auto rowsOfEmployee = [&](const std::string& id) {
    long n = 0;
    for (const ResultRow& r : reference) n += r[1] == id;
    return n;
  };
  EXPECT_GT(rowsOfEmployee("O'N5"), 0);
  EXPECT_GT(rowsOfEmployee("e00002"), 0);
}

TEST_F(SirHeReads, AnUnreadableRowTouchesOnlyItsOwnEmployee) {
  // SQLite keeps any text in a DOUBLE PRECISION column; the driver refuses
  // to read it.
  populate(40, 3);
  addEmployee("BAD1");
  addPerson("BAD1");
  addContract("BAD1", 1, {{"CCPROP", "'ZZ'"}});
  addEmployee("BAD2");
  addPerson("BAD2");
  addContract("BAD2", 1, {{"CONFTE", "'ZZ'"}});
  expectNoErrors_ = false;
  std::vector<ResultRow> reference = extract("SIR_DATA", nullptr, RecordReads::PerEmployee);
  const size_t referenceErrors = errors_->errors().size();
  errors_->clear();
  std::vector<ResultRow> company = extract("SIR_DATA", nullptr, RecordReads::WholeCompany);
  EXPECT_EQ(company, reference);
  // The original statements met each row once; the company read met the
  // first in its company statement, then each in the original statements.
  EXPECT_EQ(referenceErrors, 2u);
  EXPECT_EQ(errors_->errors().size(), 3u);
  long noContracts = 0;
  for (const ResultRow& r : company) noContracts += (r[1] == "BAD1" || r[1] == "BAD2") && r[3] == "Contract";
  EXPECT_EQ(noContracts, 2);
}

TEST_F(SirHeReads, TheCompanyReadSendsOneStatementPerTable) {
  populate(1500, 7);
  const std::filesystem::path trace = dir_ / "trace.sql";
  reconfigure([&](StandaloneConfig& c) { c.traceFile = trace.string(); });

  extract("SIR_DATA", nullptr, RecordReads::PerEmployee);
  const long original = hesaStatements(trace);
  std::filesystem::remove(trace);
  reconfigure([&](StandaloneConfig& c) { c.traceFile = trace.string(); });
  extract("SIR_DATA", nullptr, RecordReads::WholeCompany);
  const long company = hesaStatements(trace);

  EXPECT_GE(original, 2 * 1500);  // at least the two record tests per employee
  EXPECT_EQ(company, 2);          // one statement per table
}

// Identifiers that differ only in case or trailing blanks: where the engine
// compares them so (SQL Server) the company read gives each employee the
// rows its own statement would; elsewhere only exact equals count.
TEST_F(SirHeReads, LooseIdentifiersOnlyWhereTheEngineComparesLoosely) {
  addEmployee("E1");
  addPerson("e1 ");
  addContract("E1", 1);
  auto personMissing = [&] {
    long n = 0;
    for (const ResultRow& r : extract("SIR_DATA", nullptr, RecordReads::WholeCompany)) {
      n += r[1] == "E1" && r[7] == reports::hesa::kNoPersonRecord;
    }
    return n;
  };
  EXPECT_EQ(personMissing(), 1);
  reconfigure([](StandaloneConfig& c) { c.providerOverride = "SQLOLEDB"; });
  EXPECT_EQ(personMissing(), 0);
}

TEST_F(SirHeReads, SessionVariableChoosesTheOriginalStatements) {
  addEmployee("E1");
  const std::filesystem::path trace = dir_ / "trace.sql";
  reconfigure([&](StandaloneConfig& c) {
    c.traceFile = trace.string();
    c.sessionVariables["HESA_READS"] = "PerEmployee";
  });
  reports::SIR_HE report;
  Recordset rs;
  EXPECT_TRUE(report.ExtractData(env_, "SIR_DATA", Parameters{}, rs));
  std::ifstream in(trace);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("SELECT * FROM PNLEMPHESAP WHERE VARIATION_ID = 'ORV01' AND EMP_ID = 'E1'"),
            std::string::npos);
  EXPECT_NE(text.find("SELECT * FROM PNLEMPHESAC WHERE VARIATION_ID = 'ORV01' AND EMP_ID = 'E1'"),
            std::string::npos);
}

}  // namespace
}  // namespace orvalis::testing
