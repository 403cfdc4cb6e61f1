// The HTML page opened in a real browser (headless Chromium): the table
// renders with the right row count, values that look like markup stay
// text, and clicking a header sorts the rows by the column's type.

#include <filesystem>
#include <fstream>
#include <random>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/html_output.h"
#include "runtime/ado.h"

namespace orvalis::testing {
namespace {

namespace fs = std::filesystem;
using namespace orvalis::cli;

class HtmlInBrowser : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("orvalis-html-test-" + std::to_string(std::random_device{}()));
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }

  // The document the browser builds from the page, after its scripts ran.
  std::string renderedDom(const fs::path& page) {
    const fs::path dom = dir_ / "dom.html";
    const std::string command = std::string(ORVALIS_CHROMIUM) +
                                " --headless --no-sandbox --disable-gpu --user-data-dir='" + (dir_ / "profile").string() +
                                "' --dump-dom 'file://" + page.string() + "' > '" + dom.string() + "' 2>/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    std::ifstream in(dom);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
  }

  // The text of the first cell of each body row, in order.
  static std::vector<std::string> firstColumn(const std::string& dom) {
    std::vector<std::string> cells;
    const std::string body = dom.substr(dom.find("<tbody>"));
    static const std::regex firstCell("<tr><td[^>]*>([^<]*)</td>");
    for (std::sregex_iterator it(body.begin(), body.end(), firstCell), end; it != end; ++it) cells.push_back((*it)[1]);
    return cells;
  }

  fs::path dir_;
};

TEST_F(HtmlInBrowser, MarkupStaysTextAndAClickSortsNumbersByValue) {
  Recordset rs;
  rs.appendField("HOURS", ado::adInteger, 4);
  rs.appendField("NOTE", ado::adVarChar, 80);
  rs.open();
  const std::vector<std::pair<Value, Value>> rows = {
      {10, "<script>document.title='changed'</script>"}, {9, "a & b \"quoted\""}, {100, Value::null()}, {Value::null(), "<b>bold</b>"}};
  for (const auto& [hours, note] : rows) {
    rs.addNew();
    rs.set(0, hours);
    rs.set(1, note);
  }
  const fs::path page = dir_ / "report.html";
  {
    std::ofstream out(page);
    writeRecordsetHtml(out, rs, {"ORVALIS.TEST <HOURS>", "HOURS", "ORV01", {"FROM=01/01/2025", "<i>x</i>"}});
    // What a click on the first header does.
    out << "<script>document.querySelector('#report th').click()</script>\n";
  }
  const std::string dom = renderedDom(page);
  EXPECT_NE(dom.find("<title>ORVALIS.TEST &lt;HOURS&gt;</title>"), std::string::npos) << dom;
  EXPECT_NE(dom.find("&lt;script&gt;document.title='changed'&lt;/script&gt;"), std::string::npos);
  EXPECT_NE(dom.find("&lt;b&gt;bold&lt;/b&gt;"), std::string::npos);
  EXPECT_NE(dom.find("<li>&lt;i&gt;x&lt;/i&gt;</li>"), std::string::npos);
  EXPECT_EQ(dom.find("<b>"), std::string::npos);
  EXPECT_NE(dom.find(">4 rows</p>"), std::string::npos);
  // Numbers by value (not 10 < 100 < 9 as texts), the empty cell last.
  EXPECT_EQ(firstColumn(dom), (std::vector<std::string>{"9", "10", "100", ""}));
  EXPECT_NE(dom.find("aria-sort=\"ascending\""), std::string::npos);
}

}  // namespace
}  // namespace orvalis::testing
