// The HESA staff record check: which defects give rows, in what order and
// with what texts; the report names it answers to.

#include "runtime/ado.h"
#include "sir_he_fixture.h"

namespace orvalis::testing {
namespace {

ResultRow row(const std::string& emp, const std::string& recordType, const std::string& fieldId,
              const std::string& desc, const std::string& value, const std::string& error) {
  return {"SIR_DATA", emp, "Name " + emp, recordType, fieldId, desc, value, error};
}

using SirHeChecks = SirHeFixture;

TEST_F(SirHeChecks, CompleteValidDataGivesNoRowButALaidOutResult) {
  addCompleteEmployee("E1");
  addEmployee("E2");
  addPerson("E2");
  addContract("E2", 1);
  addContract("E2", 2);
  bool ok = false;
  EXPECT_TRUE(extract("SIR_DATA", &ok).empty());
  EXPECT_TRUE(ok);

  const std::vector<std::pair<std::string, long>> layout = {
      {"REPORT_ID", 20}, {"EMP_ID", 10},     {"KNOWNAS", 40}, {"RECORD_TYPE", 40},
      {"FIELD_ID", 40},  {"FIELD_DESC", 40}, {"VALUE", 40},   {"ERROR", 40}};
  ASSERT_EQ(last_.fieldCount(), static_cast<int>(layout.size()));
  for (size_t i = 0; i < layout.size(); ++i) {
    EXPECT_EQ(last_.field(static_cast<int>(i)).name, layout[i].first);
    EXPECT_EQ(last_.field(static_cast<int>(i)).type, ado::adChar);
    EXPECT_EQ(last_.field(static_cast<int>(i)).definedSize, layout[i].second);
  }
}

TEST_F(SirHeChecks, MissingPersonRecordThenTheContractChecksStillRun) {
  // Without a person record the master checks (birth date, gender) are not
  // made; the contract checks are.
  addEmployee("E1", {{"DATE_BIRTH", "NULL"}, {"SEX_ID", "NULL"}});
  addContract("E1", 1, {{"CAMPID", "'ZZ'"}});
  addEmployee("E2");
  std::vector<ResultRow> expected = {
      row("E1", "Person", "", "", "", "Employee has no Person record."),
      row("E1", "Contract - 1", "CAMPID", "Campus", "ZZ", "Invalid value"),
      row("E2", "Person", "", "", "", "Employee has no Person record."),
      row("E2", "Contract", "", "", "", "Employee has no Contract records."),
  };
  EXPECT_EQ(extract("SIR_DATA"), expected);
}

TEST_F(SirHeChecks, CodesAreTestedOnlyAgainstRealCodeTables) {
  // ETHNIC draws on HESETHNIC; DATELEFT, CONTID and STARTCON repeat
  // employee facts (code table PNLEMPMST) and are tested for emptiness only.
  addEmployee("E1");
  addPerson("E1", {{"ETHNIC", "'ZZ'"}, {"DATELEFT", "'1999-01-01'"}, {"NATION", "'  1  '"}});
  addContract("E1", 1, {{"CONTID", "'NOT A CODE'"}, {"STARTCON", "NULL"}, {"TERMS", "'<&>'"}});
  // A code whose description is missing counts as unknown.
  exec("INSERT INTO HESMOEMP (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV01', '7', NULL)");
  addContract("E1", 2, {{"MOEMP", "'7'"}});
  // Codes of another company do not count.
  exec("INSERT INTO HESETHNIC (VARIATION_ID, CODE_ID, DESCRIPTION) VALUES ('ORV02', 'ZZ', 'Elsewhere')");
  std::vector<ResultRow> expected = {
      row("E1", "Person", "ETHNIC", "Ethnicity", "ZZ", "Invalid value"),
      row("E1", "Contract - 1", "TERMS", "Terms of Employment", "<&>", "Invalid value"),
      row("E1", "Contract - 1", "STARTCON", "Contract Start Date", "", "Field is empty"),
      row("E1", "Contract - 2", "MOEMP", "Mode of Employment", "7", "Invalid value"),
  };
  EXPECT_EQ(extract("SIR_DATA"), expected);
}

TEST_F(SirHeChecks, EmptyFieldsInColumnOrderAfterTheMasterChecks) {
  addEmployee("E1", {{"DATE_BIRTH", "NULL"}, {"SEX_ID", "'  '"}});
  addPerson("E1", {{"LOCLEAVE", "'   '"}, {"SEXORT", "NULL"}, {"DATEFHEI", "NULL"}});
  addContract("E1", 1, {{"CCPROP_3", "NULL"}, {"CONFTE", "NULL"}});
  std::vector<ResultRow> expected = {
      row("E1", "Person", "BIRTHDATE", "Date of Birth", "", "Field is empty"),
      row("E1", "Person", "GENDER", "Gender", "", "Field is empty"),
      row("E1", "Person", "SEXORT", "Sexual Orientation", "", "Field is empty"),
      row("E1", "Person", "DATEFHEI", "Date of First HE Appointment", "", "Field is empty"),
      row("E1", "Person", "LOCLEAVE", "Location After Leaving", "", "Field is empty"),
      row("E1", "Contract - 1", "CONFTE", "Contract FTE", "", "Field is empty"),
      row("E1", "Contract - 1", "CCPROP_3", "Cost Centre Proportion 3", "", "Field is empty"),
  };
  EXPECT_EQ(extract("SIR_DATA"), expected);
}

TEST_F(SirHeChecks, EveryContractWithoutAStaffIdentifierGetsARow) {
  addEmployee("E1", {{"HESA_ID", "NULL"}});
  addPerson("E1");
  addContract("E1", 1);
  addContract("E1", 2, {{"TERMS", "'X'"}});
  std::vector<ResultRow> expected = {
      row("E1", "Contract - 1", "STAFF_ID", "HESA Staff Identifier", "", "Field is empty"),
      row("E1", "Contract - 2", "TERMS", "Terms of Employment", "X", "Invalid value"),
      row("E1", "Contract - 2", "STAFF_ID", "HESA Staff Identifier", "", "Field is empty"),
  };
  EXPECT_EQ(extract("SIR_DATA"), expected);
}

TEST_F(SirHeChecks, CompanyEmployeesInTemplateCategoryAndIdentifierOrder) {
  addEmployee("A1", {{"TEMPLATE_ID", "'T2'"}});
  addEmployee("B1", {{"TEMPLATE_ID", "'T1'"}, {"CAT_ID", "'C2'"}});
  addEmployee("C1", {{"TEMPLATE_ID", "'T1'"}, {"CAT_ID", "'C1'"}});
  addEmployee("D1", {{"VARIATION_ID", "'ORV02'"}});
  std::vector<std::string> order;
  for (const ResultRow& r : extract("SIR_DATA")) {
    if (r[7] == "Employee has no Person record.") order.push_back(r[1]);
  }
  EXPECT_EQ(order, (std::vector<std::string>{"C1", "B1", "A1"}));
}

TEST_F(SirHeChecks, TextsLongerThanTheirFieldAreCut) {
  exec(
      "UPDATE ADMDDFLD SET CAPTION = 'A caption far longer than forty characters in all' "
      "WHERE ENTITY_ID = 'PNLEMPHESAP' AND FIELD_ID = 'ETHNIC'");
  addEmployee("E1");
  addPerson("E1", {{"ETHNIC", "NULL"}});
  addContract("E1", 1);
  std::vector<ResultRow> rows = extract("SIR_DATA");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0][5], "A caption far longer than forty characte");
}

TEST_F(SirHeChecks, NamesOneAndSirDataRunTheCheckOtherNamesGiveNothing) {
  addEmployee("E1");  // no HESA records: two rows
  struct Case {
    const char* name;
    bool result;
    size_t rows;
  };
  for (const Case& c : {Case{"SIR_DATA", true, 2}, Case{" sir_data ", true, 2}, Case{"01", true, 2},
                        Case{"SIR_HE", false, 0}, Case{"SIR_FE", false, 0}}) {
    SCOPED_TRACE(c.name);
    bool ok = !c.result;
    std::vector<ResultRow> rows = extract(c.name, &ok);
    EXPECT_EQ(ok, c.result);
    ASSERT_EQ(rows.size(), c.rows);
    for (const ResultRow& r : rows) EXPECT_EQ(r[0], "SIR_DATA");
    // The result is laid out either way.
    EXPECT_EQ(last_.fieldCount(), 8);
  }
}

TEST_F(SirHeChecks, NoEmployeesReturnsFalse) {
  bool ok = true;
  EXPECT_TRUE(extract("SIR_DATA", &ok).empty());
  EXPECT_FALSE(ok);
  EXPECT_EQ(last_.fieldCount(), 8);
}

}  // namespace
}  // namespace orvalis::testing
