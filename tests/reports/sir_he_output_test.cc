// What the HESA check hands back besides the recordset: the XML text of
// ExtractStringData, read back by independent parsers, and the
// field-description file after a successful extract.

#include <cstdlib>
#include <fstream>
#include <pugixml.hpp>

#include "runtime/basic_string.h"
#include "sir_he_fixture.h"

namespace orvalis::testing {
namespace {

class SirHeOutput : public SirHeFixture {
 protected:
  bool extractString(const std::string& method, std::string& xml) {
    reports::SIR_HE report;
    return report.ExtractStringData(env_, method, Parameters{}, xml);
  }
};

TEST_F(SirHeOutput, XmlTextHoldsEveryRowAndValue) {
  addEmployee("E1", {{"KNOWNAS", "'O''Brien & <Co> \"Ltd\"'"}, {"HESA_ID", "NULL"}});
  addPerson("E1", {{"ETHNIC", "'a<b'"}, {"SEXORT", "NULL"}});
  addContract("E1", 1);
  addEmployee("E2");
  std::string xml;
  ASSERT_TRUE(extractString("SIR_DATA", xml));
  const std::vector<ResultRow> expected = extract("SIR_DATA");
  ASSERT_EQ(expected.size(), 5u);

  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_string(xml.c_str())) << xml;
  pugi::xml_node type = doc.child("xml").child("s:Schema").child("s:ElementType");
  std::vector<std::string> names;
  for (pugi::xml_node a : type.children("s:AttributeType")) {
    names.push_back(a.attribute("name").value());
    pugi::xml_node dt = a.child("s:datatype");
    EXPECT_STREQ(dt.attribute("dt:type").value(), "string");
    EXPECT_STREQ(dt.attribute("rs:dbtype").value(), "str");
    EXPECT_STREQ(dt.attribute("rs:fixedlength").value(), "true");
    EXPECT_EQ(dt.attribute("dt:maxLength").as_int(),
              last_.field(a.attribute("rs:number").as_int() - 1).definedSize);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"REPORT_ID", "EMP_ID", "KNOWNAS", "RECORD_TYPE", "FIELD_ID",
                                             "FIELD_DESC", "VALUE", "ERROR"}));
  std::vector<ResultRow> rows;
  for (pugi::xml_node z : doc.child("xml").child("rs:data").children("z:row")) {
    ResultRow r;
    for (const std::string& name : names) {
      EXPECT_TRUE(z.attribute(name.c_str())) << name;  // empty texts are written, not left out
      r.push_back(z.attribute(name.c_str()).value());
    }
    rows.push_back(std::move(r));
  }
  EXPECT_EQ(rows, expected);
  EXPECT_EQ(rows[0][2], "O'Brien & <Co> \"Ltd\"");

  const std::filesystem::path file = dir_ / "hesa.xml";
  std::ofstream(file, std::ios::binary) << xml;
  EXPECT_EQ(std::system(("xmllint --noout " + file.string()).c_str()), 0);
}

TEST_F(SirHeOutput, NoTextWithoutRows) {
  addCompleteEmployee("E1");
  std::string xml = "stale";
  EXPECT_TRUE(extractString("SIR_DATA", xml));  // the extract ran, but found nothing
  EXPECT_EQ(xml, "");
  xml = "stale";
  EXPECT_FALSE(extractString("SIR_HE", xml));
  EXPECT_EQ(xml, "");
}

TEST_F(SirHeOutput, FieldDescriptionFileFollowsASuccessfulExtract) {
  const std::filesystem::path folder = dir_ / "grids";
  std::filesystem::create_directories(folder);
  setControl("ADM", "GENTTX", "Yes");
  setControl("ADM", "GRIDLOC", folder.string());
  const std::filesystem::path ttx = folder / "REPORT.ttx";

  bool ok = true;
  extract("SIR_DATA", &ok);  // no employees: False, no file
  EXPECT_FALSE(ok);
  EXPECT_FALSE(std::filesystem::exists(ttx));

  addEmployee("E1");
  extract("SIR_DATA", &ok);
  ASSERT_TRUE(ok);
  std::ifstream in(ttx, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::vector<std::string> lines;
  for (const std::string& line : split(text, "\r\n")) {
    if (!line.empty()) lines.push_back(line);
  }
  ASSERT_EQ(lines.size(), 8u) << text;
  EXPECT_EQ(lines[0], "REPORT_ID\tString\t20\t" + std::string(20, 'A'));
  EXPECT_EQ(lines[7], "ERROR\tString\t40\t" + std::string(40, 'A'));
}

}  // namespace
}  // namespace orvalis::testing
