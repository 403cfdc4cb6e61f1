// Persisted XML rowsets: the schema part per ADO type, values read back by
// independent parsers (pugixml and xmllint), Nulls and empty texts, aliased
// field names, the rows a filter leaves, empty and unopened recordsets.

#include "runtime/xml_rowset.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <pugixml.hpp>

namespace orvalis {
namespace {

// The document as a reader sees it, under the real field names (rs:name
// where an alias stands in the rows).
struct ReadBack {
  pugi::xml_document doc;
  std::vector<std::string> names;
  std::map<std::string, pugi::xml_node> types;  // s:AttributeType by real name
  std::vector<std::map<std::string, std::string>> rows;
};

std::unique_ptr<ReadBack> readBack(const std::string& xml) {
  auto rb = std::make_unique<ReadBack>();
  EXPECT_TRUE(rb->doc.load_string(xml.c_str())) << xml;
  pugi::xml_node root = rb->doc.child("xml");
  std::map<std::string, std::string> real;
  for (pugi::xml_node a : root.child("s:Schema").child("s:ElementType").children("s:AttributeType")) {
    std::string name = a.attribute("name").value();
    real[name] = a.attribute("rs:name") ? a.attribute("rs:name").value() : name;
    EXPECT_EQ(a.attribute("rs:number").as_int(), static_cast<int>(rb->names.size()) + 1);
    rb->names.push_back(real[name]);
    rb->types[real[name]] = a;
  }
  for (pugi::xml_node row : root.child("rs:data").children("z:row")) {
    std::map<std::string, std::string> values;
    for (pugi::xml_attribute attr : row.attributes()) values[real.at(attr.name())] = attr.value();
    rb->rows.push_back(std::move(values));
  }
  return rb;
}

int xmllint(const std::string& xml) {
  auto file = std::filesystem::temp_directory_path() / ("orvalis-xml-" + std::to_string(::getpid()) + ".xml");
  std::ofstream(file, std::ios::binary) << xml;
  int rc = std::system(("xmllint --noout " + file.string() + " 2>/dev/null").c_str());
  std::filesystem::remove(file);
  return rc;
}

TEST(XmlRowset, SchemaDescribesEachAdoType) {
  struct Case {
    int type;
    long size;
    const char* dtType;
    const char* dbtype;
    const char* maxLength;
    bool fixed;
  };
  const Case cases[] = {
      {ado::adChar, 20, "string", "str", "20", true},
      {ado::adVarChar, 60, "string", "str", "60", false},
      {ado::adLongVarChar, -1, "string", "str", "2147483647", false},
      {ado::adDouble, 8, "float", "", "8", true},
      {ado::adInteger, 4, "int", "", "4", true},
      {ado::adSmallInt, 2, "i2", "", "2", true},
      {ado::adBigInt, 8, "i8", "", "8", true},
      {ado::adBoolean, 2, "boolean", "", "2", true},
      {ado::adDate, 8, "dateTime", "variantdate", "16", true},
      {ado::adDBTimeStamp, 16, "dateTime", "timestamp", "16", true},
      {ado::adNumeric, 19, "number", "numeric", "19", true},
  };
  Recordset rs;
  for (size_t i = 0; i < std::size(cases); ++i) {
    FieldDef f{"F" + std::to_string(i), cases[i].type, cases[i].size};
    if (f.type == ado::adNumeric) f.precision = 10, f.numericScale = 2;
    rs.appendField(f);
  }
  rs.appendField("KEYED", ado::adVarChar, 10, 0);  // not nullable
  rs.open();

  const std::string xml = saveRecordsetAsXml(rs);
  EXPECT_EQ(xmllint(xml), 0);
  auto rb = readBack(xml);
  pugi::xml_node root = rb->doc.child("xml");
  EXPECT_STREQ(root.attribute("xmlns:rs").value(), kXmlRowsetNs);
  EXPECT_STREQ(root.attribute("xmlns:z").value(), kXmlRowsetRowNs);
  EXPECT_STREQ(root.child("s:Schema").attribute("id").value(), "RowsetSchema");
  pugi::xml_node type = root.child("s:Schema").child("s:ElementType");
  EXPECT_STREQ(type.attribute("content").value(), "eltOnly");
  EXPECT_STREQ(type.last_child().attribute("type").value(), "rs:rowbase");
  for (size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    pugi::xml_node a = rb->types["F" + std::to_string(i)];
    pugi::xml_node dt = a.child("s:datatype");
    EXPECT_STREQ(dt.attribute("dt:type").value(), cases[i].dtType);
    EXPECT_STREQ(dt.attribute("rs:dbtype").value(), cases[i].dbtype);
    EXPECT_STREQ(dt.attribute("dt:maxLength").value(), cases[i].maxLength);
    EXPECT_EQ(dt.attribute("rs:fixedlength").as_bool(), cases[i].fixed);
    EXPECT_STREQ(a.attribute("rs:nullable").value(), "true");
    EXPECT_STREQ(a.attribute("rs:writeunknown").value(), "true");
  }
  EXPECT_STREQ(rb->types["F2"].child("s:datatype").attribute("rs:long").value(), "true");
  EXPECT_STREQ(rb->types["F3"].child("s:datatype").attribute("rs:precision").value(), "15");
  EXPECT_STREQ(rb->types["F10"].child("s:datatype").attribute("rs:precision").value(), "10");
  EXPECT_STREQ(rb->types["F10"].child("s:datatype").attribute("rs:scale").value(), "2");
  EXPECT_FALSE(rb->types["KEYED"].attribute("rs:nullable"));
  // No rows: an empty data section.
  EXPECT_NE(xml.find("<rs:data/>"), std::string::npos);
  EXPECT_FALSE(root.child("rs:data").first_child());
}

TEST(XmlRowset, EveryValueAndNullReadsBack) {
  Recordset rs;
  for (auto [name, type] : {std::pair{"NAME", ado::adVarChar},
                            {"CODE", ado::adChar},
                            {"AMOUNT", ado::adDouble},
                            {"COUNT", ado::adInteger},
                            {"FLAG", ado::adBoolean},
                            {"WHEN", ado::adDBTimeStamp}}) {
    rs.appendField(name, type, 40);
  }
  rs.open();
  rs.addNew();
  for (auto [field, value] : {std::pair<const char*, Value>{"NAME", "O'Brien & <Sons> \"Ltd\""},
                              {"CODE", ""},
                              {"AMOUNT", 1234.5},
                              {"COUNT", 42},
                              {"FLAG", true},
                              {"WHEN", *DateTime::fromParts(2024, 4, 6, 13, 5, 9)}}) {
    rs.set(field, value);
  }
  rs.addNew();  // every value Null
  rs.addNew();
  rs.set("NAME", "line one\nline two\ttabbed\r\n  Zoë ✓ bell\x07 caf\xE9");  // control char, Latin-1 byte
  rs.set("AMOUNT", 0.1);
  rs.set("COUNT", -7);
  rs.set("FLAG", false);
  rs.set("WHEN", *DateTime::fromParts(1999, 12, 31));

  const std::string xml = saveRecordsetAsXml(rs);
  EXPECT_EQ(xmllint(xml), 0) << xml;
  auto rb = readBack(xml);
  ASSERT_EQ(rb->rows.size(), 3u);
  using Row = std::map<std::string, std::string>;
  EXPECT_EQ(rb->rows[0], (Row{{"NAME", "O'Brien & <Sons> \"Ltd\""},
                              {"CODE", ""},
                              {"AMOUNT", "1234.5"},
                              {"COUNT", "42"},
                              {"FLAG", "True"},
                              {"WHEN", "2024-04-06T13:05:09"}}));
  EXPECT_TRUE(rb->rows[1].empty());  // Null values leave their attributes out
  EXPECT_EQ(rb->rows[2], (Row{{"NAME", "line one\nline two\ttabbed\r\n  Zoë ✓ bell\uFFFD caf\u00E9"},
                              {"AMOUNT", "0.1"},
                              {"COUNT", "-7"},
                              {"FLAG", "False"},
                              {"WHEN", "1999-12-31T00:00:00"}}));
}

TEST(XmlRowset, NamesThatAreNotXmlNamesTravelAsAliases) {
  const std::vector<std::string> names = {"Last Name", "2ND",         "c0",        "a:b",
                                          "xmlns",     "odd /> name", "FIELD_DESC"};
  Recordset rs;
  for (const std::string& n : names) rs.appendField(n, ado::adVarChar, 20);
  rs.open();
  rs.addNew();
  for (int i = 0; i < rs.fieldCount(); ++i) rs.set(i, "v" + std::to_string(i));
  EXPECT_TRUE(isXmlRowsetName("Größe"));
  EXPECT_FALSE(isXmlRowsetName(""));

  const std::string xml = saveRecordsetAsXml(rs);
  EXPECT_EQ(xmllint(xml), 0) << xml;
  auto rb = readBack(xml);
  EXPECT_EQ(rb->names, names);
  ASSERT_EQ(rb->rows.size(), 1u);
  for (size_t i = 0; i < names.size(); ++i) EXPECT_EQ(rb->rows[0][names[i]], "v" + std::to_string(i));
  EXPECT_FALSE(rb->types["FIELD_DESC"].attribute("rs:name"));  // valid names stand as they are
}

TEST(XmlRowset, VisibleRowsOnlyAndNoTextWithoutRows) {
  Recordset rs;
  rs.appendField("K", ado::adVarChar, 5);
  EXPECT_EQ(recordsetXmlText(rs), "");  // unopened
  EXPECT_EQ(xmllint(saveRecordsetAsXml(rs)), 0);
  rs.open();
  EXPECT_EQ(recordsetXmlText(rs), "");  // empty
  for (const char* k : {"a", "b", "c", "d"}) {
    rs.addNew();
    rs.set("K", k);
  }
  rs.moveFirst();
  rs.moveNext();
  rs.deleteCurrent();  // "b"
  rs.setFilter("K <> 'c'");
  rs.setSort("K DESC");
  const std::string xml = recordsetXmlText(rs);
  EXPECT_EQ(xml, saveRecordsetAsXml(rs));
  auto rb = readBack(xml);
  ASSERT_EQ(rb->rows.size(), 2u);
  EXPECT_EQ(rb->rows[0]["K"], "d");
  EXPECT_EQ(rb->rows[1]["K"], "a");
}

}  // namespace
}  // namespace orvalis
