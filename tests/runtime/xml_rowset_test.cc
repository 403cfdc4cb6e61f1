// Persisted XML rowsets: the schema part per ADO type, values read back by
// independent parsers (pugixml and xmllint), Nulls and empty texts, aliased
// field names, empty and unopened recordsets.

#include "runtime/xml_rowset.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include <gtest/gtest.h>
#include <pugixml.hpp>

namespace orvalis {
namespace {

// What a reader of the document sees: per field its schema element, per row
// the attributes present, both under the real field names (rs:name when an
// alias is used).
struct ReadBack {
  pugi::xml_document doc;
  std::vector<std::string> names;  // real names in rs:number order
  std::map<std::string, pugi::xml_node> datatypes;
  std::map<std::string, pugi::xml_node> attributeTypes;
  std::vector<std::map<std::string, std::string>> rows;
};

std::unique_ptr<ReadBack> readBack(const std::string& xml) {
  auto rb = std::make_unique<ReadBack>();
  pugi::xml_parse_result parsed = rb->doc.load_string(xml.c_str());
  EXPECT_TRUE(parsed) << parsed.description() << "\n" << xml;
  pugi::xml_node root = rb->doc.child("xml");
  std::map<std::string, std::string> realName;
  for (pugi::xml_node a : root.child("s:Schema").child("s:ElementType").children("s:AttributeType")) {
    std::string name = a.attribute("name").value();
    std::string real = a.attribute("rs:name") ? a.attribute("rs:name").value() : name;
    realName[name] = real;
    EXPECT_EQ(a.attribute("rs:number").as_int(), static_cast<int>(rb->names.size()) + 1);
    rb->names.push_back(real);
    rb->attributeTypes[real] = a;
    rb->datatypes[real] = a.child("s:datatype");
  }
  for (pugi::xml_node row : root.child("rs:data").children("z:row")) {
    std::map<std::string, std::string> values;
    for (pugi::xml_attribute attr : row.attributes()) {
      EXPECT_TRUE(realName.count(attr.name())) << attr.name();
      values[realName[attr.name()]] = attr.value();
    }
    rb->rows.push_back(std::move(values));
  }
  return rb;
}

// xmllint's verdict on the document (0 when well formed).
int xmllint(const std::string& xml) {
  std::filesystem::path file =
      std::filesystem::temp_directory_path() / ("orvalis-xml-" + std::to_string(::getpid()) + ".xml");
  {
    std::ofstream out(file, std::ios::binary);
    out << xml;
  }
  int rc = std::system(("xmllint --noout " + file.string() + " 2>/dev/null").c_str());
  std::filesystem::remove(file);
  return rc;
}

TEST(XmlRowsetSchema, EachAdoTypeIsDescribed) {
  struct Case {
    int type;
    long size;
    const char* dtType;
    const char* dbtype;  // nullptr: absent
    const char* maxLength;
    bool fixed;
  };
  const Case cases[] = {
      {ado::adChar, 20, "string", "str", "20", true},
      {ado::adVarChar, 60, "string", "str", "60", false},
      {ado::adLongVarChar, -1, "string", "str", "2147483647", false},
      {ado::adDouble, 8, "float", nullptr, "8", true},
      {ado::adInteger, 4, "int", nullptr, "4", true},
      {ado::adSmallInt, 2, "i2", nullptr, "2", true},
      {ado::adBigInt, 8, "i8", nullptr, "8", true},
      {ado::adBoolean, 2, "boolean", nullptr, "2", true},
      {ado::adDate, 8, "dateTime", "variantdate", "16", true},
      {ado::adDBTimeStamp, 16, "dateTime", "timestamp", "16", true},
      {ado::adNumeric, 19, "number", "numeric", "19", true},
  };
  Recordset rs;
  for (size_t i = 0; i < std::size(cases); ++i) {
    FieldDef f;
    f.name = "F" + std::to_string(i);
    f.type = cases[i].type;
    f.definedSize = cases[i].size;
    if (f.type == ado::adNumeric) f.precision = 10, f.numericScale = 2;
    rs.appendField(f);
  }
  rs.appendField("KEYED", ado::adVarChar, 10, 0);  // not nullable
  rs.open();

  std::string xml = saveRecordsetAsXml(rs);
  auto rb = readBack(xml);
  pugi::xml_node root = rb->doc.child("xml");
  EXPECT_STREQ(root.attribute("xmlns:s").value(), kXmlRowsetSchemaNs);
  EXPECT_STREQ(root.attribute("xmlns:dt").value(), kXmlRowsetDataTypeNs);
  EXPECT_STREQ(root.attribute("xmlns:rs").value(), kXmlRowsetNs);
  EXPECT_STREQ(root.attribute("xmlns:z").value(), kXmlRowsetRowNs);
  pugi::xml_node type = root.child("s:Schema").child("s:ElementType");
  EXPECT_STREQ(root.child("s:Schema").attribute("id").value(), "RowsetSchema");
  EXPECT_STREQ(type.attribute("content").value(), "eltOnly");
  EXPECT_STREQ(type.last_child().name(), "s:extends");
  EXPECT_STREQ(type.last_child().attribute("type").value(), "rs:rowbase");

  for (size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    std::string name = "F" + std::to_string(i);
    pugi::xml_node dt = rb->datatypes[name];
    EXPECT_STREQ(dt.attribute("dt:type").value(), cases[i].dtType);
    EXPECT_STREQ(dt.attribute("rs:dbtype").value(), cases[i].dbtype ? cases[i].dbtype : "");
    EXPECT_STREQ(dt.attribute("dt:maxLength").value(), cases[i].maxLength);
    EXPECT_EQ(dt.attribute("rs:fixedlength").as_bool(), cases[i].fixed);
    EXPECT_STREQ(rb->attributeTypes[name].attribute("rs:nullable").value(), "true");
    EXPECT_STREQ(rb->attributeTypes[name].attribute("rs:writeunknown").value(), "true");
  }
  EXPECT_STREQ(rb->datatypes["F2"].attribute("rs:long").value(), "true");
  EXPECT_STREQ(rb->datatypes["F3"].attribute("rs:precision").value(), "15");
  EXPECT_STREQ(rb->datatypes["F10"].attribute("rs:precision").value(), "10");
  EXPECT_STREQ(rb->datatypes["F10"].attribute("rs:scale").value(), "2");
  EXPECT_FALSE(rb->attributeTypes["KEYED"].attribute("rs:nullable"));
  // No rows: the data section is present and empty.
  EXPECT_TRUE(root.child("rs:data"));
  EXPECT_FALSE(root.child("rs:data").first_child());
  EXPECT_NE(xml.find("<rs:data/>"), std::string::npos);
  EXPECT_EQ(xmllint(xml), 0);
}

Recordset mixedRows() {
  Recordset rs;
  rs.appendField("NAME", ado::adVarChar, 60);
  rs.appendField("CODE", ado::adChar, 10);
  rs.appendField("AMOUNT", ado::adDouble, 8);
  rs.appendField("COUNT", ado::adInteger, 4);
  rs.appendField("FLAG", ado::adBoolean, 2);
  rs.appendField("WHEN", ado::adDBTimeStamp, 16);
  rs.open();
  rs.addNew();
  rs.set("NAME", "O'Brien & <Sons> \"Ltd\"");
  rs.set("CODE", "");
  rs.set("AMOUNT", 1234.5);
  rs.set("COUNT", 42);
  rs.set("FLAG", true);
  rs.set("WHEN", *DateTime::fromParts(2024, 4, 6, 13, 5, 9));
  rs.addNew();  // every value Null
  rs.addNew();
  rs.set("NAME", "line one\nline two\ttabbed\r\n  Zoë ✓");
  rs.set("AMOUNT", 0.1);
  rs.set("COUNT", -7);
  rs.set("FLAG", false);
  rs.set("WHEN", *DateTime::fromParts(1999, 12, 31));
  return rs;
}

TEST(XmlRowsetValues, EveryValueAndNullReadsBack) {
  Recordset rs = mixedRows();
  std::string xml = saveRecordsetAsXml(rs);
  EXPECT_EQ(xmllint(xml), 0) << xml;
  auto rb = readBack(xml);
  ASSERT_EQ(rb->rows.size(), 3u);

  const std::map<std::string, std::string> first = {
      {"NAME", "O'Brien & <Sons> \"Ltd\""}, {"CODE", ""},   {"AMOUNT", "1234.5"},
      {"COUNT", "42"},                      {"FLAG", "True"}, {"WHEN", "2024-04-06T13:05:09"}};
  EXPECT_EQ(rb->rows[0], first);
  EXPECT_TRUE(rb->rows[1].empty());  // Null values leave their attributes out
  const std::map<std::string, std::string> third = {{"NAME", "line one\nline two\ttabbed\r\n  Zoë ✓"},
                                                    {"AMOUNT", "0.1"},
                                                    {"COUNT", "-7"},
                                                    {"FLAG", "False"},
                                                    {"WHEN", "1999-12-31T00:00:00"}};
  EXPECT_EQ(rb->rows[2], third);
  // The values are numbers a reader gets back exactly.
  EXPECT_EQ(std::stod(rb->rows[2]["AMOUNT"]), 0.1);
}

TEST(XmlRowsetValues, TextXmlCannotHoldIsReplacedNotDropped) {
  Recordset rs;
  rs.appendField("T", ado::adVarChar, 40);
  rs.open();
  rs.addNew();
  rs.set("T", std::string("bell\x07 nul-free \xE9t\xE9"));  // a control character, Latin-1 bytes
  std::string xml = saveRecordsetAsXml(rs);
  EXPECT_EQ(xmllint(xml), 0) << xml;
  auto rb = readBack(xml);
  ASSERT_EQ(rb->rows.size(), 1u);
  EXPECT_EQ(rb->rows[0]["T"], "bell\xEF\xBF\xBD nul-free \xC3\xA9t\xC3\xA9");
}

TEST(XmlRowsetNames, NamesThatAreNotXmlNamesTravelAsAliases) {
  Recordset rs;
  rs.appendField("Last Name", ado::adVarChar, 20);
  rs.appendField("2ND", ado::adVarChar, 20);
  rs.appendField("c0", ado::adVarChar, 20);  // a real name equal to the first alias
  rs.appendField("a:b", ado::adVarChar, 20);
  rs.appendField("xmlns", ado::adVarChar, 20);
  rs.appendField("odd /> name", ado::adVarChar, 20);
  rs.appendField("FIELD_DESC", ado::adChar, 40);
  rs.open();
  rs.addNew();
  for (int i = 0; i < rs.fieldCount(); ++i) rs.set(i, "v" + std::to_string(i));

  EXPECT_FALSE(isXmlRowsetName("Last Name"));
  EXPECT_FALSE(isXmlRowsetName("2ND"));
  EXPECT_FALSE(isXmlRowsetName(""));
  EXPECT_TRUE(isXmlRowsetName("FIELD_DESC"));
  EXPECT_TRUE(isXmlRowsetName("Größe"));

  std::string xml = saveRecordsetAsXml(rs);
  EXPECT_EQ(xmllint(xml), 0) << xml;
  auto rb = readBack(xml);
  const std::vector<std::string> names = {"Last Name", "2ND", "c0", "a:b", "xmlns", "odd /> name",
                                          "FIELD_DESC"};
  EXPECT_EQ(rb->names, names);
  ASSERT_EQ(rb->rows.size(), 1u);
  for (int i = 0; i < rs.fieldCount(); ++i) EXPECT_EQ(rb->rows[0][names[static_cast<size_t>(i)]], "v" + std::to_string(i));
  EXPECT_STREQ(rb->attributeTypes["FIELD_DESC"].attribute("name").value(), "FIELD_DESC");
  EXPECT_FALSE(rb->attributeTypes["FIELD_DESC"].attribute("rs:name"));
}

TEST(XmlRowsetRows, FilterAndDeletionDecideTheRowsSaved) {
  Recordset rs;
  rs.appendField("K", ado::adVarChar, 5);
  rs.open();
  for (const char* k : {"a", "b", "c", "d"}) {
    rs.addNew();
    rs.set("K", k);
  }
  rs.moveFirst();
  rs.moveNext();
  rs.deleteCurrent();  // "b"
  rs.setFilter("K <> 'c'");
  rs.setSort("K DESC");
  auto rb = readBack(saveRecordsetAsXml(rs));
  ASSERT_EQ(rb->rows.size(), 2u);
  EXPECT_EQ(rb->rows[0]["K"], "d");
  EXPECT_EQ(rb->rows[1]["K"], "a");
}

TEST(XmlRowsetText, NoDocumentForUnopenedOrEmptyRecordsets) {
  Recordset unopened;
  unopened.appendField("A", ado::adChar, 4);
  EXPECT_EQ(recordsetXmlText(unopened), "");
  Recordset empty;
  empty.appendField("A", ado::adChar, 4);
  empty.open();
  EXPECT_EQ(recordsetXmlText(empty), "");
  EXPECT_EQ(xmllint(saveRecordsetAsXml(empty)), 0);
  EXPECT_EQ(xmllint(saveRecordsetAsXml(unopened)), 0);
  empty.addNew();
  empty.set("A", "x");
  EXPECT_EQ(recordsetXmlText(empty), saveRecordsetAsXml(empty));
}

}  // namespace
}  // namespace orvalis
